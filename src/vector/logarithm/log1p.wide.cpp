// SPDX-License-Identifier: Apache-2.0
// log(1 + x) on the wide tiers.
//   u + c = 1 + x exactly, log(1 + x) = log(u + c)
#include "vector/logarithm/log_of_pair.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct wide_log1p : description<Real> {
  using value = batch<Real>;
  using bits = std::make_signed_t<typename format<Real>::bits>;
  static constexpr auto sse = sse_control::nearest;
  static constexpr Real largest = sizeof(Real) == 4 ? Real(0x1p126) : Real(0x1p1022);  // 2^-k stays normal

  static value fast(const value& x) {
    const value one(Real(1));
    const value_pair<value> u = two_sum(one, x);
    const value y = log_of_pair<level::ha>(u.high, u.low);
    return y | (x & value(Real(-0.0)));  // a zero keeps its sign
  }
  // Good: -1 < x < largest.
  static lane_mask<Real> flagged(const value& x, const value&) {
    const auto b = bits_as<bits>(x);
    const auto too_large = b > batch<bits>(static_cast<bits>(to_bits(largest) - 1));
    const auto negative = batch<bits>(bits{0}) > b;
    return mask_as<Real>(too_large |
                         (negative & (b > batch<bits>(static_cast<bits>(to_bits(Real(-1)) - 1)))));
  }
  // A large x is its own 1 + x.
  static int32_t rare(const Real* a, Real* r) {
    return log1p_rare(a, r, [](Real x) {
      if (x < largest) return fast(value(x)).get(0);
      return log_of<Real, log_base::e, level::ha>(split_for_log(value(x))).get(0);
    });
  }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp (V3, V4), by tmk-accuracy Log1p --search thorough:
//   single LA, HA, EP: 0.5121 at 0x1.ab0ffcp-4: got 0x1.963c18p-4, want 0x1.963c1906p-4
//   double LA, HA, EP: 0.5116 at 0x1.bb9fbc7979163p-4: got 0x1.a5348662c970ep-4, want 0x1.a5348662c970e83p-4
TMK_REAL_KERNELS(Log1p, unary, HHH, wide_log1p)
