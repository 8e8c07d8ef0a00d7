// SPDX-License-Identifier: Apache-2.0
// The error function, from a table of it. With r the nearest row's argument, s(r) = 2/sqrt(pi) exp(-r^2),
// d = |x| - r and a = r d,
//   erf(r + d) = erf(r) + s(r) d (1 + tail)
//   1 + tail = integral of exp(-2 a u) exp(-d^2 u^2) for u from 0 to 1
// whose series in a and d^2 have rational coefficients. |d| is up to 1/256 in double and 1/128 in single,
// where a few terms are enough; they fall further with s(r). HA knows erf(r) and s(r) in two words. V4 has
// cells for single.
#include "simd/rows.hpp"
#include "vector/error_functions/erf_data.hpp"
#include "vector/error_functions/near_zero.hpp"
#include "vector/toolbox/cells.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
constexpr auto& erf_rows() {
  if constexpr (sizeof(Real) == 4)
    return erf_data::float_rows;
  else
    return erf_data::double_rows;
}

// The rows next to |x|: their arguments, and the first columns of each.
template <class Real, int Columns>
struct erf_row {
  batch<Real> r, column[Columns];

  explicit erf_row(const batch<Real>& magnitude) {
    using value = batch<Real>;
    using bits = typename format<Real>::bits;
    constexpr int per_unit = erf_data::rows_per_unit<Real>, last = std::size(erf_rows<Real>()) - 1;
    // The number of a row fills the low bits.
    constexpr Real shifter = Real(1.5) / std::numeric_limits<Real>::epsilon() / per_unit;
    static_assert(Columns == 2 || Columns == 4);
    const value shifted = minimum_or_second(magnitude, value(Real(last) / per_unit)) + value(shifter);
    r = shifted - value(shifter);
    const auto number = (bits_as<bits>(shifted) & batch<bits>(1023)) << (Columns == 2 ? 1 : 0);
    int32_t index[lanes<Real>];
    if constexpr (sizeof(Real) == 8)
      store_lower_words(reinterpret_cast<uint32_t*>(index), number);
    else
      store(index, bits_as<int32_t>(number));
    load_columns<Columns>(&erf_rows<Real>()->value, index, column);
  }
};

// 1 - a + 2/3 a^2 - d^2 / 3 + ...: without 1, by half as many terms where they are to serve half the bits.
template <bool Short, class Real>
batch<Real> erf_tail(const batch<Real>& a, const batch<Real>& d) {
  using value = batch<Real>;
  constexpr auto c = [](double x) { return value(static_cast<Real>(x)); };
  const value d2 = d * d;
  if constexpr (Short) {
    return multiply_add(a, multiply_add(a, c(2.0 / 3), c(-1)), d2 * c(-1.0 / 3));
  } else {
    // 1/10, less what the next term, -d^2 / 42, is at most, about.
    const value fourth = multiply_add(a, c(-1.0 / 6), c(1.0 / 10 - 0.8 / (1 << 16) / 42));
    const value second =
        multiply_add(a, multiply_add(a, multiply_add(a, c(2.0 / 9), c(-2.0 / 5)), c(1.0 / 2)), c(-1.0 / 3));
    const value first = multiply_add(
        a,
        multiply_add(a, multiply_add(a, multiply_add(a, c(-2.0 / 45), c(2.0 / 15)), c(-1.0 / 3)), c(2.0 / 3)),
        c(-1));
    return multiply_add(a, first, d2 * multiply_add(d2, fourth, second));
  }
}

