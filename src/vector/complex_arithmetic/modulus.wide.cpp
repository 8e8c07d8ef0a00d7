// SPDX-License-Identifier: Apache-2.0
// |x + iy| as the hypotenuse of x and y; an overflow is not reported.
#include "vector/roots/hypotenuse.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct modulus : description<Real> {
  using value = complex_value<Real>;
  using root = hypotenuse<Real, level::ha>;
  static batch<Real> fast(const value& z) { return root::fast(z.re, z.im); }
  static lane_mask<Real> flagged(const value& z, const batch<Real>& r) {
    return root::flagged(z.re, z.im, r);
  }
  static lane_mask<Real> patch(const value& z, batch<Real>& r) { return root::patch(z.re, z.im, r); }
};

struct double_modulus : modulus<double> {
  static constexpr auto controls = control_class::c;
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(c, Abs, real_result, HHH, modulus)
TMK_KERNELS(z, Abs, real_result, HHH, double_modulus)
