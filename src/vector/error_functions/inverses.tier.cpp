// SPDX-License-Identifier: Apache-2.0
// The inverses of the error functions and of the normal distribution. By symmetry each is g(m) >= 0 of the
// smaller probability m, up to 1 (erfc) or 1/2 (normal), and a sign: by cells of m, two to an octave. For m
// below 2^-8, where g nears w = sqrt(-ln m), or sqrt(2) times the w of 2 m, by cells of w.
#include "vector/error_functions/inverses_data.hpp"
#include "vector/error_functions/near_zero.hpp"
#include "vector/power/pair_log.hpp"
#include "vector/toolbox/cells.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

enum class inverted { erf, erfc, normal };

template <class Real, bool IsNormal>
struct inverse_tables;
#define TMK_INVERSE_TABLES(Real, is_normal, kind)                        \
  template <>                                                            \
  struct inverse_tables<Real, is_normal> {                               \
    static constexpr const auto& near = inverses_data::Real##_##kind;    \
    static constexpr const auto& ep = inverses_data::Real##_##kind##_ep; \
  };
TMK_INVERSE_TABLES(float, false, erfc)
TMK_INVERSE_TABLES(float, true, normal)
TMK_INVERSE_TABLES(double, false, erfc)
TMK_INVERSE_TABLES(double, true, normal)
#undef TMK_INVERSE_TABLES

// g(m) for m from 2^-1074 to 2^-8, the erfc's argument.
template <bool IsNormal>
f64 far_inverse(const f64& m) {
  constexpr auto& columns = []() -> auto& {
    if constexpr (IsNormal)
      return inverses_data::far_normal;
    else
      return inverses_data::far_erfc;
  }
  ();
  const f64 zero(0.0);
  const auto subnormal = m < f64(0x1p-1022);
  const auto log =
      pair_log(xsimd::select(subnormal, m * f64(0x1p54), m), xsimd::select(subnormal, f64(-54.0), zero));
  const auto w = square_root(fast_two_sum(zero - log.high, zero - log.low));
  const cells<columns, 50> cell(bits_as<uint64_t>(w.high));
  const f64 t = w.high - cell.center();
  const auto line = add_product(cell.at_center(), cell.slope(), t);
  return line.high + multiply_add(t, cell.rest(t), multiply_add(cell.slope(), w.low, line.low));
}

