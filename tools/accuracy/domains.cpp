// SPDX-License-Identifier: Apache-2.0
#include "domains.hpp"

#include <limits>

namespace tmk::accuracy {
namespace {

template <class Real>
constexpr double largest = std::numeric_limits<Real>::max();

template <class Real>
constexpr bool is_single = sizeof(Real) == sizeof(float);

template <class Real>
constexpr interval all{-largest<Real>, largest<Real>};
template <class Real>
constexpr interval positive{0, largest<Real>};
constexpr interval unit{-1, 1};

// The ranges of results, a little exceeded.
template <class Real>
constexpr interval exp_range = is_single<Real> ? interval{-105, 89} : interval{-747, 710};
template <class Real>
constexpr interval exp2_range = is_single<Real> ? interval{-151, 129} : interval{-1076, 1025};
template <class Real>
constexpr interval exp10_range = is_single<Real> ? interval{-46, 39} : interval{-324, 309};
template <class Real>
constexpr interval sinh_range = is_single<Real> ? interval{-90, 90} : interval{-711, 711};
template <class Real>
constexpr interval erfc_range = is_single<Real> ? interval{-6, 10.2} : interval{-6, 27.3};
template <class Real>
constexpr interval cdf_range = is_single<Real> ? interval{-14.3, 9} : interval{-38.6, 9};
template <class Real>
constexpr interval gamma_range = is_single<Real> ? interval{-44, 36} : interval{-186, 172};
template <class Real>
constexpr interval integral_range = is_single<Real> ? interval{0, 100} : interval{0, 740};

constexpr double half_pi = 0x1.921fb54442d18p0;

// The double and the float that come nearest to a multiple of pi/2; see Muller, Elementary Functions.
constexpr std::array<double, 4> near_multiples{0x1.6ac5b262ca1ffp849, 0x1.f37c8ap95};

// Zeros of ln |Gamma| besides 1.
constexpr std::array<double, 4> lgamma_zeros{2, -2.4570247382208006, -2.7476826467274127,
                                             -3.1435808883499798};

// Hardest to round among the doubles: Lefevre and Muller's tables.
constexpr std::array<double, 4> hard_for_ln{0x1.62a88613629b6p678}, hard_for_exp{0x1.9e9cbbfd6080bp-31};

template <class Real>
constexpr domain real_domains[] = {
    {"Inv", all<Real>, {-4, 4}},
    {"Sqrt", positive<Real>, {0, 4}},
    {"InvSqrt", positive<Real>, {0, 4}},
    {"Pow", positive<Real>, {0, 4}},
    {"Powx", positive<Real>, {0, 4}},
    {"Powr", positive<Real>, {0, 4}},
    {"Pow3o2", positive<Real>, {0, 4}},
    {"Exp", exp_range<Real>, exp_range<Real>, 0, hard_for_exp},
    {"Exp2", exp2_range<Real>, exp2_range<Real>},
    {"Exp10", exp10_range<Real>, exp10_range<Real>},
    {"Expm1", exp_range<Real>, {-40, exp_range<Real>.high}},
    {"Ln", positive<Real>, {0, 4}, 0, hard_for_ln},
    {"Log2", positive<Real>, {0, 4}},
    {"Log10", positive<Real>, {0, 4}},
    {"Log1p", {-1, largest<Real>}, {-1, 4}},
    {"Sin", all<Real>, {-100, 100}, half_pi, near_multiples},
    {"Cos", all<Real>, {-100, 100}, half_pi, near_multiples},
    {"SinCos", all<Real>, {-100, 100}, half_pi, near_multiples},
    {"CIS", all<Real>, {-100, 100}, half_pi, near_multiples},
    {"Tan", all<Real>, {-100, 100}, half_pi, near_multiples},
    {"Sinpi", all<Real>, {-16, 16}, 0.5},
    {"Cospi", all<Real>, {-16, 16}, 0.5},
    {"Tanpi", all<Real>, {-16, 16}, 0.5},
    {"Sind", all<Real>, {-720, 720}, 90},
    {"Cosd", all<Real>, {-720, 720}, 90},
    {"Tand", all<Real>, {-720, 720}, 90},
    {"Asin", unit, unit},
    {"Acos", unit, unit},
    {"Asinpi", unit, unit},
    {"Acospi", unit, unit},
    {"Sinh", sinh_range<Real>, sinh_range<Real>},
    {"Cosh", sinh_range<Real>, sinh_range<Real>},
    {"Tanh", all<Real>, {-20, 20}},
    {"Acosh", {1, largest<Real>}, {1, 4}},
    {"Atanh", unit, unit},
    {"Erf", all<Real>, {-6, 6}},
    {"Erfc", erfc_range<Real>, erfc_range<Real>},
    {"ErfInv", unit, unit},
    {"ErfcInv", {0, 2}, {0, 2}},
    {"CdfNorm", cdf_range<Real>, cdf_range<Real>},
    {"CdfNormInv", {0, 1}, {0, 1}},
    {"LGamma", all<Real>, {-20, 40}, 0, lgamma_zeros},
    {"TGamma", gamma_range<Real>, gamma_range<Real>, 1},
    {"ExpInt1", integral_range<Real>, integral_range<Real>},
};

// The exponent of a power: drawn where a result is likely to be in range.
constexpr domain exponent_domains[] = {
    {"Pow", {-1000, 1000}, {-30, 30}},
    {"Powx", {-1000, 1000}, {-30, 30}},
    {"Powr", {-1000, 1000}, {-30, 30}},
};

template <class Real>
constexpr domain any_real{"", all<Real>, {-10, 10}};

// Parts of the arguments of complex functions; both parts alike.
template <class Real>
constexpr domain complex_domains[] = {
    {"Pow", {-1e3, 1e3}, {-4, 4}},
    {"Powx", {-1e3, 1e3}, {-4, 4}},
    {"Exp", sinh_range<Real>, {-10, 10}, half_pi},
    {"CIS", all<Real>, {-100, 100}, half_pi, near_multiples},
    {"Sin", sinh_range<Real>, {-10, 10}, half_pi},
    {"Cos", sinh_range<Real>, {-10, 10}, half_pi},
    {"Tan", sinh_range<Real>, {-10, 10}, half_pi},
    {"Sinh", sinh_range<Real>, {-10, 10}, half_pi},
    {"Cosh", sinh_range<Real>, {-10, 10}, half_pi},
    {"Tanh", sinh_range<Real>, {-10, 10}, half_pi},
};

template <class Real, std::size_t Count>
const domain& find(const domain (&rows)[Count], std::string_view stem) {
  for (const domain& row : rows)
    if (row.stem == stem) return row;
  return any_real<Real>;
}

template <class Real>
const domain& find(bool is_complex, std::string_view stem, int argument) {
  if (is_complex) return find<Real>(complex_domains<Real>, stem);
  return argument == 0 ? find<Real>(real_domains<Real>, stem) : find<Real>(exponent_domains, stem);
}

}  // namespace

const domain& find_domain(char letter, std::string_view stem, int argument) {
  const bool is_complex = letter == 'c' || letter == 'z';
  return letter == 's' || letter == 'c' ? find<float>(is_complex, stem, argument)
                                        : find<double>(is_complex, stem, argument);
}

}  // namespace tmk::accuracy
