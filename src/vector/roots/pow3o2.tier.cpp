// SPDX-License-Identifier: Apache-2.0
// x^(3/2) = x sqrt(x). HA keeps what the root and the product lose: (s + s') x with s' = (x - s^2) / (2 s).
#include "vector/toolbox/lane_tests.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/settled.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (all tiers), by tmk-accuracy Pow3o2 --search thorough:
//   single LA, EP: 1.290 at 0x1.95fdd6p+0: got 0x1.ff46b2p+0, want 0x1.ff46af6cp+0
//   single HA: 0.5000 at 0x1.fffffep-1: got 0x1.fffffcp-1, want 0x1.fffffdp-1
//   double LA, EP: 1.293 at 0x1.964244de72046p-2: got 0x1.ffc7f9d80faabp-3, want 0x1.ffc7f9d80faac4bp-3
//   double HA: 0.5000 at 0x1.fffffffffffffp+1: got 0x1.ffffffffffffep+2, want 0x1.ffffffffffffe8p+2
template <class Real, level Level>
struct three_halves : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto sse = sse_control::exact;  // residuals may be subnormal numbers

  static value fast(const value& x) {
    const value y = x * xsimd::sqrt(x);
    if constexpr (Level == level::ha)
      return xsimd::select(x == value(Real(0)), y, multiply(square_root(x), x).high);
    else
      return y;
  }
  // Good: zeros, and where the result is a normal number whose residual has its leading bits.
  static constexpr Real least = single ? Real(0x1p-73) : Real(0x1p-666);
  static constexpr Real end = single ? Real(0x1p85) : Real(0x1p682);
  static lane_mask<Real> flagged(const value& x, const value&) {
    return outside<Real, to_bits(least), to_bits(end)>(bits_as<typename tested<Real>::bits>(x)) &
           (x != value(Real(0)));
  }
  // What is left has a result that is no normal number, or none.
  static lane_mask<Real> patch(const value& x, value& r) {
    const auto inner = (x >= value(least)) & (x < value(end)), nan = xsimd::isnan(x);
    r = xsimd::select(inner, r, xsimd::select(nan, x + x, outer(x)));
    return not_normal(r) & !nan;
  }
  static std::optional<int32_t> shortcut(const Real* a, Real* r) {
    constexpr Real vanishing = single ? Real(0x1p-101) : Real(0x1p-718), infinity_from = 2 * end;
    if (*a < 0) return undefined(r);
    if (std::isinf(*a)) return infinite(*a, VTM_STATUS_OK, r);
    if (*a >= infinity_from) return infinite(*a, VTM_STATUS_OVERFLOW, r);
    if (*a > vanishing) return std::nullopt;
    *r = 0;
    return VTM_STATUS_UNDERFLOW;
  }

 private:
  // From where the result's residual leaves the format.
  static value outer(const value& x) {
    if constexpr (single) {
      return in_double([](const auto& v) { return v * xsimd::sqrt(v); }, x);
    } else {
      constexpr Real up = Real(0x1p400), up_by_root = Real(0x1p600);
      const auto is_small = x < value(Real(1));
      return fast(x * xsimd::select(is_small, value(up), value(1 / up))) *
             xsimd::select(is_small, value(1 / up_by_root), value(up_by_root));
    }
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Pow3o2, unary, LHE, three_halves)
