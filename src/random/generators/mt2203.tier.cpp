// SPDX-License-Identifier: Apache-2.0
// MT2203: draws.
#include "random/generators/mt2203.hpp"

#include "random/generators/twister.hpp"

namespace tmk::rng {
inline namespace TMK_TIER {
namespace {

struct mt2203_shape {
  static constexpr int ring = 69, middle = 34, lower_bits = 5, first_shift = 12;
  uint32_t matrix_a, temper_b, temper_c;
};

void words(mt2203_state* state, int32_t n, uint32_t* r) {
  const twister<mt2203_shape> generator{{state->matrix_a, state->temper_b, state->temper_c}};
  generator.draw(state->mt, state->index, n, r);
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(mt2203_kernels) = {words};

}  // namespace tmk::rng
