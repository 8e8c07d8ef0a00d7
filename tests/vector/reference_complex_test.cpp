// SPDX-License-Identifier: Apache-2.0
// The complex functions in extended precision: error of each component against exact values, special values
// with their statuses on both sides of the branch cuts, symmetries, and independence of the SSE controls.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>

#include "oracle/oracle.hpp"
#include "vector/reference/complex/complex.hpp"
#include "vector/registry/shapes.h"

namespace {

using namespace tmk;
using number = std::complex<double>;

struct outcome {
  number value;  // a real result has no imaginary part
  int status;
};

// Both precisions and all shapes under one signature; functions of one argument ignore b.
using function = outcome (*)(number a, number b);

unsigned sse_controls = 0x1F80;  // while a function runs

// The barriers keep the conversions outside, where subnormals count.
template <class Result, class Argument, class Reference>
outcome call(Reference reference, Argument a, Argument b) {
  Result r;
  asm volatile("" : "+m"(a), "+m"(b));
  const unsigned saved = _mm_getcsr();
  _mm_setcsr(sse_controls);
  const int status = reference(a, b, r);
  _mm_setcsr(saved);
  asm volatile("" : "+m"(r));
  return {number(r), status};
}

const std::map<std::string, function> functions = {
#define CASE(name, Result, Argument, argument, ...)                                                 \
  {name, [](number x, number y) {                                                                   \
     const auto f = [](Argument a, [[maybe_unused]] Argument b, Result& r) { return __VA_ARGS__; }; \
     return call<Result>(f, Argument(x argument), Argument(y argument));                            \
   }},
#define CASE_unary(Real, name, stem) \
  CASE(name, std::complex<Real>, std::complex<Real>, , reference::stem(a, r))
#define CASE_binary(Real, name, stem) \
  CASE(name, std::complex<Real>, std::complex<Real>, , reference::stem(a, b, r))
#define CASE_scalar_exponent CASE_binary
#define CASE_real_result(Real, name, stem) CASE(name, Real, std::complex<Real>, , reference::stem(a, r))
#define CASE_real_argument(Real, name, stem) \
  CASE(name, std::complex<Real>, Real, .real(), reference::stem(a, r))
#define CASE_none(Real, name, stem)
#define CASE_pack_stride CASE_none
#define CASE_pack_mask CASE_none
#define CASE_pack_index CASE_none
#define CASE_unpack_stride CASE_none
#define CASE_unpack_mask CASE_none
#define CASE_unpack_index CASE_none
#define CASE_s(shape, stem)
#define CASE_d(shape, stem)
#define CASE_c(shape, stem) CASE_##shape(float, "c" #stem, stem)
#define CASE_z(shape, stem) CASE_##shape(double, "z" #stem, stem)
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) CASE_##letter(shape, stem)
#include "vector/registry/functions.def"
};

using names = std::set<std::string>;
const names arithmetic = {"Add", "Sub", "Mul", "MulByConj", "Div"};
const names powers = {"Pow", "Powx"};
const names odd = {"Sin", "Tan", "Asin", "Atan", "Sinh", "Tanh", "Asinh", "Atanh"};
const names even = {"Cos", "Cosh"};
const names not_unary = {"Add", "Sub", "Mul", "MulByConj", "Div", "Pow", "Powx", "Abs", "Arg", "CIS"};

bool is_single(const std::string& name) { return name[0] == 'c'; }

struct sampler {
  bool single;
  bool bounded;  // exact tangents of huge arguments take for ever
  std::mt19937_64 random;

  double scaled(int low, int high) {
    const double mantissa = 1 + std::ldexp(static_cast<double>(random() >> 12), -52);
    const int exponent = low + static_cast<int>(random() % (high - low + 1));
    return std::ldexp(random() % 2 == 0 ? mantissa : -mantissa, exponent);
  }

  number rounded(number z) const { return single ? number(std::complex<float>(z)) : z; }

  number operator()(int i) {
    const int wide = bounded ? 8 : single ? 126 : 1022;
    const double angle = scaled(-3, 1), one = random() % 2 == 0 ? 1 : -1;
    const double quarters = M_PI_2 * static_cast<int>(random() % 40);
    const number places[] = {
        {scaled(-4, 4), scaled(-4, 4)},
        {scaled(-wide, wide), scaled(-wide, wide)},
        {std::cos(angle), std::sin(angle)},        // the unit circle
        {one + scaled(-60, -1), scaled(-99, -1)},  // near branch points
        {scaled(-99, -1), one + scaled(-60, -1)},
        {quarters, scaled(-40, 8)},
        {scaled(-40, 8), quarters},
    };
    return rounded(places[i % 7]);
  }

