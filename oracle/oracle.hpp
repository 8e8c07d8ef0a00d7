// SPDX-License-Identifier: Apache-2.0
// The exact value of every vector function, rounded as the element type rounds, and the error of a result.
//
// The unit: an error is |got - exact| in units of the spacing of the result's format at the exact value y,
// which is 2^(max(e, emin) - p) for 2^(e-1) <= |y| < 2^e (subnormal range included), so a correctly rounded
// result is at most 0.5 off. An infinite result is right (error 0) where rounding y gives that infinity, a
// NaN where there is no value; any other meeting of a special with a number is infinitely wrong. The sign of
// a zero does not count: tests of special values compare bits. A complex result is judged part by part.
#pragma once

#include <array>
#include <complex>
#include <string_view>

namespace tmk::accuracy {

// Formats of the element types; 2^max_exponent is the smallest power of two beyond the largest number.
struct float_format {
  int precision;
  int min_exponent;  // of the smallest normal number, its fraction taken in [1/2, 1)
  int max_exponent;
};
inline constexpr float_format single_format{24, -125, 128};
inline constexpr float_format double_format{53, -1021, 1024};

// A real number, given by its correctly rounded neighbour in the format and its distance from it.
struct exact_value {
  double rounded = 0;    // every float is a double; NaN where the function has no value
  double residual = 0;   // (exact - rounded) / ulp, within [-1/2, 1/2] unless rounded is special
  int ulp_exponent = 0;  // ulp = 2^ulp_exponent
};

// Total error of got in ulp; see above.
double ulp_error(const exact_value& exact, double got);

// Error of got relative to the exact value, 0 where both are zero.
double relative_error(const exact_value& exact, double got);

// Arguments of one element, by the names of the call shapes. A scalar exponent is b.
struct arguments {
  std::complex<double> a{}, b{};
  double scalea = 1, shifta = 0, scaleb = 0, shiftb = 1;
};

// Real and imaginary part of a complex result, or the two results of SinCos (sine, cosine) and Modf
// (integral, fraction). Results that are one real number leave the second part zero.
using exact_result = std::array<exact_value, 2>;

// A complex result may be judged as a whole: |got - exact| in units of the spacing at |exact|, and relative
// to it.
double modulus_ulp_error(const exact_result& exact, const std::array<double, 2>& got);
double modulus_relative_error(const exact_result& exact, const std::array<double, 2>& got);

struct evaluation;

// The oracle of one function, looked up by its name ("sExp"). Thread-safe.
class oracle {
 public:
  // Throws std::out_of_range for a name that is not a function with a value (gather and scatter have none).
  explicit oracle(std::string_view name);

  exact_result operator()(const arguments& x) const;
  exact_value operator()(double a, double b = 0) const { return (*this)(arguments{a, b})[0]; }
  exact_result operator()(std::complex<double> a, std::complex<double> b = 0) const {
    return (*this)(arguments{a, b});
  }

  const float_format& format() const { return *format_; }

 private:
  int (*formula_)(evaluation&);
  const float_format* format_;
};

}  // namespace tmk::accuracy
