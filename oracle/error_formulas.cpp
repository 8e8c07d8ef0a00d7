// SPDX-License-Identifier: Apache-2.0
#include "oracle/error_formulas.hpp"

namespace tmk::accuracy {
namespace {

// erfc(y), to the precision of r. In the tail by the asymptotic series, whose error is below the first term
// left out; MPFR takes a series there whose cancellation costs y^2 / ln 2 bits.
//   erfc(y) = e^(-y^2) / (y sqrt pi) * (1 - 1/(2 y^2) + 1*3/(2 y^2)^2 - ...)
void complementary_error(evaluation& e, mpfr_ptr r, mpfr_srcptr y) {
  number twice_square(e), sum(e), term(e);
  const auto bits = static_cast<double>(mpfr_get_prec(sum));
  const double size = mpfr_get_d(y, nearest);
  const bool terms_get_small_enough = size > 0 && size * size > 0.7 * bits + 8;  // their least is e^(-y^2)
  if (!terms_get_small_enough || size > 1e6) {
    mpfr_erfc(r, y, nearest);
    return;
  }
  mpfr_sqr(twice_square, y, nearest);
  mpfr_mul_2ui(twice_square, twice_square, 1, nearest);
  mpfr_set_ui(sum, 1, nearest);
  mpfr_set_si(term, -1, nearest);
  for (unsigned long k = 1; mpfr_get_exp(term) > -mpfr_get_prec(sum); ++k) {
    mpfr_mul_ui(term, term, 2 * k - 1, nearest);
    mpfr_div(term, term, twice_square, nearest);
    mpfr_add(sum, sum, term, nearest);
    mpfr_neg(term, term, nearest);
  }
  mpfr_div_2ui(twice_square, twice_square, 1, nearest);
  mpfr_neg(twice_square, twice_square, nearest);
  mpfr_exp(term, twice_square, nearest);
  mpfr_mul(sum, sum, term, nearest);
  mpfr_const_pi(term, nearest);
  mpfr_sqrt(term, term, nearest);
  mpfr_mul(term, term, y, nearest);
  mpfr_div(r, sum, term, nearest);
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
    complementary_error(e, value, y);
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

}  // namespace

int error_complement(evaluation& e) {
  complementary_error(e, e.first(), e.x());
  return inexact;
}

// erfc(-x / sqrt 2) / 2. The error of the quotient is magnified by 2 x^2 at most, hence the 32 spare bits.
int normal_cdf(evaluation& e) {
  number t(e), root(e);
  mpfr_sqrt_ui(root, 2, nearest);
  mpfr_div(t, e.x(), root, nearest);
  mpfr_neg(t, t, nearest);
  complementary_error(e, e.first(), t);
  mpfr_div_2ui(e.first(), e.first(), 1, nearest);
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

}  // namespace tmk::accuracy
