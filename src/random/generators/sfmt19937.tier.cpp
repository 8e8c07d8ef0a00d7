// SPDX-License-Identifier: Apache-2.0
// SFMT19937: draws of whole lanes.
//   w[i] <- w[i] ^ (w[i] << 8) ^ ((w[i + 122] >> 11) & mask) ^ (w[i - 2] >> 8) ^ (w[i - 1] << 18)
// where shifts by 8 bits are of the lane and the others of its words, and positions are modulo 156.
#include "random/generators/sfmt19937.hpp"

#include <algorithm>

#include "simd/integer.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

constexpr int ring = sfmt19937_words / 4, middle = 122;
alignas(16) constexpr uint32_t mask_words[4] = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};

// The two newest lanes stay in registers: what depends on them is the chain that bounds the speed.
struct newest_lanes {
  lane128 before_last, last;
  lane128 mask;

  void step(uint32_t* here, const uint32_t* partner, uint32_t* r) {
    const lane128 x = lane128::load(here);
    const lane128 fresh = x ^ shift_lane_left<1>(x) ^ ((lane128::load(partner) >> 11) & mask);
    const lane128 next = (fresh ^ shift_lane_right<1>(before_last)) ^ (last << 18);
    next.store(here);
    next.store(r);
    before_last = last;
    last = next;
  }
};

void draw_lanes(sfmt19937_state* state, int32_t count, uint32_t* r) {
  uint32_t* w = state->sfmt;
  int i = static_cast<int>(state->index / 4);
  newest_lanes newest{lane128::load(w + (i + ring - 2) % ring * 4),
                      lane128::load(w + (i + ring - 1) % ring * 4), lane128::load(mask_words)};
  while (count > 0) {
    if (i == ring) i = 0;
    const int end = std::min(i < ring - middle ? ring - middle : ring, i + count);
    const int distance = (i < ring - middle ? middle : middle - ring) * 4;
    count -= end - i;
    for (; i < end; ++i, r += 4) newest.step(w + i * 4, w + i * 4 + distance, r);
  }
  state->index = static_cast<uint32_t>(i) * 4;
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(sfmt19937_kernels) = {draw_lanes};

}  // namespace tmk::rng