// Maximum errors in ulp (W7), by tmk-accuracy Erf:
//   single LA: 1.958 at -0x1.c5c148p-8: got -0x1.ffffe4p-8, want -0x1.ffffe015p-8
//   single HA: 0.7380 at -0x1.d199p-128: got -0x1.06af7p-127, want -0x1.06af72f4p-127
//   single EP: 4254 at -0x1.c5bbd4p+2: got -0x1.ffdec4p-1, want -0x1p+0
//   double LA: 1.869 at 0x1.00e1a5639b491p-8: got 0x1.21dbb0fdf16d4p-8, want 0x1.21dbb0fdf16d5dep-8
//   double HA: 0.7609 at 0x1.e9db312d58054p-1024: got 0x1.145f2cbacdf1cp-1023, want 0x1.145f2cbacdf1a7ap-1023
//   double EP: 1.2e+06 at 0x1.c000000077b5ap-6: got 0x1.f9634de6c3a9cp-6, want 0x1.f9634de7dcdee39p-6
// Maximum errors in ulp (V3), by tmk-accuracy Erf:
//   single LA: 1.958 at -0x1.c5c148p-8: got -0x1.ffffe4p-8, want -0x1.ffffe015p-8
//   single HA: 0.5310 at -0x1.018e3ep-7: got -0x1.229d4ap-7, want -0x1.229d4b1p-7
//   single EP: 4254 at -0x1.c5bbd4p+2: got -0x1.ffdec4p-1, want -0x1p+0
//   double LA: 1.869 at 0x1.00e1a5639b491p-8: got 0x1.21dbb0fdf16d4p-8, want 0x1.21dbb0fdf16d5dep-8
//   double HA: 0.5991 at 0x1.c5793ea24bf3ep-414: got 0x1.ffb0af6970f76p-414, want 0x1.ffb0af6970f7567p-414
//   double EP: 1.2e+06 at 0x1.c000000077b5ap-6: got 0x1.f9634de6c3a9cp-6, want 0x1.f9634de7dcdee39p-6
// Maximum errors in ulp (V4), by tmk-accuracy Erf:
//   single LA: 1.400 at 0x1.c5a9ap-81: got 0x1.ffe744p-81, want 0x1.ffe746cdp-81
//   single HA: 0.5630 at 0x1.074afap-3: got 0x1.27772cp-3, want 0x1.27772aep-3
//   single EP: 4254 at -0x1.c5bbd4p+2: got -0x1.ffdec4p-1, want -0x1p+0
//   double LA: 1.869 at 0x1.00e1a5639b491p-8: got 0x1.21dbb0fdf16d4p-8, want 0x1.21dbb0fdf16d5dep-8
//   double HA: 0.5991 at 0x1.c5793ea24bf3ep-414: got 0x1.ffb0af6970f76p-414, want 0x1.ffb0af6970f7567p-414
//   double EP: 1.2e+06 at 0x1.c000000077b5ap-6: got 0x1.f9634de6c3a9cp-6, want 0x1.f9634de7dcdee39p-6
template <class Real, level Level>
struct error_function : description<Real> {
  using value = batch<Real>;
  static constexpr auto sse = sse_control::exact;  // results near the smallest normal number

  static constexpr bool paired = Level == level::ha;

  static value fast(const value& x) {
    if constexpr (this_tier == 2 && sizeof(Real) == 4)
      return by_cells(x);
    else
      return by_rows(x);
  }

  static value by_rows(const value& x) {
    constexpr bool short_tail = sizeof(Real) == 4 || Level == level::ep;
    const value magnitude = xsimd::abs(x);
    const erf_row<Real, paired ? 4 : 2> row(magnitude);
    constexpr Real last = Real(std::size(erf_rows<Real>()) - 1) / erf_data::rows_per_unit<Real>;
    const value clamped = minimum_or_second(value(last), magnitude);  // a NaN is the second one
    // Squares of the smallest x would be subnormal numbers or less, which take long.
    const value counted = maximum_or_second(value(linear_end<Real>), clamped), d = counted - row.r;
    const value tail = erf_tail<short_tail>(row.r * d, d);
    value y;
    if constexpr (paired) {
      const auto sum = add_product(row.column[0], row.column[1], d);
      const value low = multiply_add(row.column[3], d, row.column[2]);
      y = sum.high + (sum.low + multiply_add(row.column[1] * d, tail, low));
      y = xsimd::select(magnitude < value(linear_end<Real>),
                        multiple_near_zero<Real>(clamped, 0.128379167095512573896), y);
    } else {
      const value linear = row.column[1] * (clamped - row.r);
      y = row.column[0] + multiply_add(linear, tail, linear);
    }
    y = y | (x & value(Real(-0.0)));
    // Split for exact products, a NaN loses its payload.
    return is_baseline && paired ? xsimd::select(xsimd::isnan(x), x + x, y) : y;
  }

  // Where registers hold a few coefficients of all cells.
  static value by_cells(const value& x) {
    const value magnitude = xsimd::abs(x);
    // A quarter's number fills the low bits. A NaN is the second one.
    const value number = minimum_or_second(value(Real(3.75)), magnitude) + value(Real(0x1.8p21));
    const cells<erf_data::float_cells, 0> cell(bits_as<typename format<Real>::bits>(number));
    const value clamped = minimum_or_second(value(Real(3.9375)), magnitude);
    const value t = maximum_or_second(value(linear_end<Real>), clamped) - cell.center(), rest = cell.rest(t);
    value y;
    if constexpr (paired) {
      const auto line = add_product(cell.at_center(), cell.slope(), t);
      y = line.high + multiply_add(t, rest, line.low);
      y = xsimd::select(magnitude < value(linear_end<Real>),
                        multiple_near_zero<Real>(clamped, 0.128379167095512573896), y);
    } else {
      y = multiply_add(rest + cell.slope(), clamped - cell.center(), cell.at_center());
    }
    return y | (x & value(Real(-0.0)));
  }
};

// 11 bits are had by a quotient of polynomials.
template <>
struct error_function<float, level::ep> : description<float> {
  static constexpr auto sse = sse_control::exact;

  static f32 fast(const f32& x) {
    const f32 magnitude = xsimd::abs(x), y = minimum_or_second(f32(erf_data::saturated), magnitude);
    const f32 z = y * y;
    return (y * polynomial(z, erf_data::p) * near_reciprocal(polynomial(z, erf_data::q))) | (x & f32(-0.0f));
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Erf, unary, LHE, error_function)
TMK_KERNELS(d, Erf, unary, LHE, error_function)