  // Products that cancel but for the last bits; exponents that leave a power in range, whole ones among them.
  number partner(const std::string& stem, number a, int i) {
    if (!powers.contains(stem))
      return i % 2 == 0 ? rounded({a.imag() * (1 + scaled(-52, -20)), a.real()}) : (*this)(i / 2);
    const int reach = std::abs(std::log(std::abs(a))) < 8 ? 5 : 1;
    return i % 3 == 0 ? number(i % 32 - 16) : rounded({scaled(-9, reach), scaled(-9, reach)});
  }
};

double bound_of(const std::string& name) {
  const std::string stem = name.substr(1);
  if (arithmetic.contains(stem) || stem == "Conj") return 0.5;
  if (powers.contains(stem)) return 0.5 + 0.125;
  return is_single(name) ? 0.5001 : 0.502;
}

void expect_accurate(const std::string& name, number a, number b) {
  const number got = functions.at(name)(a, b).value;
  const accuracy::exact_result exact = accuracy::oracle(name)(a, b);
  const double error =
      std::max(accuracy::ulp_error(exact[0], got.real()), accuracy::ulp_error(exact[1], got.imag()));
  EXPECT_LE(error, bound_of(name)) << std::hexfloat << name << a << b << " = " << got;
}

TEST(reference_complex, errors_stay_within_the_bound) {
  for (const auto& [name, f] : functions) {
    const std::string stem = name.substr(1);
    sampler sample{is_single(name), stem.starts_with("Tan"), std::mt19937_64(30)};
    for (int i = 0; i < 350; ++i) {
      const number a = sample(i);
      expect_accurate(name, stem == "CIS" ? a.real() : a, sample.partner(stem, a, i));
    }
  }
}

TEST(reference_complex, hard_arguments) {
  struct row {
    const char* name;
    number a, b = 0;
  };
  const row rows[] = {
      // exact products all bits of which cancel but the last; divisors and dividends at the ends of the range
      {"zMul", {0x1.0000000000001p0, 1}, {0x1.fffffffffffffp-1, 0x1.0000000000001p0}},
      {"zDiv", {0x1p-1074, 0x1.8p-1073}, {0x1p-1074, -0x1p-1074}},
      {"zDiv", {0x1.fffffffffffffp1023, 0x1p1023}, {0x1.fffffffffffffp1023, -0x1.fp1023}},
      {"zDiv", {0x1.0000000000001p0, 0x1p-52}, {0x1p-52, -0x1p0}},
      // |z| = 1 but for the last bits
      {"zLn", {0x1.3333333333333p-1, 0x1.999999999999ap-1}},
      {"zLn", {1, 0x1p-540}},
      {"cLog10", {0x1.333334p-1, 0x1.99999ap-1}},
      // the larger component overflows but for the sine, or the smaller vanishes
      {"zExp", {710, 0x1.921fb54442d18p+0}},
      {"zCosh", {711, 0x1p-1074}},
      {"zTan", {0x1.921fb54442d18p+0, 0x1p-600}},
      {"zTanh", {300, 1}},
      {"zAcos", {0x1.fffffffffffffp-1, 0x1p-1074}},
      {"zAcosh", {0x1.0000000000001p0, 0x1p-500}},
      {"zAtanh", {0x1.fffffffffffffp-1, 0x1p-500}},
      {"zAsin", {0x1p1023, 0x1p-1074}},
      // powers: the angle a multiple of pi/2 but for its last bits, 2^40 turns, and both at once cancelling
      {"zPow", {0x1p0, 0x1p-80}, {3, 0}},
      {"zPow", {0.6, 0.8}, {0x1p40, 0}},
      {"zPow", {3, 4}, {440, 0}},
      {"zPow", {0x1.0000000000001p0, 0x1p-52}, {0x1.8p60, 0x1p52}},
      {"zPow", {0x1.0000000000001p0, 0x1.66700266a98p-42}, {0x1.5p61, 0}},
      {"zPow", {-0x1p0, 0x1p-70}, {7, 0}},
  };
  for (const row& r : rows) expect_accurate(r.name, r.a, r.b);
}

