// SPDX-License-Identifier: Apache-2.0
// The inverses of the error functions and of the normal distribution. By symmetry each is g(m) >= 0 of the
// smaller probability m, up to 1 (erfc) or 1/2 (normal), and a sign: by cells of m, two to an octave. For m
// below 2^-8, where g nears w = sqrt(-ln m), or sqrt(2) times the w of 2 m, by cells of w.
#include "vector/error_functions/cells.hpp"
#include "vector/error_functions/inverses_data.hpp"
#include "vector/error_functions/near_zero.hpp"
#include "vector/power/pair_log.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

enum class inverted { erf, erfc, normal };

template <class Real, bool IsNormal>
struct inverse_tables;
template <>
struct inverse_tables<float, false> {
  static constexpr const auto &near = inverses_data::float_erfc, &ep = inverses_data::float_erfc_ep;
};
template <>
struct inverse_tables<float, true> {
  static constexpr const auto &near = inverses_data::float_normal, &ep = inverses_data::float_normal_ep;
};
template <>
struct inverse_tables<double, false> {
  static constexpr const auto &near = inverses_data::double_erfc, &ep = inverses_data::double_erfc_ep;
};
template <>
struct inverse_tables<double, true> {
  static constexpr const auto &near = inverses_data::double_normal, &ep = inverses_data::double_normal_ep;
};

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
    value t;
    if constexpr (Function == inverted::erf)
      t = (value(whole) - cell.center()) - xsimd::abs(x);
    else
      t = m - cell.center();
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
      g = multiply_add(slope, t, cell.at_center());
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
    value g;
    if constexpr (sizeof(Real) == 4)
      g = in_double(of_doubles, m);
    else
      g = of_doubles(m);
    y = xsimd::select(nan, x + x, xsimd::select(far, with_sign(x, g), y));
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
