// SPDX-License-Identifier: Apache-2.0
#include "oracle/oracle_rows.hpp"

#include <cmath>

#include "oracle/error_formulas.hpp"

namespace tmk::accuracy {
namespace {

constexpr mpc_rnd_t nearest_parts = MPC_RNDNN;

template <auto Function>
int unary(evaluation& e) {
  return Function(e.first(), e.x(), nearest);
}

template <auto Function>
int binary(evaluation& e) {
  return Function(e.first(), e.x(), e.y(), nearest);
}

template <auto Function>
int complex_unary(evaluation& e) {
  return Function(e.r, e.a, nearest_parts);
}

template <auto Function>
int complex_binary(evaluation& e) {
  return Function(e.r, e.a, e.b, nearest_parts);
}

template <auto Function>
int complex_to_real(evaluation& e) {
  return Function(e.first(), e.a, nearest);
}

// In degrees: a turn has 360 units.
template <auto Function>
int degrees(evaluation& e) {
  return Function(e.first(), e.x(), 360, nearest);
}

int absolute(evaluation& e) { return mpfr_abs(e.first(), e.x(), nearest); }

int multiply_by_conjugate(evaluation& e) {
  mpc_t conjugate;
  mpc_init2(conjugate, mpc_get_prec(e.b));
  mpc_conj(conjugate, e.b, nearest_parts);
  const int ternary = mpc_mul(e.r, e.a, conjugate, nearest_parts);
  mpc_clear(conjugate);
  return ternary;
}

// Numerator and denominator are rounded once each, so cancellation inside them costs nothing.
int linear_fraction(evaluation& e) {
  number numerator(e), denominator(e);
  mpfr_fma(numerator, e.scalea, e.x(), e.shifta, nearest);
  mpfr_fma(denominator, e.scaleb, e.y(), e.shiftb, nearest);
  mpfr_div(e.first(), numerator, denominator, nearest);
  return inexact;
}

// The argument of greater (Sign > 0) or smaller magnitude; of equal magnitudes the greater or smaller one.
template <int Sign>
int by_magnitude(evaluation& e) {
  const bool unordered = mpfr_nan_p(e.x()) || mpfr_nan_p(e.y());
  const int order = unordered ? 0 : Sign * mpfr_cmpabs(e.x(), e.y());
  if (order != 0) return take(e, order > 0 ? e.x() : e.y());
  return (Sign > 0 ? mpfr_max : mpfr_min)(e.first(), e.x(), e.y(), nearest);
}

int next_after(evaluation& e) {
  const double x = mpfr_get_d(e.x(), nearest), y = mpfr_get_d(e.y(), nearest);
  const auto next = [](auto from, auto to) -> double { return std::nextafter(from, to); };
  const double result = e.is_single ? next(static_cast<float>(x), static_cast<float>(y)) : next(x, y);
  return mpfr_set_d(e.first(), result, nearest);
}

int reciprocal(evaluation& e) { return mpfr_ui_div(e.first(), 1, e.x(), nearest); }

int inverse_cube_root(evaluation& e) { return mpfr_rootn_si(e.first(), e.x(), -3, nearest); }

// IEEE 754 powr: exp(y ln x), so without value for x < 0, 0^0, inf^0 and 1^inf.
int power_of_positive(evaluation& e) {
  const bool zero_to_zero = mpfr_zero_p(e.y()) && (mpfr_zero_p(e.x()) || mpfr_inf_p(e.x()));
  const bool one_to_infinity = mpfr_cmp_ui(e.x(), 1) == 0 && mpfr_inf_p(e.y());
  const bool negative = mpfr_signbit(e.x()) && !mpfr_zero_p(e.x());
  if (mpfr_nan_p(e.x()) || mpfr_nan_p(e.y()) || negative || zero_to_zero || one_to_infinity)
    return undefined(e);
  number base(e);
  mpfr_abs(base, e.x(), nearest);
  return mpfr_pow(e.first(), base, e.y(), nearest);
}

int two_thirds_power(evaluation& e) {
  number square(e);
  return mpfr_sqr(square, e.x(), nearest) | mpfr_cbrt(e.first(), square, nearest);
}

// x sqrt(x): exact where the root is; a zero keeps the sign of x^3.
int three_halves_power(evaluation& e) {
  number root(e);
  return mpfr_sqrt(root, e.x(), nearest) | mpfr_mul(e.first(), e.x(), root, nearest);
}

// floor(log2 |x|), the exponent of the fraction in [1, 2).
int exponent_of(evaluation& e) {
  if (mpfr_regular_p(e.x())) return mpfr_set_si(e.first(), mpfr_get_exp(e.x()) - 1, nearest);
  if (mpfr_nan_p(e.x())) return undefined(e);
  mpfr_set_inf(e.first(), mpfr_zero_p(e.x()) ? -1 : 1);
  return 0;
}

int sine_and_cosine(evaluation& e) { return mpfr_sin_cos(e.first(), e.second(), e.x(), nearest); }

int cosine_and_sine(evaluation& e) { return mpfr_sin_cos(e.second(), e.first(), e.x(), nearest); }

int integer_and_fraction(evaluation& e) { return mpfr_modf(e.first(), e.second(), e.x(), nearest); }

int log_abs_gamma(evaluation& e) {
  int sign;
  return mpfr_lgamma(e.first(), &sign, e.x(), nearest);
}

// E1(x) = -Ei(-x), for x >= 0.
int exponential_integral(evaluation& e) {
  if (mpfr_signbit(e.x()) && !mpfr_zero_p(e.x())) return undefined(e);
  number opposite(e);
  mpfr_neg(opposite, e.x(), nearest);
  mpfr_eint(e.first(), opposite, nearest);
  mpfr_neg(e.first(), e.first(), nearest);
  return inexact;
}

constexpr oracle_row rows[] = {
    {"Add", binary<mpfr_add>, complex_binary<mpc_add>},
    {"Sub", binary<mpfr_sub>, complex_binary<mpc_sub>},
    {"Mul", binary<mpfr_mul>, complex_binary<mpc_mul>},
    {"MulByConj", nullptr, multiply_by_conjugate},
    {"Div", binary<mpfr_div>, complex_binary<mpc_div>},
    {"Sqr", unary<mpfr_sqr>, nullptr},
    {"Abs", absolute, complex_to_real<mpc_abs>},
    {"Conj", nullptr, complex_unary<mpc_conj>},
    {"Arg", nullptr, complex_to_real<mpc_arg>},
    {"LinearFrac", linear_fraction, nullptr},
    {"Fmod", binary<mpfr_fmod>, nullptr},
    {"Remainder", binary<mpfr_remainder>, nullptr},
    {"Fdim", binary<mpfr_dim>, nullptr},
    {"Fmax", binary<mpfr_max>, nullptr},
    {"Fmin", binary<mpfr_min>, nullptr},
    {"MaxMag", by_magnitude<1>, nullptr},
    {"MinMag", by_magnitude<-1>, nullptr},
    {"CopySign", [](evaluation& e) { return mpfr_copysign(e.first(), e.x(), e.y(), nearest); }, nullptr},
    {"NextAfter", next_after, nullptr},

    {"Inv", reciprocal, nullptr},
    {"Sqrt", unary<mpfr_sqrt>, complex_unary<mpc_sqrt>},
    {"InvSqrt", unary<mpfr_rec_sqrt>, nullptr},
    {"Cbrt", unary<mpfr_cbrt>, nullptr},
    {"InvCbrt", inverse_cube_root, nullptr},
    {"Pow", binary<mpfr_pow>, complex_binary<mpc_pow>},
    {"Powx", binary<mpfr_pow>, complex_binary<mpc_pow>},
    {"Powr", power_of_positive, nullptr},
    {"Pow2o3", two_thirds_power, nullptr},
    {"Pow3o2", three_halves_power, nullptr},
    {"Hypot", binary<mpfr_hypot>, nullptr},

    {"Exp", unary<mpfr_exp>, complex_unary<mpc_exp>},
    {"Exp2", unary<mpfr_exp2>, nullptr},
    {"Exp10", unary<mpfr_exp10>, nullptr},
    {"Expm1", unary<mpfr_expm1>, nullptr},
    {"Ln", unary<mpfr_log>, complex_unary<mpc_log>},
    {"Log2", unary<mpfr_log2>, nullptr},
    {"Log10", unary<mpfr_log10>, complex_unary<mpc_log10>},
    {"Log1p", unary<mpfr_log1p>, nullptr},
    {"Logb", exponent_of, nullptr},

    {"Sin", unary<mpfr_sin>, complex_unary<mpc_sin>},
    {"Cos", unary<mpfr_cos>, complex_unary<mpc_cos>},
    {"SinCos", sine_and_cosine, nullptr},
    {"CIS", nullptr, cosine_and_sine},
    {"Tan", unary<mpfr_tan>, complex_unary<mpc_tan>},
    {"Sinpi", unary<mpfr_sinpi>, nullptr},
    {"Cospi", unary<mpfr_cospi>, nullptr},
    {"Tanpi", unary<mpfr_tanpi>, nullptr},
    {"Sind", degrees<mpfr_sinu>, nullptr},
    {"Cosd", degrees<mpfr_cosu>, nullptr},
    {"Tand", degrees<mpfr_tanu>, nullptr},

    {"Asin", unary<mpfr_asin>, complex_unary<mpc_asin>},
    {"Acos", unary<mpfr_acos>, complex_unary<mpc_acos>},
    {"Atan", unary<mpfr_atan>, complex_unary<mpc_atan>},
    {"Atan2", binary<mpfr_atan2>, nullptr},
    {"Asinpi", unary<mpfr_asinpi>, nullptr},
    {"Acospi", unary<mpfr_acospi>, nullptr},
    {"Atanpi", unary<mpfr_atanpi>, nullptr},
    {"Atan2pi", binary<mpfr_atan2pi>, nullptr},

    {"Sinh", unary<mpfr_sinh>, complex_unary<mpc_sinh>},
    {"Cosh", unary<mpfr_cosh>, complex_unary<mpc_cosh>},
    {"Tanh", unary<mpfr_tanh>, complex_unary<mpc_tanh>},
    {"Asinh", unary<mpfr_asinh>, complex_unary<mpc_asinh>},
    {"Acosh", unary<mpfr_acosh>, complex_unary<mpc_acosh>},
    {"Atanh", unary<mpfr_atanh>, complex_unary<mpc_atanh>},

    {"Erf", unary<mpfr_erf>, nullptr},
    {"Erfc", error_complement, nullptr},
    {"ErfInv", error_function_inverse, nullptr},
    {"ErfcInv", complementary_error_inverse, nullptr},
    {"CdfNorm", normal_cdf, nullptr},
    {"CdfNormInv", normal_cdf_inverse, nullptr},
    {"LGamma", log_abs_gamma, nullptr},
    {"TGamma", unary<mpfr_gamma>, nullptr},
    {"ExpInt1", exponential_integral, nullptr},

    {"Floor", [](evaluation& e) { return mpfr_floor(e.first(), e.x()); }, nullptr},
    {"Ceil", [](evaluation& e) { return mpfr_ceil(e.first(), e.x()); }, nullptr},
    {"Trunc", [](evaluation& e) { return mpfr_trunc(e.first(), e.x()); }, nullptr},
    {"Round", [](evaluation& e) { return mpfr_round(e.first(), e.x()); }, nullptr},
    {"NearbyInt", [](evaluation& e) { return mpfr_roundeven(e.first(), e.x()); }, nullptr},
    {"Rint", [](evaluation& e) { return mpfr_roundeven(e.first(), e.x()); }, nullptr},
    {"Modf", integer_and_fraction, nullptr},
    {"Frac", unary<mpfr_frac>, nullptr},
};

}  // namespace

const oracle_row* find_oracle_row(std::string_view stem) {
  for (const oracle_row& row : rows)
    if (row.stem == stem) return &row;
  return nullptr;
}

}  // namespace tmk::accuracy
