// SPDX-License-Identifier: Apache-2.0
// log10(x) on the baseline: the tables and the identity of log_reduction.hpp, with
//   log10(1 + t) = e_high t + p(t),   e_high the leading bits of log10(e):
// e_high times the short part of t is exact, and p takes the rest.
// EP goes without a table: x = 2^k m, m in [2/3, 4/3), and a polynomial in m - 1.
#include "vector/logarithm/log10_data.hpp"
#include "vector/logarithm/log_reduction.hpp"

TMK_TIER_OPEN
namespace {

using namespace log10_data;

template <level Level>
struct single_log10;
template <level Level>
struct double_log10;

// Maximum error 1.991 ulp at 0x1.fdfc8ep-1: got -0x1.c097bap-10, want -0x1.c097bdfae9567p-10 (all inputs),
// 22.6 bits at 0x1.027d3cp+0.
template <>
struct single_log10<level::la> : positive_logarithm<float, single_log10<level::la>> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 4;

  static f32 formula(const f32& x, int k0) {
    const auto [high, low, distance] = reduce_by_center(x, k0, single_la_rows, single_unit);
    const f32 t = distance.high;
    return high + (t * polynomial(t, single_la_polynomial) + low);
  }
};

// Maximum error 0.616 ulp at 0x1.fbec68p-1: got -0x1.c70a7cp-9, want -0x1.c70a7ac4df874p-9 (all inputs).
template <>
struct single_log10<level::ha> : positive_logarithm<float, single_log10<level::ha>> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 8;

  static f32 formula(const f32& x, int k0) {
    const auto [high, low, parts] = reduce_by_64(x, k0, single_ha_rows, single_unit);
    const f32 t = parts.high + parts.low;
    const auto linear = fast_two_sum(parts.high * f32(single_e_high), parts.low * f32(single_e_high));
    return sum_of_three(high, linear.high, linear.low + (low + t * polynomial(t, single_ha_polynomial)));
  }
};

// Maximum relative error 2^-14.04 at 0x1.555576p+0: got 0x1.ffc834p-4, want 0x1.ffc06cfa113c4p-4
// (all inputs).
template <>
struct single_log10<level::ep> : positive_logarithm<float, single_log10<level::ep>> {
  static constexpr int group = 16;

  static f32 formula(const f32& x, int k0) {
    const auto [k, f] = reduce_about_one(x, k0);
    return k * f32(0x1.344136p-2f) + f * polynomial(f, single_ep_polynomial);
  }
};

// Maximum error 0.5007 ulp at 0x1.004611e96be81p+0: got 0x1.e6a2ca793a8ccp-12,
// want 0x1.e6a2ca793a8cc8030e20p-12 (6,000,000 samples).
template <>
struct double_log10<level::ha> : positive_logarithm<double, double_log10<level::ha>> {
  static constexpr bool by_blocks = true;
  static constexpr int group = 4;

  static f64 formula(const f64& x, int k0) {
    const auto [high, low, parts] = reduce_by_512(x, k0, double_rows, double_unit);
    const f64 t = parts.high + parts.low;
    const f64 e_high(double_e_high);
    const f64 p = t * polynomial(t, double_polynomial);
    return sum_of_three(high + parts.high * e_high, parts.low * e_high, low + p);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Log10, unary, LHE, single_log10)
TMK_KERNELS(d, Log10, unary, HHH, double_log10)
