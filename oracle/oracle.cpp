// SPDX-License-Identifier: Apache-2.0
#include "oracle/oracle.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

#include "oracle/oracle_rows.hpp"

namespace tmk::accuracy {
namespace {

constexpr mpfr_prec_t argument_precision = 53;
constexpr mpfr_prec_t last_precision = 400;
constexpr int guard_bits = 8;  // a formula's result is trusted to 2^(guard_bits - precision), relatively

void set_complex(mpc_t z, std::complex<double> x) {
  mpc_init2(z, argument_precision);
  mpfr_set_d(mpc_realref(z), x.real(), MPFR_RNDN);
  mpfr_set_d(mpc_imagref(z), x.imag(), MPFR_RNDN);
}

void set_real(mpfr_t z, double x) {
  mpfr_init2(z, argument_precision);
  mpfr_set_d(z, x, MPFR_RNDN);
}

struct scoped_evaluation : evaluation {
  scoped_evaluation(const arguments& v, bool single) {
    set_complex(a, v.a);
    set_complex(b, v.b);
    set_real(scalea, v.scalea);
    set_real(shifta, v.shifta);
    set_real(scaleb, v.scaleb);
    set_real(shiftb, v.shiftb);
    mpc_init2(r, argument_precision);
    is_single = single;
  }
  scoped_evaluation(const scoped_evaluation&) = delete;
  scoped_evaluation& operator=(const scoped_evaluation&) = delete;
  ~scoped_evaluation() {
    for (mpc_ptr z : {a, b, r}) mpc_clear(z);
    for (mpfr_ptr z : {scalea, shifta, scaleb, shiftb}) mpfr_clear(z);
  }
};

double round_to(const float_format& format, mpfr_srcptr v) {
  return format.precision == single_format.precision ? mpfr_get_flt(v, MPFR_RNDN) : mpfr_get_d(v, MPFR_RNDN);
}

// Describes v in the format. Returns whether an error of 2^(guard_bits - precision of v) leaves the rounding
// as it is: it does unless v is that close to the midpoint of two neighbours.
bool describe(mpfr_srcptr v, const float_format& format, exact_value& out) {
  out = {round_to(format, v), 0, 0};
  if (!mpfr_regular_p(v)) return true;
  out.ulp_exponent =
      static_cast<int>(std::max<mpfr_exp_t>(mpfr_get_exp(v), format.min_exponent)) - format.precision;
  if (std::isinf(out.rounded)) return true;

  mpfr_t distance;
  mpfr_init2(distance, mpfr_get_prec(v) + argument_precision);
  mpfr_sub_d(distance, v, out.rounded, MPFR_RNDN);
  mpfr_mul_2si(distance, distance, -out.ulp_exponent, MPFR_RNDN);
  out.residual = mpfr_get_d(distance, MPFR_RNDN);
  mpfr_abs(distance, distance, MPFR_RNDN);
  mpfr_sub_d(distance, distance, 0.5, MPFR_RNDN);
  const mpfr_exp_t uncertain = guard_bits + format.precision - mpfr_get_prec(v);
  const bool decided = mpfr_regular_p(distance) && mpfr_get_exp(distance) > uncertain;
  mpfr_clear(distance);
  return decided;
}

// Least precision that decides nearly every element at the first attempt.
mpfr_prec_t first_precision(const float_format& format) { return 2 * format.precision + 32; }

}  // namespace

double ulp_error(const exact_value& exact, double got) {
  constexpr double wrong = std::numeric_limits<double>::infinity();
  if (std::isnan(exact.rounded) || std::isnan(got))
    return std::isnan(exact.rounded) == std::isnan(got) ? 0 : wrong;
  if (std::isinf(exact.rounded) || std::isinf(got)) return exact.rounded == got ? 0 : wrong;
  return std::abs(std::ldexp(got - exact.rounded, -exact.ulp_exponent) - exact.residual);
}

double relative_error(const exact_value& exact, double got) {
  const double error = ulp_error(exact, got);
  if (error == 0 || std::isinf(error)) return error;
  const double units = std::abs(std::ldexp(exact.rounded, -exact.ulp_exponent) + exact.residual);
  return error / units;
}

namespace {

// In units of 2^unit, large enough that squares of larger numbers of units do not count and small enough that
// none overflows. Infinite where a part is a special that is wrong.
struct plane {
  double distance, modulus;
};
plane in_units(const exact_result& exact, const std::array<double, 2>& got, int unit) {
  std::array<double, 2> error{}, size{};
  for (const std::size_t part : {0, 1}) {
    const exact_value& e = exact[part];
    error[part] = std::ldexp(ulp_error(e, got[part]), e.ulp_exponent - unit);
    size[part] = std::ldexp(e.rounded, -unit);
  }
  return {std::hypot(error[0], error[1]), std::hypot(size[0], size[1])};
}

bool is_special(const exact_result& exact, const std::array<double, 2>& got) {
  return !std::isfinite(exact[0].rounded) || !std::isfinite(exact[1].rounded) || !std::isfinite(got[0]) ||
         !std::isfinite(got[1]);
}

// ulp exponent of the larger part.
int larger_unit(const exact_result& exact) {
  return std::abs(exact[0].rounded) >= std::abs(exact[1].rounded) ? exact[0].ulp_exponent
                                                                  : exact[1].ulp_exponent;
}

}  // namespace

double modulus_ulp_error(const exact_result& exact, const std::array<double, 2>& got) {
  if (is_special(exact, got)) return std::max(ulp_error(exact[0], got[0]), ulp_error(exact[1], got[1]));
  return in_units(exact, got, larger_unit(exact)).distance;
}

double modulus_relative_error(const exact_result& exact, const std::array<double, 2>& got) {
  const double error = modulus_ulp_error(exact, got);
  if (error == 0 || std::isinf(error)) return error;
  return is_special(exact, got) ? 0 : error / in_units(exact, got, larger_unit(exact)).modulus;
}

oracle::oracle(std::string_view name) {
  const bool complex = name.starts_with('c') || name.starts_with('z');
  format_ = name.starts_with('s') || name.starts_with('c') ? &single_format : &double_format;
  const oracle_row* row = find_oracle_row(name.empty() ? name : name.substr(1));
  formula_ = row == nullptr ? nullptr : complex ? row->complex : row->real;
  if (formula_ == nullptr) throw std::out_of_range("no exact value of " + std::string(name));
}

exact_result oracle::operator()(const arguments& x) const {
  scoped_evaluation e(x, format_ == &single_format);
  exact_result result;
  for (mpfr_prec_t precision = first_precision(*format_);;
       precision = std::min(2 * precision, last_precision)) {
    mpc_set_prec(e.r, precision);
    mpfr_set_zero(e.second(), 1);
    const bool exact = formula_(e) == 0;
    const bool first_decided = describe(e.first(), *format_, result[0]);
    const bool second_decided = describe(e.second(), *format_, result[1]);
    if (exact || (first_decided && second_decided) || precision == last_precision) return result;
  }
}

}  // namespace tmk::accuracy
