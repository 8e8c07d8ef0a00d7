// SPDX-License-Identifier: Apache-2.0
// log2(x) on the baseline: the table and the identity of log_reduction.hpp, with
//   log2(1 + t) = e_high t + p(t),   e_high the leading bits of log2(e):
// e_high times the short part of t is exact, and p takes the rest. k + log2(1 / r) needs no product at all.
// EP in single goes without a table: x = 2^k m, m in [2/3, 4/3), and a polynomial in m - 1.
#include "vector/logarithm/log2_data.hpp"
#include "vector/logarithm/log_reduction.hpp"

TMK_TIER_OPEN
namespace {

using namespace log2_data;

// Maximum error, all inputs: 1.422 ulp (LA) at 0x1.0a5784p+0: got 0x1.d40d9p-5, want 0x1.d40d8d27e2fb3p-5;
// 0.570 ulp (HA) at 0x1.096f54p+0: got 0x1.abbcf8p-5, want 0x1.abbcf6dc7b081p-5.
// Maximum relative error 2^-14.04 (EP) at 0x1.5555a2p+0: got 0x1.a90754p-2, want 0x1.a900e2e9cdb06p-2.
template <level Level>
struct single_log2 : positive_logarithm<float, single_log2<Level>> {
  static constexpr int group = 16;

  static f32 formula(const f32& x, int k0) {
    if constexpr (Level == level::ep) {
      const auto [k, f] = reduce_about_one(x, k0);
      return k + f * polynomial(f, single_ep_polynomial);
    }
    f32 row[4];
    load_rows(single_rows, (bits_as<int32_t>(x) >> 14) & i32(0x1F0), row);
    const auto [th, tl] = split_product(mantissa(x), row[0]);
    const f32 t = th + tl;
    const f32 high = xsimd::to_float(exponent_field(x) + i32(k0)) + row[1];
    if constexpr (Level == level::la) return high + (t * polynomial(t, single_la_polynomial) + row[2]);
    const auto linear = fast_two_sum(th * f32(single_e_high), tl * f32(single_e_high));
    const f32 rest = linear.low + (row[2] + t * polynomial(t, single_ha_polynomial));
    return sum_of_three(high, linear.high, rest);
  }
};

// Maximum error in 6,000,000 samples: 1.42 ulp (LA) at 0x1.005870f2591e9p+0: got 0x1.fe07d83feac0fp-10,
// want 0x1.fe07d83feac106b912a1p-10; 0.502 ulp (HA) at 0x1.00e7cb19a4a0fp+0: got 0x1.4dd13034db03p-8,
// want 0x1.4dd13034db02f7fa296bp-8; relative 2^-27.7 (EP) at 0x1.0087d41b0e49dp+0: got 0x1.87834282a1bfcp-9,
// want 0x1.878342a00356fp-9.
template <level Level>
struct double_log2 : positive_logarithm<double, double_log2<Level>> {
  static constexpr int group = 8;

  static f64 formula(const f64& x, int k0) {
    const auto [reciprocal, log_high, log_low] = row_256(x, log_256_data::log2);
    const f64 m = mantissa(x);
    const f64 high = exponent(x, k0) + log_high;
    if constexpr (Level == level::ep) {
      const f64 t = m * reciprocal - f64(1.0);
      return high + t * polynomial(t, double_ep_polynomial);
    }
    const auto [th, tl] = split_product(m, reciprocal);
    const f64 t = th + tl;
    if constexpr (Level == level::la) return high + (t * polynomial(t, double_la_polynomial) + log_low);
    const f64 rest = log_low + t * polynomial(t, double_ha_polynomial);
    return sum_of_three(high + th * f64(double_e_high), tl * f64(double_e_high), rest);
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Log2, unary, LHE, single_log2)
TMK_KERNELS(d, Log2, unary, LHE, double_log2)