// Maximum errors in ulp (W7), by tmk-accuracy ErfInv --search brief:
//   single LA: 1.087 at 0x1.06680ap-2: got 0x1.d966cp-3, want 0x1.d966bdd4p-3
//   single HA: 0.7469 at 0x1.0fc64cp-126: got 0x1.e1b538p-127, want 0x1.e1b53afdp-127
//   single EP: 950 at 0x1.000022p-2: got 0x1.cd693cp-3, want 0x1.cd70a784p-3
//   double LA: 1.133 at 0x1.09e1a19a1729p-2: got 0x1.dfe74505752f8p-3, want 0x1.dfe74505752f922p-3
//   double HA: 0.6981 at 0x1.09e04c3d2153dp-2: got 0x1.dfe4c5d1ce4fep-3, want 0x1.dfe4c5d1ce4feb3p-3
//   double EP: 2.5e+07 at -0x1.09f5fed2e75efp-2: got -0x1.e00d670a38888p-3, want -0x1.e00d66f23685694p-3
// Maximum errors in ulp (V3, V4), by tmk-accuracy ErfInv --search brief:
//   single LA: 1.067 at -0x1.20778ap-5: got -0x1.ff75e2p-6, want -0x1.ff75dfdep-6
//   single HA: 0.6127 at 0x1.07d6p-2: got 0x1.dc1334p-3, want 0x1.dc1332c6p-3
//   single EP: 949 at 0x1.000044p-2: got 0x1.cd697cp-3, want 0x1.cd70e6ebp-3
//   double LA: 1.038 at 0x1.196608deeeffcp-3: got 0x1.f541d07ee33c1p-4, want 0x1.f541d07ee33c20ap-4
//   double HA: 0.6871 at 0x1.09e1d640d7315p-2: got 0x1.dfe7a79c6c356p-3, want 0x1.dfe7a79c6c356bp-3
//   double EP: 2.5e+07 at -0x1.09f5fed2e75a7p-2: got -0x1.e00d670a38801p-3, want -0x1.e00d66f2367cfc1p-3
// Maximum errors in ulp (W7), by tmk-accuracy ErfcInv --search brief:
//   single LA: 1.081 at 0x1.4203fap+0: got -0x1.dc7f8cp-3, want -0x1.dc7f89d6p-3
//   single HA: 0.6289 at 0x1.41fda4p+0: got -0x1.dc502p-3, want -0x1.dc501ebep-3
//   single EP: 950 at 0x1.7fffeep-1: got 0x1.cd694p-3, want 0x1.cd70ab3fp-3
//   double LA: 1.143 at 0x1.427fc79c6b1e7p+0: got -0x1.e01e7c93e007p-3, want -0x1.e01e7c93e007125p-3
//   double HA: 0.6905 at 0x1.42675f4cabda8p+0: got -0x1.df67ae3c58f86p-3, want -0x1.df67ae3c58f86b1p-3
//   double EP: 2.5e+07 at 0x1.7b04ffa87d548p-1: got 0x1.e00d6a85c7cd2p-3, want 0x1.e00d6a6dc5ca08ap-3
// Maximum errors in ulp (V3, V4), by tmk-accuracy ErfcInv --search brief:
//   single LA: 1.050 at 0x1.047d1ep+0: got -0x1.fd3af2p-7, want -0x1.fd3af41ap-7
//   single HA: 0.6127 at 0x1.41f58p+0: got -0x1.dc1334p-3, want -0x1.dc1332c6p-3
//   single EP: 949 at 0x1.7fffdep-1: got 0x1.cd697cp-3, want 0x1.cd70e6ebp-3
//   double LA: 1.037 at 0x1.23885af57fc08p+0: got -0x1.fa687c0c6612dp-4, want -0x1.fa687c0c6612bf7p-4
//   double HA: 0.6801 at 0x1.425af4e79648cp+0: got -0x1.df0ab3c23ce1ap-3, want -0x1.df0ab3c23ce1aaep-3
//   double EP: 2.5e+07 at 0x1.7b04ff8d54987p-1: got 0x1.e00d6aeb7eae7p-3, want 0x1.e00d6ad37cab5c3p-3
// Maximum errors in ulp (W7), by tmk-accuracy CdfNormInv --search brief:
//   single LA: 1.284 at 0x1.032af8p-1: got 0x1.fc383ap-7, want 0x1.fc383c91p-7
//   single HA: 0.5714 at 0x1.42bbacp-1: got 0x1.54bc2p-2, want 0x1.54bc1edbp-2
//   single EP: 727 at 0x1.3e52b2p-2: got -0x1.f93a24p-2, want -0x1.f93fd29cp-2
//   double LA: 1.284 at 0x1.9bdde6d3ea119p-2: got -0x1.fb20ede6e118ep-3, want -0x1.fb20ede6e118cb7p-3
//   double HA: 0.5965 at 0x1.604f20a912e6p-1: got 0x1.f6410206aa95fp-2, want 0x1.f6410206aa95f99p-2
//   double EP: 1.9e+07 at 0x1.6065ead29581cp-1: got 0x1.f6c1e0948349p-2, want 0x1.f6c1e0a6d4cb25p-2
// Maximum errors in ulp (V3, V4), by tmk-accuracy CdfNormInv --search brief:
//   single LA: 1.284 at 0x1.032af8p-1: got 0x1.fc383ap-7, want 0x1.fc383c91p-7
//   single HA: 0.5582 at 0x1.425664p-1: got 0x1.52a3a8p-2, want 0x1.52a3a6e2p-2
//   single EP: 727 at 0x1.60d5ccp-1: got 0x1.f9354cp-2, want 0x1.f93afa98p-2
//   double LA: 1.287 at 0x1.9bdde6d380c54p-2: got -0x1.fb20ede9016b1p-3, want -0x1.fb20ede9016afb6p-3
//   double HA: 0.5965 at 0x1.604f20a912e6p-1: got 0x1.f6410206aa95fp-2, want 0x1.f6410206aa95f99p-2
//   double EP: 1.9e+07 at 0x1.6065ea8e1bbfap-1: got 0x1.f6c1df11413bfp-2, want 0x1.f6c1df2392be14fp-2
template <class Real, level Level, inverted Function>
struct inverse : description<Real> {
  using value = batch<Real>;
  using tables = inverse_tables<Real, Function == inverted::normal>;
  static constexpr int group = cell_group<Real>;
  static constexpr auto sse = sse_control::exact;                                // subnormal arguments
  static constexpr Real whole = Function == inverted::erfc ? Real(2) : Real(1);  // of both probabilities
  static constexpr Real near_end = Function == inverted::normal ? Real(0x1p-9) : Real(0x1p-8);

