// SPDX-License-Identifier: Apache-2.0
// 1 / x at HA: the processor's division, correctly rounded. Subnormal arguments take the slow path too, since
// a thread that flushes would divide by zero.
#include "vector/walk/kernel.hpp"
#include "vector/roots/inv_rare.hpp"
#include "vector/toolbox/lane_tests.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct inv_division {
  using real = Real;
  using value = batch<Real>;
  static constexpr auto name = sizeof(Real) == 4 ? "vsInv" : "vdInv";
  static constexpr auto controls = control_class::a;
  static constexpr bool memory_bound = true;
  static constexpr int group = 4 * lanes<Real>;
  static constexpr Real filler = Real(0.75);

  static value fast(const value& x) { return value(Real(1)) / x; }
  static lane_mask<Real> flagged(const value& x, const value&) { return below_normal(x); }
  static int32_t rare(const Real* a, Real* r) { return reciprocal_rare(a, r); }
};

}  // namespace
TMK_TIER_CLOSE

TMK_DEFINE_KERNEL(s, Inv, HAynn, run_masked<inv_division<float>>)
TMK_DEFINE_KERNEL(d, Inv, HAynn, run_masked<inv_division<double>>)
