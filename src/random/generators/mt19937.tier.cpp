// SPDX-License-Identifier: Apache-2.0
// MT19937: draws.
#include "random/generators/mt19937.hpp"

#include "random/generators/twister.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

struct mt19937_shape {
  static constexpr int ring = 624, middle = 397, lower_bits = 31, first_shift = 11;
  static constexpr uint32_t matrix_a = mt19937_matrix, temper_b = 0x9D2C5680, temper_c = 0xEFC60000;
};

void words(mt19937_state* state, int32_t n, uint32_t* r) {
  twister<mt19937_shape>{}.draw(state->mt, state->index, n, r);
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(mt19937_kernels) = {words};

}  // namespace tmk::rng
