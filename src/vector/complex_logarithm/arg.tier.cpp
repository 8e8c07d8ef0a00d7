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

TMK_KERNELS(c, Arg, real_result, LHE, argument)
TMK_KERNELS(z, Arg, real_result, LHL, argument)
