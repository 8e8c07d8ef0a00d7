// SPDX-License-Identifier: Apache-2.0
#include "complex_values.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace tmk::accuracy {
namespace {

__extension__ typedef __float128 quad;  // 113 bits, exponents to 2^16384

constexpr double doubt = 0x1p-40;  // ulp; the relative error of a value is below 2^-110

struct complex_quad {
  quad re, im;
};
complex_quad as_quad(std::complex<double> z) { return {z.real(), z.imag()}; }
complex_quad conjugate(const complex_quad& z) { return {z.re, -z.im}; }
complex_quad product(const complex_quad& x, const complex_quad& y) {
  return {x.re * y.re - x.im * y.im, x.re * y.im + x.im * y.re};
}

struct times {
  static complex_quad of(const complex_quad& x, const complex_quad& y) { return product(x, y); }
};
struct times_conjugate {
  static complex_quad of(const complex_quad& x, const complex_quad& y) { return product(x, conjugate(y)); }
};
struct over {
  static complex_quad of(const complex_quad& x, const complex_quad& y) {
    const complex_quad n = product(x, conjugate(y));
    const quad norm = y.re * y.re + y.im * y.im;
    return {n.re / norm, n.im / norm};
  }
};

// The exponent e of 2^(e-1) <= |v| < 2^e, for v not 0.
int exponent_of(quad v) {
  std::uint64_t words[2];
  std::memcpy(words, &v, sizeof words);
  return static_cast<int>(words[1] >> 48 & 0x7fff) - 16382;
}
quad power_of_two(int exponent) {
  const std::uint64_t words[2] = {0, static_cast<std::uint64_t>(exponent + 16383) << 48};
  return std::bit_cast<quad>(words);
}

// Rounds v to the format; false where it is too near to a midpoint, or a power of two: from which side
// counts.
bool describe(quad v, const float_format& format, exact_value& out) {
  out = {};
  if (v == 0) return true;
  const int exponent = exponent_of(v);
  out.ulp_exponent = std::max(exponent, format.min_exponent) - format.precision;
  if (exponent > format.max_exponent) {
    out.rounded = v < 0 ? -HUGE_VAL : HUGE_VAL;
    return true;
  }
  if (v == power_of_two(exponent - 1) || v == -power_of_two(exponent - 1)) return false;
  const quad units = v * power_of_two(-out.ulp_exponent);
  const auto whole = static_cast<std::int64_t>(units + (v < 0 ? -0.5 : 0.5));
  out.residual = static_cast<double>(units - whole);
  if (std::abs(std::abs(out.residual) - 0.5) < doubt) return false;
  out.rounded = std::ldexp(static_cast<double>(whole), out.ulp_exponent);
  return std::ilogb(out.rounded) < format.max_exponent;  // what rounds to an infinity is the oracle's
}

template <class Operation, bool Single>
std::optional<exact_result> value(const arguments& x) {
  for (const double part : {x.a.real(), x.a.imag(), x.b.real(), x.b.imag()})
    if (!std::isfinite(part)) return std::nullopt;
  if (x.b == 0.0) return std::nullopt;
  const complex_quad v = Operation::of(as_quad(x.a), as_quad(x.b));
  const float_format& format = Single ? single_format : double_format;
  exact_result result;
  if (!describe(v.re, format, result[0]) || !describe(v.im, format, result[1])) return std::nullopt;
  return result;
}

struct row {
  std::string_view stem;
  quick_value single, twice;
};
template <class Operation>
constexpr row row_of(std::string_view stem) {
  return {stem, value<Operation, true>, value<Operation, false>};
}
constexpr row rows[] = {row_of<times>("Mul"), row_of<times_conjugate>("MulByConj"), row_of<over>("Div")};

}  // namespace

quick_value find_quick_value(const vector_function& f) {
  const auto* own = std::ranges::find(rows, f.stem, &row::stem);
  if (!f.is_complex() || own == std::end(rows)) return nullptr;
  return f.is_single() ? own->single : own->twice;
}

bool agree(const exact_result& quick, const exact_result& exact) {
  // Next to a power of two the unit depends on bits beyond the oracle's first precision.
  const auto same_unit = [](const exact_value& x, const exact_value& y) {
    int exponent;
    return x.ulp_exponent == y.ulp_exponent || std::frexp(std::abs(x.rounded), &exponent) == 0.5;
  };
  return std::ranges::equal(quick, exact, [&](const exact_value& x, const exact_value& y) {
    const bool same_rest = same_unit(x, y) && std::abs(x.residual - y.residual) < 0x1p-50;
    return x.rounded == y.rounded && (std::isinf(x.rounded) || same_rest);
  });
}

}  // namespace tmk::accuracy
