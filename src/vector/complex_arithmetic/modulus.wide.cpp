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

// Maximum errors in ulp, by tmk-accuracy --search thorough --samples 300000:
//   single: 0.5266 at (0x1.e6239cp+12, -0x1.000006p+1): got 0x1.e6239cp+12, want 0x1.e6239d0ep+12
//   double: 0.5266 at (0x1.fffffffc819dfp-1, 0x1.999a2353a0042p-17)
TMK_KERNELS(c, Abs, real_result, HHH, modulus)
TMK_KERNELS(z, Abs, real_result, HHH, double_modulus)