// One expected component; either_sign where the sign of a zero or an infinity is not specified.
struct expected_part {
  double value;
  bool either_sign;

  bool meets(double got, bool single) const {
    const double want = single ? static_cast<float>(value) : value;
    if (std::isnan(want)) return std::isnan(got);
    return got == want ? either_sign || std::signbit(got) == std::signbit(want) : either_sign && got == -want;
  }
  expected_part operator-() const { return {-value, either_sign}; }
};

struct special {
  number a, b;
  expected_part re, im;
  int status;
};

void expect_special(const std::string& name, const special& row) {
  const auto& [a, b, re, im, status] = row;
  const outcome got = functions.at(name)(a, b);
  const bool same =
      re.meets(got.value.real(), is_single(name)) && im.meets(got.value.imag(), is_single(name));
  EXPECT_TRUE(same && got.status == status)
      << name << a << b << " = " << got.value << ", status " << got.status;
}

// The row and its mirror images: conjugated, and turned by half a circle.
void expect_special_everywhere(const std::string& name, const special& row) {
  expect_special(name, row);
  const std::string stem = name.substr(1);
  const auto& [a, b, re, im, status] = row;
  if (!not_unary.contains(stem)) expect_special(name, {std::conj(a), b, re, -im, status});
  if (odd.contains(stem)) expect_special(name, {-a, b, -re, -im, status});
  if (even.contains(stem)) expect_special(name, {-a, b, re, im, status});
}

TEST(reference_complex, special_values) {
  std::ifstream file(TMK_SOURCE_DIR "/tests/reference/complex_special_values.txt");
  const auto value_of = [](const std::string& word) { return std::strtod(word.c_str(), nullptr); };
  const auto part = [=](const std::string& word) {
    const bool either_sign = word[0] == '~';
    return expected_part{value_of(word.substr(either_sign)), either_sign};
  };
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    std::string name, re, im;
    double arguments[4] = {};
    int status = -1;
    words >> name;
    for (double* argument = arguments; words >> re && re != "->"; ++argument) *argument = value_of(re);
    words >> re >> im >> status;
    const auto& [ar, ai, br, bi] = arguments;
    const special row{{ar, ai}, {br, bi}, part(re), part(im), status};
    const bool both = !functions.contains(name);
    for (const std::string& each : both ? std::vector{"c" + name, "z" + name} : std::vector{name})
      expect_special_everywhere(each, row);
    ++count;
  }
  EXPECT_GT(count, 150);
}

bool same(outcome x, outcome y) {
  const auto same_part = [](double p, double q) {
    return std::isnan(p) ? std::isnan(q) : to_bits(p) == to_bits(q);
  };
  return same_part(x.value.real(), y.value.real()) && same_part(x.value.imag(), y.value.imag()) &&
         x.status == y.status;
}

TEST(reference_complex, symmetries_are_exact) {
  for (const auto& [name, f] : functions) {
    const std::string stem = name.substr(1);
    if (not_unary.contains(stem)) continue;
    sampler sample{is_single(name), false, std::mt19937_64(31)};
    for (int i = 0; i < 140; ++i) {
      const number a = sample(i);
      const auto [value, status] = f(a, 0);
      EXPECT_TRUE(same(f(std::conj(a), 0), {std::conj(value), status})) << name << a;
      const bool reflects = odd.contains(stem) || even.contains(stem);
      const number reflected = odd.contains(stem) ? -value : value;
      EXPECT_TRUE(!reflects || same(f(-a, 0), {reflected, status})) << name << a;
    }
  }
}

// The caller may round upwards and treat subnormals as zero.
TEST(reference_complex, results_do_not_depend_on_sse_controls) {
  for (const auto& [name, f] : functions) {
    sampler sample{is_single(name), false, std::mt19937_64(32)};
    for (int i = 0; i < 140; ++i) {
      const double tiny = std::ldexp(i + 1, is_single(name) ? -149 : -1074);
      const number a = i % 5 == 0 ? number(tiny, 3 * tiny) : sample(i);
      const number b = sample.partner(name.substr(1), a, i);
      const outcome want = f(a, b);
      sse_controls = 0x1F80 | 0x8040 | 0x4000;
      const outcome got = f(a, b);
      sse_controls = 0x1F80;
      EXPECT_TRUE(same(got, want)) << name << a << b;
    }
  }
}

}  // namespace
