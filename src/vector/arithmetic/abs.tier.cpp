// SPDX-License-Identifier: Apache-2.0
// |x|: the sign bit cleared, also of a NaN (IEEE 754-2019, 5.5.1).
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct absolute_value {
  using real = Real;
  using value = batch<Real>;
  static constexpr auto name = sizeof(Real) == 4 ? "vsAbs" : "vdAbs";
  static constexpr auto controls = control_class::a;
  static constexpr bool memory_bound = true;
  static constexpr auto sse = sse_control::masks_only;
  static constexpr int group = 4 * lanes<Real>;
  static constexpr Real filler = 0;

  static value fast(const value& x) { return xsimd::abs(x); }
  static lane_mask<Real> flagged(const value&, const value&) { return lane_mask<Real>(false); }
  static int32_t rare(const Real* a, Real* r) {
    *r = fast(value(*a)).get(0);
    return VTM_STATUS_OK;
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_DEFINE_KERNEL(s, Abs, HAynn, run_masked<absolute_value<float>>)
TMK_DEFINE_KERNEL(d, Abs, HAynn, run_masked<absolute_value<double>>)
