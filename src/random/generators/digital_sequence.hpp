// SPDX-License-Identifier: Apache-2.0
// What the quasi-random generators share: points in the order of the Gray code, coordinate after coordinate,
// from point 1 on (point 0 is the origin). I. A. Antonov, V. M. Saleev, An economic method of computing
// LP-tau sequences, USSR Computational Mathematics and Mathematical Physics 19 (1979).
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include "random/core/states.hpp"
#include "random/core/stream.hpp"
#include "random/generators/requests.hpp"

namespace tmk::rng {

constexpr uint32_t all_dimensions = UINT32_MAX;
constexpr int32_t select_dimension = 0x7FFFFFFF;  // a stream count that selects one dimension

template <int Max>
void move_to_point(digital_sequence<Max>& s, uint32_t index) {
  s.index = index;
  std::fill_n(s.x, s.dimensions, 0);
  for (uint32_t gray = index ^ (index >> 1); gray != 0; gray &= gray - 1) {
    const uint32_t* v = s.direction[std::countr_zero(gray)];
    for (uint32_t d = 0; d < s.dimensions; ++d) s.x[d] ^= v[d];
  }
}

// One bit of the Gray code changes from point to point; the last one leads back to the origin.
template <int Max>
const uint32_t* change_to_next_point(digital_sequence<Max>& s) {
  return s.direction[std::min(std::countr_zero(++s.index), 31)];
}

template <int Max>
void draw_points(digital_sequence<Max>& s, int32_t n, uint32_t* r) {
  if (s.selected != all_dimensions) {
    uint32_t& x = s.x[s.selected];
    for (int32_t i = 0; i < n; ++i) {
      r[i] = x;
      x ^= change_to_next_point(s)[s.selected];
    }
    return;
  }
  while (n > 0) {
    const auto part = std::min(static_cast<uint32_t>(n), s.dimensions - s.component);
    std::copy_n(s.x + s.component, part, r);
    s.component += part;
    r += part;
    n -= static_cast<int32_t>(part);
    if (s.component < s.dimensions) continue;
    s.component = 0;
    const uint32_t* v = change_to_next_point(s);
    for (uint32_t d = 0; d < s.dimensions; ++d) s.x[d] ^= v[d];
  }
}

// Starts a sequence of dimensions[0] dimensions, one if that is none or too many. fill(s, n, words) sets the
// directions and returns a status.
template <int Max, class Fill>
int32_t answer_sequence_request(digital_sequence<Max>& s, int32_t method, int32_t n, const uint32_t* params,
                                Fill fill) {
  if (method == VTS_INIT_SKIPAHEAD && n <= 0) return VTS_STATUS_NO_SKIPAHEAD;
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* words) -> int32_t {
        const uint32_t wanted = count > 0 ? words[0] : 1;
        s.dimensions = wanted >= 1 && wanted <= uint32_t{Max} ? wanted : 1;
        s.component = 0;
        s.selected = all_dimensions;
        std::fill_n(&s.direction[0][0], 32 * Max, 0);
        std::fill_n(s.x, Max, 0);
        const int32_t status = fill(s, count, words);
        move_to_point(s, 1);
        return status;
      },
      [&](uint32_t k, uint64_t nstreams) -> int32_t {
        if (nstreams != select_dimension || k >= s.dimensions) return VTS_STATUS_NO_LEAPFROG;
        s.selected = k;
        s.component = 0;
        move_to_point(s, s.index);  // an earlier selection did not move the other coordinates
        return VTS_STATUS_OK;
      },
      [&](uint64_t count) -> int32_t {
        const uint64_t per_point = s.selected == all_dimensions ? s.dimensions : 1;
        const uint64_t rest = s.component + count % per_point;
        s.component = static_cast<uint32_t>(rest % per_point);
        move_to_point(s, static_cast<uint32_t>(s.index + count / per_point + rest / per_point));
        return VTS_STATUS_OK;
      });
}

template <class State>
int32_t draw_words(VtsStreamHandle stream, int32_t n, uint32_t* r) {
  draw_points(state_of<State>(stream), n, r);
  return VTS_STATUS_OK;
}

}  // namespace tmk::rng
