// SPDX-License-Identifier: Apache-2.0
// ln(x) on the baseline: the tables and the identity of log_reduction.hpp, with
//   log(1 + t) = t - t^2 / 2 + t^3 / 3 - ...
// EP in single goes without a table: x = 2^k m, m in [2/3, 4/3), and the series in m - 1.
#include "vector/logarithm/ln_data.hpp"
#include "vector/logarithm/log_reduction.hpp"

TMK_TIER_OPEN
namespace {

using namespace ln_data;

template <level Level>
struct single_ln;
template <level Level>
struct double_ln;

// ln(x) in the x87 format, which has the subnormals of both types among its normal numbers.
template <class Real>
Real extended_ln(Real x) {
  const control_scope nearest(control_class::c, sse_control::masks_only);  // not in the caller's direction
  long double y = x;
  asm("fldln2\n\tfxch\n\tfyl2x" : "+t"(y) : : "st(7)");
  return static_cast<Real>(y);
}

// Subnormals go the x87 way.
template <class Real, class Kernel>
struct logarithm_x87 : positive_logarithm<Real, Kernel> {
  static int32_t rare(const Real* a, Real* r) {
    return log_rare(a, r, [a](Real x, int k) {
      return k == 0 ? Kernel::formula(batch<Real>(x), 0).get(0) : extended_ln(*a);
    });
  }
};

// Maximum error 1.28 ulp at 0x1.020176p+0: got 0x1.ff75c2p-8, want 0x1.ff75bf7074c99p-8 (all inputs),
// 22.7 bits at 0x1.fdf74cp-1.
template <>
struct single_ln<level::la> : logarithm_x87<float, single_ln<level::la>> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 4;

  static f32 formula(const f32& x, int k0) {
    const auto [high, low, distance] = reduce_by_center(x, k0, single_la_rows, single_la_unit);
    const f32 t = distance.high;
    const f32 p = (t * t) * (f32(-0x1.00018p-1f) + t * f32(0x1.555808p-2f));
    return ((p + low) + t) + high;
  }
};

// Maximum error 0.702 ulp at 0x1.03ff4cp+0: got 0x1.fbb1ecp-7, want 0x1.fbb1ed673ae2dp-7 (all inputs):
// at the edge of the rows of 1 and 2 the missing t^5 / 5 counts 0.2.
template <>
struct single_ln<level::ha> : positive_logarithm<float, single_ln<level::ha>> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 8;

  static f32 formula(const f32& x, int k0) {
    const auto [high, low, parts] = reduce_by_64(x, k0, single_ha_rows, single_ha_unit);
    const auto [t, t_low] = fast_two_sum(parts.high, parts.low);
    const f32 p = (t * t) * (f32(-0.5f) + t * (f32(0x1.555556p-2f) - f32(0.25f) * t));
    return sum_of_three(high, t, t_low + (p + low));
  }
};

// Maximum relative error 2^-12.79 at 0x1.555556p+0: got 0x1.26a0c8p-2, want 0x1.269623134db8ap-2
// (all inputs).
template <>
struct single_ln<level::ep> : positive_logarithm<float, single_ln<level::ep>> {
  static constexpr int group = 16;

  static f32 formula(const f32& x, int k0) { return coarse_ln(x, k0); }
};

// Maximum error 0.5002 ulp at 0x1.001e8c3bb0a53p+0: got 0x1.e8a6940588f6ap-12,
// want 0x1.e8a6940588f697ff0b9ep-12 (6,000,000 samples).
template <>
struct double_ln<level::ha> : positive_logarithm<double, double_ln<level::ha>> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 4;

  static f64 formula(const f64& x, int k0) {
    const auto [high, low, parts] = reduce_by_512(x, k0, double_ha_rows, double_unit);
    const f64 t = parts.high + parts.low;
    const f64 p = (t * t) * polynomial(t, double_ha_polynomial);
    return sum_of_three(high + parts.high, parts.low, low + p);
  }
};

// Maximum relative error 2^-31.0 at 0x1.ff800219998adp-1: got -0x1.001bd1183333bp-10,
// want -0x1.001bd1163214cp-10 (6,000,000 samples).
template <>
struct double_ln<level::ep> : logarithm_x87<double, double_ln<level::ep>> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 4;

  static f64 formula(const f64& x, int k0) {
    f64 row[2];  // of the first 8 fraction bits, rounded
    load_rows(double_ep_rows, (((bits_as<int32_t>(x) & i32(0xFF800)) + i32(0x800)) & i32(0x1FF000)) >> 7,
              row);
    const f64 t = mantissa(x) * row[0] - f64(1.0);
    const f64 high = exponent(x, k0) * f64(double_unit.high) + row[1];
    return high + (t + (t * t) * polynomial(t, double_ep_polynomial));
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Ln, unary, LHE, single_ln)
TMK_KERNELS(d, Ln, unary, HHE, double_ln)