  static value smaller(const value& x) {
    if constexpr (Function == inverted::erf)
      return value(whole) - xsimd::abs(x);
    else
      return minimum_or_second(x, value(whole) - x);
  }
  static value with_sign(const value& x, const value& g) {
    const value sign(Real(-0.0)), half(whole / 2);
    if constexpr (Function == inverted::erf) return g | (x & sign);
    if constexpr (Function == inverted::erfc) return g | ((half - x) & sign);
    return g | ((x - half) & sign);
  }

  static value fast(const value& x) {
    using bits = batch<typename format<Real>::bits>;
    constexpr auto& columns = []() -> auto& {
      if constexpr (Level == level::ep)
        return tables::ep;
      else
        return tables::near;
    }
    ();
    const value m = smaller(x);
    const cells<columns, format<Real>::fraction_bits - 1> cell(bits_as<typename format<Real>::bits>(m) -
                                                               bits(1));
    value t, exact;  // apart where x is so small that its square is no normal number
    if constexpr (Function == inverted::erf) {
      const value center = value(whole) - cell.center(), magnitude = xsimd::abs(x);
      exact = center - magnitude;
      t = center - maximum_or_second(value(linear_end<Real>), magnitude);
    } else {
      t = exact = m - cell.center();
    }
    const value rest = cell.rest(t);
    value g;
    if constexpr (Level == level::ha) {
      const auto line = add_product(cell.at_center(), cell.slope(), t);
      g = line.high + multiply_add(t, rest, line.low);
      if constexpr (Function == inverted::erf)
        g = xsimd::select(xsimd::abs(x) < value(linear_end<Real>),
                          multiple_near_zero<Real>(xsimd::abs(x), -0.11377307454724198672), g);
    } else {
      const value slope = Level == level::ep ? multiply_add(rest, t, cell.slope()) : rest + cell.slope();
      g = multiply_add(slope, exact, cell.at_center());
    }
    return with_sign(x, g);
  }

  static lane_mask<Real> flagged(const value& x, const value&) { return !(smaller(x) > value(near_end)); }
  static lane_mask<Real> patch(const value& x, value& y) {
    const value m = smaller(x);
    const auto nan = xsimd::isnan(x), far = (m > value(Real(0))) & (m <= value(near_end));
    const auto of_doubles = [](const f64& m) {
      constexpr bool is_normal = Function == inverted::normal;
      return far_inverse<is_normal>(is_normal ? m + m : m);
    };
    y = xsimd::select(nan, x + x, y);
    if (lane_bits<Real>(far) != 0) {
      value g;
      if constexpr (sizeof(Real) == 4)
        g = in_double(of_doubles, m);
      else
        g = of_doubles(m);
      y = xsimd::select(far, with_sign(x, g), y);
    }
    return !(nan | far);
  }
};

template <class Real, level Level>
using inverse_error_function = inverse<Real, Level, inverted::erf>;
template <class Real, level Level>
using inverse_complementary_error_function = inverse<Real, Level, inverted::erfc>;
template <class Real, level Level>
using normal_quantile = inverse<Real, Level, inverted::normal>;

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(ErfInv, unary, LHE, inverse_error_function)
TMK_REAL_KERNELS(ErfcInv, unary, LHE, inverse_complementary_error_function)
TMK_REAL_KERNELS(CdfNormInv, unary, LHE, normal_quantile)
