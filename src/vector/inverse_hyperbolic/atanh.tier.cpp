// SPDX-License-Identifier: Apache-2.0
// Inverse hyperbolic tangent: atanh(x) = log((1 + x) / (1 - x)) / 2. The quotient has two parts, since what
// counts around 1 is its distance from 1. Where x is small the first two terms of the series are closer. EP
// takes one part. On the baseline one part in double is enough for single.
#include "vector/inverse_hyperbolic/coarse_log.hpp"
#include "vector/logarithm/log_of_pair.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/odd.hpp"
#include "vector/toolbox/settled.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (W7), by tmk-accuracy Atanh --search thorough:
//   single LA: 0.5001 at 0x1.695b14p-10: got 0x1.695b24p-10, want 0x1.695b23p-10
//   single HA: 0.5001 at 0x1.695b14p-10: got 0x1.695b24p-10, want 0x1.695b23p-10
//   single EP: 1367 at 0x1.24939cp-3: got 0x1.26a228p-3, want 0x1.26977afep-3
//   double LA: 1.749 at 0x1.fffe93c57ae37p-9: got 0x1.ffff3e6f1fb9cp-9, want 0x1.ffff3e6f1fb9dcp-9
//   double HA: 0.5042 at -0x1.e409af3115504p-10: got -0x1.e409d33e25626p-10, want -0x1.e409d33e2562681p-10
//   double EP: 419425 at 0x1.ffff5552d4701p-9: got 0x1.fffffffcd46dcp-9, want 0x1.fffffffd3ad3ccep-9
// Maximum errors in ulp (V3, V4), by tmk-accuracy Atanh --search thorough:
//   single LA: 1.511 at -0x1.fc929ep-6: got -0x1.fcbc78p-6, want -0x1.fcbc74fbp-6
//   single HA: 0.5116 at -0x1.a4e652p-5: got -0x1.a54548p-5, want -0x1.a5454906p-5
//   single EP: 808 at 0x1.fd5992p-4: got 0x1.fff9bp-4, want 0x1.ffffff41p-4
//   double LA: 1.787 at -0x1.fcb649415b723p-6: got -0x1.fce0290b17e08p-6, want -0x1.fce0290b17e0637p-6
//   double HA: 0.5128 at -0x1.958b968cd92cbp-5: got -0x1.95e0866176352p-5, want -0x1.95e086617635283p-5
//   double EP: 1.1e+07 at -0x1.958b67ef39568p-5: got -0x1.95e0579c1671bp-5, want -0x1.95e057a684ef034p-5
template <class Real, level Level>
struct inverse_tanh : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr auto sse = sse_control::nearest;
  static constexpr Real filler = Real(0.5);
  // EP has the first two terms of the series below.
  static constexpr Real small = single ? Real(0x1p-3) : Real(0x1p-8);

  static value twice_of_magnitude(const value& a) {
    if constexpr (is_baseline && single && Level != level::ep) {
      return in_double([](const auto& v) { return log_for_single((f64(1.0) + v) / (f64(1.0) - v)); }, a);
    } else if constexpr (Level == level::ep) {
      const value one(Real(1));
      return coarse_log((one + a) * near_reciprocal(one - a));
    } else {
      const value one(Real(1));
      const auto above = fast_two_sum(one, a), below = fast_two_sum(one, -a);
      const value reciprocal = one / below.high;
      const value quotient = above.high * reciprocal;
      const value rest =
          residual(above.high, quotient, below.high) + negative_multiply_add(quotient, below.low, above.low);
      return log_of_pair<Level>(quotient, rest * reciprocal);
    }
  }
  static value fast(const value& x) {
    return odd_function(x, [](const value& a) {
      const value y = twice_of_magnitude(a) * value(Real(0.5));
      if constexpr (Level != level::ep) return y;
      return xsimd::select(a < value(small), multiply_add(a * a, a * value(Real(1.0 / 3)), a), y);
    });
  }
  static lane_mask<Real> flagged(const value& x, const value&) { return !(xsimd::abs(x) < value(Real(1))); }
  static std::optional<int32_t> shortcut(const Real* a, Real* r) {
    if (std::abs(*a) > 1) return undefined(r);
    return std::abs(*a) == 1 ? std::optional(infinite(*a, VTM_STATUS_SINGULARITY, r)) : std::nullopt;
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Atanh, unary, LHE, inverse_tanh)
