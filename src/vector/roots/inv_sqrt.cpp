// SPDX-License-Identifier: Apache-2.0
// 1 / sqrt(x) on the baseline: r estimates it, and with e = x r^2 - 1
//   1 / sqrt(x) = r (1 + e)^(-1/2) = r (1 - e / 2 + 3 e^2 / 8 - 5 e^3 / 16 + ...)
#include "vector/roots/inv_rare.hpp"
#include "vector/roots/inv_sqrt_data.hpp"
#include "vector/roots/root_series.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// One element in double, for EP and HA: t = 1 / sqrt(m) from a table over the mantissa m, then the series in
// e = 1 - m t^2, where the halves of m times the short t^2 are exact.
int32_t inv_sqrt_in_double(const float* a, float* r) {
  const float x = *a;
  if ((to_bits(x) & format<float>::infinity) == format<float>::infinity) {
    const bool negative_infinity = !is_nan(x) && is_negative(x);
    *r = is_nan(x) ? x / x : negative_infinity ? negative_nan<float> : 0.0f;
    return negative_infinity ? VTM_STATUS_DOMAIN : VTM_STATUS_OK;
  }
  if (magnitude_bits(x) == 0) {
    *r = from_bits<float>(to_bits(x) | format<float>::infinity);
    return VTM_STATUS_SINGULARITY;
  }
  if (is_negative(x)) {
    *r = negative_nan<float>;
    return VTM_STATUS_DOMAIN;
  }

  // Subnormals by their integer fraction: no flush control can reach them, and double holds them as normals.
  const double wide = to_bits(x) < 0x00800000 ? to_bits(x) * 0x1p-149 : double{x};
  const int exponent = static_cast<int>(to_bits(wide) >> 52) - format<double>::bias;
  const int odd = exponent & 1;
  double m = from_bits<double>((to_bits(wide) & 0x000FFFFFFFFFFFFF) | 0x3FF0000000000000);
  const uint64_t row = (to_bits(m + from_bits<double>(0x42E0000000000020)) & 0x3F) + (odd ? 32 : 0);
  if (odd) m *= 2.0;
  const double t = _vtmsInvSqrtTab[row];
  const double mh = (m + m * 0x1p27) - m * 0x1p27;
  const double ml = m - mh;
  const double e = (1.0 - mh * t * t) - ml * t * t;
  const double p =
      e * polynomial(e, 0.5, 0.375, 0.3125, 0.2734375, 0.24609374, 0.22558603, 0.20955022, 0.19612131);
  const int half = (exponent - odd) / 2;
  const double scale = from_bits<double>(static_cast<uint64_t>(format<double>::bias - half) << 52);
  *r = static_cast<float>((t * p + t) * scale);
  return VTM_STATUS_OK;
}

template <level Level>
struct single_inv_sqrt : description<float> {
  static f32 fast(const f32& x) {
    const f32 r = keep_high_bits(reciprocal_sqrt_estimate(x));
    const f32 e = x * (r * r) - f32(1.0f);  // r r is exact: one rounding
    if constexpr (Level == level::ep) return r + r * (e * (f32(-0.5f) + e * f32(0.375f)));
    return r + (r * e) * (f32(-0.5f) + e * (f32(0.375f) - f32(0.3125f) * e));
  }
  // Good: positive normal numbers below 2^125, beyond which r r comes near the subnormals that the thread's
  // mode may flush.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    return mask_as<float>(bits_as<int32_t>(x) - i32(static_cast<int32_t>(0x80800000)) >
                          i32(static_cast<int32_t>(0xFD7FFFFF)));
  }
  static int32_t rare(const float* a, float* r) { return inv_sqrt_in_double(a, r); }
};

// LA takes the estimate as it comes, with one Newton step.
template <>
struct single_inv_sqrt<level::la> : description<float> {
  static constexpr bool by_blocks = true;
  static constexpr auto controls = control_class::b;
  static constexpr int group = 8;

  static f32 fast(const f32& x) {
    const f32 r = reciprocal_sqrt_estimate(x);
    return (f32(-0.5f) * r) * (x * r * r - f32(3.0f));
  }
  // Good: positive normal numbers below the last 4094, whose x r may round up to infinity's exponent.
  static lane_mask<float> flagged(const f32& x, const f32&) {
    return mask_as<float>(bits_as<int32_t>(x) + i32(0x7F800000) > i32(static_cast<int32_t>(0xFEFFF001)));
  }
  static int32_t rare(const float* a, float* r) {
    return inv_sqrt_rare(a, r, [](float x) { return fast(f32(x)).get(0); });
  }
};

template <level Level>
struct double_inv_sqrt : description<double> {
  static f64 fast(const f64& x) {
    const f64 r = reciprocal_sqrt_estimate(x);
    const f64 xh = keep_high_bits(x);
    const f64 xl = x - xh;
    const f64 e = (xh * r * r - f64(1.0)) + (xl * r) * r;
    return r + r * inverse_root_series<Level>(e);
  }
  static lane_mask<double> flagged(const f64& x, const f64&) { return not_positive_normal(x); }
  static int32_t rare(const double* a, double* r) {
    return inv_sqrt_rare(a, r, [](double x) { return fast(f64(x)).get(0); });
  }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp (W7), by tmk-accuracy InvSqrt --search thorough:
//   single LA: 3.971 at 0x1.0bc02ap+0: got 0x1.f4a38ep-1, want 0x1.f4a395f1p-1
//   single HA: 0.9845 at 0x1.0b7308p+0: got 0x1.f4ebc4p-1, want 0x1.f4ebc208p-1
//   single EP: 1.774 at 0x1.f44406p+93: got 0x1.02fc24p-47, want 0x1.02fc278cp-47
//   double LA, EP: 0.6839 at 0x1.043ffde189502p-1: got 0x1.671205a2e282cp+0, want 0x1.671205a2e282b51p+0
//   double HA: 0.5007 at 0x1.037fdae1a1727p-252: got 0x1.fc8939e3dba26p+125, want 0x1.fc8939e3dba268p+125
TMK_KERNELS(s, InvSqrt, unary, LHE, single_inv_sqrt)
TMK_KERNELS(d, InvSqrt, unary, LHL, double_inv_sqrt)
