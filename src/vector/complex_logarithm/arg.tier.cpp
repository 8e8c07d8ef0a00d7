// SPDX-License-Identifier: Apache-2.0
// The argument of a complex number: the angle of the vector of its parts.
#include "vector/inverse_trigonometric/angle_of_vector.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
struct argument : description<Real> {
  using value = batch<Real>;
  using complex = complex_value<Real>;
  using angle = angle_of_vector<Real, Level, angle_unit::radians>;

  // V3 has too few registers for more of them at a time.
  static constexpr int group = (this_tier == 1 ? 2 : 4) * lanes<Real>;

  static value fast(const complex& z) { return angle::fast(z.im, z.re); }
  static lane_mask<Real> flagged(const complex& z, const value& r) { return angle::flagged(z.im, z.re, r); }
  static lane_mask<Real> patch(const complex& z, value& r) { return angle::patch(z.im, z.re, r); }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp, by tmk-accuracy Arg --samples 65536 --search brief:
//   single LA (all tiers): 1.750 at (0x1.07d86ap+2, -0x1.083ca6p-1): got -0x1.fe1b3p-4, want -0x1.fe1b2c8p-4
//   single HA (all tiers): 0.5239 at (0x1.72392cp+15, 0x1.ffff44p+0): got 0x1.620872p-15, want
//   0x1.620870f4p-15 single EP (W7, V3): 4900 at (0x1.07c004p+2, -0x1.08f814p-1) single EP (V4): 1316 at
//   (0x1.f55cfcp+2, 0x1.fff3dap+0) double LA, EP (W7): 1.794 at (0x1.3875a58a3a58ap+3, -0x1.39e96f6d2ca8cp+3)
//   double LA, EP (V3, V4): 1.394 at (0x1.3875a58a3a55bp+3, -0x1.39e96f6d6f027p+3)
//   double HA (all tiers): 0.5239 at (0x1.7958d132d3b54p-2, 0x1.de4d17327934bp-64)
TMK_KERNELS(c, Arg, real_result, LHE, argument)
TMK_KERNELS(z, Arg, real_result, LHL, argument)
