#include "accuracy/oracle_rows.hpp"

#include <cmath>

namespace tmk::accuracy {
namespace {

constexpr mpfr_rnd_t nearest = MPFR_RNDN;
constexpr mpc_rnd_t nearest_parts = MPC_RNDNN;
constexpr int inexact = 1;

// Scratch value with more bits than the results have, so that short compositions lose nothing visible.
class number {
 public:
  explicit number(evaluation& e) { mpfr_init2(value_, e.precision() + 32); }
  number(const number&) = delete;
  number& operator=(const number&) = delete;
  ~number() { mpfr_clear(value_); }
  operator mpfr_ptr() { return value_; }

 private:
  mpfr_t value_;
};

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

int undefined(evaluation& e) {
  mpfr_set_nan(e.first());
  return 0;
}

int take(evaluation& e, mpfr_srcptr x) { return mpfr_set(e.first(), x, nearest); }

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

// erfc(-x / sqrt 2) / 2. The error of the quotient is magnified by 2 x^2 at most, hence the 32 spare bits.
int normal_cdf(evaluation& e) {
  number t(e), root(e);
  mpfr_sqrt_ui(root, 2, nearest);
  mpfr_div(t, e.x(), root, nearest);
  mpfr_neg(t, t, nearest);
  mpfr_erfc(e.first(), t, nearest);
  mpfr_div_2ui(e.first(), e.first(), 1, nearest);
  return inexact;
}

// Newton's step for erf(y) = erf(y0) + offset, by the slope of erf: y += offset e^(y^2) sqrt(pi)/2.
void newton_step(evaluation& e, mpfr_ptr y, mpfr_ptr offset) {
  number factor(e);
  mpfr_sqr(factor, y, nearest);
  mpfr_exp(factor, factor, nearest);
  mpfr_mul(offset, offset, factor, nearest);
  mpfr_const_pi(factor, nearest);
  mpfr_sqrt(factor, factor, nearest);
  mpfr_div_2ui(factor, factor, 1, nearest);
  mpfr_mul(offset, offset, factor, nearest);
  mpfr_add(y, y, offset, nearest);
}

// Convergence is quadratic: once a step is below 2^(-precision/2) y, the next one is the last.
bool is_last_step(evaluation& e, mpfr_ptr y, mpfr_ptr step) {
  return mpfr_zero_p(step) || mpfr_get_exp(step) < mpfr_get_exp(y) - e.precision() / 2 - 1;
}

// y with erf(y) = x for 0 < |x| <= 1/2.
void solve_erf(evaluation& e, mpfr_ptr y, mpfr_srcptr x) {
  number step(e);
  mpfr_set(y, x, nearest);
  for (bool last = false;;) {
    mpfr_erf(step, y, nearest);
    mpfr_sub(step, x, step, nearest);
    newton_step(e, y, step);
    if (last) return;
    last = is_last_step(e, y, step);
  }
}

// y with erfc(y) = c for 0 < c <= 1/2. Newton's method on ln erfc, which is nearly a parabola, converges from
// far away: y -= (ln c - ln erfc(y)) erfc(y) / slope.
void solve_erfc(evaluation& e, mpfr_ptr y, mpfr_srcptr c) {
  number value(e), step(e), log_c(e);
  mpfr_log(log_c, c, nearest);
  mpfr_neg(y, log_c, nearest);
  mpfr_sqrt(y, y, nearest);
  for (bool last = false;;) {
    mpfr_erfc(value, y, nearest);
    mpfr_log(step, value, nearest);
    mpfr_sub(step, step, log_c, nearest);
    mpfr_mul(step, step, value, nearest);
    newton_step(e, y, step);
    if (last) return;
    last = is_last_step(e, y, step);
  }
}

// The inverse of erfc on (0, 2), from the branch that keeps all bits of c.
int inverse_erfc(evaluation& e, mpfr_srcptr c) {
  if (mpfr_zero_p(c) || mpfr_cmp_ui(c, 2) == 0) {
    mpfr_set_inf(e.first(), mpfr_zero_p(c) ? 1 : -1);
    return 0;
  }
  if (mpfr_nan_p(c) || mpfr_sgn(c) < 0 || mpfr_cmp_ui(c, 2) > 0) return undefined(e);
  number y(e), t(e);
  if (mpfr_cmp_d(c, 0.5) <= 0) {
    solve_erfc(e, y, c);
  } else if (mpfr_cmp_d(c, 1.5) <= 0) {
    mpfr_ui_sub(t, 1, c, nearest);
    solve_erf(e, y, t);
  } else {
    mpfr_ui_sub(t, 2, c, nearest);
    solve_erfc(e, y, t);
    mpfr_neg(y, y, nearest);
  }
  take(e, y);
  return inexact;
}

int complementary_error_inverse(evaluation& e) { return inverse_erfc(e, e.x()); }

int error_function_inverse(evaluation& e) {
  if (mpfr_nan_p(e.x()) || mpfr_cmpabs_ui(e.x(), 1) > 0) return undefined(e);
  if (mpfr_cmpabs_ui(e.x(), 1) == 0) {
    mpfr_set_inf(e.first(), mpfr_sgn(e.x()));
    return 0;
  }
  number y(e), tail(e);
  if (mpfr_zero_p(e.x())) return take(e, e.x());
  mpfr_abs(tail, e.x(), nearest);
  if (mpfr_cmp_d(tail, 0.5) <= 0) {
    solve_erf(e, y, tail);
  } else {
    mpfr_ui_sub(tail, 1, tail, nearest);
    solve_erfc(e, y, tail);
  }
  mpfr_setsign(e.first(), y, mpfr_signbit(e.x()), nearest);
  return inexact;
}

// -sqrt 2 erfc^-1(2 x); doubling is exact.
int normal_cdf_inverse(evaluation& e) {
  number twice(e), root(e);
  mpfr_mul_2ui(twice, e.x(), 1, nearest);
  inverse_erfc(e, twice);
  mpfr_sqrt_ui(root, 2, nearest);
  mpfr_mul(e.first(), e.first(), root, nearest);
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
    {"Erfc", unary<mpfr_erfc>, nullptr},
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
