// SPDX-License-Identifier: Apache-2.0
// WH: combined congruential generators after Wichmann and Hill.
// B. Wichmann, D. Hill, An efficient and portable pseudo-random number generator, Applied Statistics 31
// (1982).
#include "random/generators/wh.hpp"

#include <array>

#include "random/core/stream.hpp"
#include "random/generators/congruential.hpp"
#include "random/generators/draws.hpp"
#include "random/generators/wh_data.hpp"

namespace {
using namespace tmk::rng;

// Reciprocals are made by the compiler, whose rounding is to nearest whatever the caller's is.
constexpr auto rows = [] {
  std::array<wh_moduli_row, std::size(wh_moduli)> all{};
  for (size_t set = 0; set < all.size(); ++set)
    for (int j = 0; j < 4; ++j) {
      all[set].m[j] = wh_moduli[set][j];
      all[set].reciprocal[j] = 1.0 / wh_moduli[set][j];
    }
  return all;
}();

int32_t set_of(VtsStreamHandle stream) { return parameter_set(header_of(stream).brng_id); }

void advance(wh_state& s, const uint32_t (&m)[4], uint64_t count) {
  for (int j = 0; j < 4; ++j) s.x[j] = multiply_mod(__vtsiPowMod(s.a[j], count, m[j]), s.x[j], m[j]);
}

struct wh_draws {
  static int32_t words(VtsStreamHandle stream, int32_t n, void* r) {
    wh_kernels_now().words(&state_of<wh_state>(stream), rows[set_of(stream)], n, static_cast<uint32_t*>(r));
    return VTS_STATUS_OK;
  }
  static int32_t uniforms(VtsStreamHandle stream, int32_t n, double* r, double a, double b) {
    wh_kernels_now().doubles(&state_of<wh_state>(stream), rows[set_of(stream)], n, r, a, b);
    return VTS_STATUS_OK;
  }
  static int32_t uniforms(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {
    wh_kernels_now().singles(&state_of<wh_state>(stream), rows[set_of(stream)], n, r, a, b);
    return VTS_STATUS_OK;
  }
};
}  // namespace

extern "C" {

uint32_t __vtsiPowMod(uint32_t base, uint64_t e, uint32_t m) {
  return power(base, e, [m](uint32_t a, uint32_t x) { return multiply_mod(a, x, m); });
}

int32_t __vtsBRngWHInitStream(int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) {
  wh_state& s = state_of<wh_state>(stream);
  const int32_t set = set_of(stream);
  const auto& m = rows[set].m;
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* seed) {
        for (int j = 0; j < 4; ++j) {
          const bool given = count < 0 || j < count;  // a negative count reads all four
          const uint32_t x = given ? seed[j] % m[j] : 0;
          s.x[j] = x == 0 ? 1 : x;
          s.a[j] = wh_multipliers[set][j];
        }
        return VTS_STATUS_OK;
      },
      [&](uint32_t k, uint64_t nstreams) {
        advance(s, m, k);
        for (int j = 0; j < 4; ++j) s.a[j] = __vtsiPowMod(s.a[j], nstreams, m[j]);
        return VTS_STATUS_OK;
      },
      [&](uint64_t count) {
        advance(s, m, count);
        return VTS_STATUS_OK;
      });
}

TMK_DEFINE_DRAWS(WH, wh_draws)
}
