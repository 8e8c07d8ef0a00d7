// SPDX-License-Identifier: Apache-2.0
// The real functions in extended precision: error against exact values, special values and statuses, and
// independence of the caller's SSE controls.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "oracle/oracle.hpp"
#include "vector/reference/real/real.hpp"
#include "vector/registry/shapes.h"

namespace {

using namespace tmk;

constexpr double inf = HUGE_VAL, nan = NAN;

struct outcome {
  double value;
  int status;
};

// Both precisions and both shapes under one signature; functions of one argument ignore b.
using function = outcome (*)(double a, double b);

// What the SSE unit is set to while a function runs; the conversions here stay outside.
unsigned sse_controls = 0x1F80;

template <class Real, class Reference>
outcome call(Reference reference, double a, double b) {
  volatile Real x = static_cast<Real>(a), y = static_cast<Real>(b), result;
  const unsigned saved = _mm_getcsr();
  _mm_setcsr(sse_controls);
  Real r;
  const int status = reference(x, y, r);
  result = r;
  _mm_setcsr(saved);
  return {result, status};
}

// Every function of one or two arguments, by its name ("sSin").
const std::map<std::string, function> functions = {
#define CASE(Real, name, ...) \
  {name, [](double x, double y) { return call<Real>([](Real a, Real b, Real& r) { __VA_ARGS__; }, x, y); }},
#define CASE_unary(Real, name, stem) CASE(Real, name, (void)b; return reference::stem(a, r))
#define CASE_binary(Real, name, stem) CASE(Real, name, return reference::stem(a, b, r))
#define CASE_scalar_exponent CASE_binary
#define CASE_none(Real, name, stem)
#define CASE_two_results CASE_none
#define CASE_linear_fraction CASE_none
#define CASE_s(shape, stem) CASE_##shape(float, "s" #stem, stem)
#define CASE_d(shape, stem) CASE_##shape(double, "d" #stem, stem)
#define CASE_c(shape, stem)
#define CASE_z(shape, stem)
#define CASE_pack_stride CASE_none
#define CASE_pack_mask CASE_none
#define CASE_pack_index CASE_none
#define CASE_unpack_stride CASE_none
#define CASE_unpack_mask CASE_none
#define CASE_unpack_index CASE_none
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) CASE_##letter(shape, stem)
#include "vector/registry/functions.def"
};

bool is_single(const std::string& name) { return name[0] == 's'; }

// Where a function is neither constant nor out of range; the others are sampled over all exponents alone.
struct interval {
  double low, high;
};
const std::map<std::string, interval> intervals = {
    {"Exp", {-750, 715}},   {"Exp2", {-1080, 1025}}, {"Exp10", {-325, 309}},  {"Expm1", {-45, 90}},
    {"Log1p", {-1, 100}},   {"Sin", {-1e5, 1e5}},    {"Cos", {-1e5, 1e5}},    {"Tan", {-1e5, 1e5}},
    {"Sinpi", {-9, 9}},     {"Cospi", {-9, 9}},      {"Tanpi", {-9, 9}},      {"Sind", {-800, 800}},
    {"Cosd", {-800, 800}},  {"Tand", {-800, 800}},   {"Asin", {-1, 1}},       {"Acos", {-1, 1}},
    {"Asinpi", {-1, 1}},    {"Acospi", {-1, 1}},     {"Sinh", {-90, 90}},     {"Cosh", {-90, 90}},
    {"Tanh", {-20, 20}},    {"Atanh", {-1, 1}},      {"Acosh", {1, 9}},       {"Erf", {-6, 6}},
    {"Erfc", {-6, 27.3}},   {"ErfInv", {-1, 1}},     {"ErfcInv", {0, 2}},     {"CdfNorm", {-38.5, 9}},
    {"CdfNormInv", {0, 1}}, {"LGamma", {-30, 30}},   {"TGamma", {-180, 172}}, {"ExpInt1", {0, 740}},
};

const std::set<std::string> correctly_rounded = {"Add", "Sub", "Mul", "Div", "Sqr", "Sqrt", "Inv", "Fdim"};

// Half of the sample has moderate exponents, so that pairs of arguments meet.
template <class Real>
Real any_number(std::mt19937_64& random) {
  auto bits = static_cast<typename format<Real>::bits>(random());
  if (random() % 2 == 0 || magnitude_bits(from_bits<Real>(bits)) >= format<Real>::infinity) {
    const auto exponent = static_cast<typename format<Real>::bits>(format<Real>::bias - 8 + random() % 16);
    bits = (bits & ~format<Real>::infinity) | exponent << format<Real>::fraction_bits;
  }
  return from_bits<Real>(bits);
}

// Out of line: GCC 12 turns a vector of such conversions into none (-O2, both elements of a pair at once).
[[gnu::noinline]] double in_precision(const std::string& name, double x) {
  return is_single(name) ? static_cast<float>(x) : x;
}

std::pair<double, double> sample(const std::string& name, int i, std::mt19937_64& random) {
  const auto any = [&] { return is_single(name) ? any_number<float>(random) : any_number<double>(random); };
  double a = any(), b = any();
  if (i % 3 == 0) b = a * (1 + std::ldexp(static_cast<double>(random() % 1024), -20));
  const auto found = intervals.find(name.substr(1));
  if (i % 2 == 0 && found != intervals.end())
    a = std::uniform_real_distribution(found->second.low, found->second.high)(random);
  return {in_precision(name, a), in_precision(name, b)};
}

double bound_of(const std::string& name) {
  if (correctly_rounded.contains(name.substr(1))) return 0.5;
  return is_single(name) ? 0.50001 : 0.502;
}

void expect_accurate(const std::string& name, double a, double b) {
  const double got = functions.at(name)(a, b).value;
  EXPECT_LE(accuracy::ulp_error(accuracy::oracle(name)(a, b), got), bound_of(name))
      << std::hexfloat << name << "(" << a << ", " << b << ") = " << got;
}

TEST(reference_real, errors_stay_within_the_bound) {
  for (const auto& [name, f] : functions) {
    std::mt19937_64 random(20);
    for (int i = 0; i < 400; ++i) {
      const auto [a, b] = sample(name, i, random);
      expect_accurate(name, a, b);
    }
  }
}

TEST(reference_real, hard_arguments) {
  struct row {
    const char* name;
    double a, b = 0;
  };
  const row rows[] = {
      // just beyond a tie of double: rounded to the extended format first, they would fall to the even side
      {"dAdd", 1, 0x1.0000000000001p-53},
      {"dSub", 1, 0x1.0000000000001p-54},
      {"dMul", 0x1.0000004000002p0, 0x1.0000002p0},
      // nearest to a multiple of pi / 2
      {"dSin", 0x1.6ac5b262ca1ffp+849},
      {"dCos", 0x1.6ac5b262ca1ffp+849},
      {"dTan", 0x1.6ac5b262ca1ffp+849},
      {"sSin", 0x1.f37c8ap+95},
      {"dTanpi", 0x1.fffffffffffffp-2},
      {"dTand", 0x1.67fffffffffffp+6},
      {"dCosd", 0x1.fffffffffffffp+1023},
      // zeros of the function
      {"dLn", 0x1.0000000000001p0},
      {"dAcosh", 0x1.0000000000001p0},
      {"dLGamma", 0x1.fffffffffffffp-1},
      {"dLGamma", 0x1.0000000000001p1},
      {"dLGamma", -0x1.3a7fc9600f86cp+1},
      {"sLGamma", -0x1.3a7fcap+1},
      {"dErfcInv", 0x1.fffffffffffffp-1},
      {"dCdfNormInv", 0x1.0000000000001p-1},
      // tails
      {"dErfInv", 0x1p-1074},
      {"dErfInv", 0x1.fffffffffffffp-1},
      {"dErfcInv", 0x1p-1074},
      {"dErfcInv", 0x1.fffffffffffffp0},
      {"dCdfNormInv", 0x1p-1074},
      {"dCdfNorm", -0x1.33fffffffffffp+5},
      {"dExpInt1", 0x1p-1074},
      {"dExpInt1", 0x1.0000000000001p0},
      {"dTGamma", 0x1.573fae561f647p+7},
      {"dPow", 0x1.0000000000001p0, 0x1.62e42fefa39efp+61},
  };
  for (const row& r : rows) expect_accurate(r.name, r.a, r.b);
}

struct special {
  double a, b, value;
  int status;
};

// Value for value, signs of zeros included.
void expect_special(const std::string& name, const special& row) {
  const outcome got = functions.at(name)(row.a, row.b);
  const double want = in_precision(name, row.value);
  const bool same = std::isnan(want) ? std::isnan(got.value) : to_bits(got.value) == to_bits(want);
  EXPECT_TRUE(same && got.status == row.status)
      << name << "(" << row.a << ", " << row.b << ") = " << got.value << ", status " << got.status;
}

TEST(reference_real, special_values) {
  std::ifstream file(TMK_SOURCE_DIR "/tests/reference/real_special_values.txt");
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    std::string name, a, b, value;
    int status = -1;
    words >> name >> a >> b >> value >> status;
    const special row{std::stod(a), std::stod(b), std::stod(value), status};
    if (functions.contains(name)) {
      expect_special(name, row);
    } else {
      expect_special("s" + name, row);
      expect_special("d" + name, row);
    }
    ++count;
  }
  EXPECT_GT(count, 150);
}

TEST(reference_real, nan_passes_quiet_and_unreported) {
  const std::set<std::string> number_wins = {"Fmax", "Fmin", "MaxMag", "MinMag"};
  float r;
  for (const auto& [name, f] : functions) {
    if (number_wins.contains(name.substr(1))) continue;
    expect_special(name, {nan, 0.5, nan, 0});
  }
  EXPECT_EQ(reference::Abs(from_bits<float>(0x7F800001), r), 0);
  EXPECT_EQ(to_bits(r) & 0x7FC00000, 0x7FC00000u);
}

TEST(reference_real, several_results_and_coefficients) {
  double r1, r2;
  EXPECT_EQ(reference::Modf(-2.5, r1, r2), 0);
  EXPECT_EQ(std::pair(r1, r2), std::pair(-2.0, -0.5));
  EXPECT_EQ(reference::Modf(-inf, r1, r2), 0);
  EXPECT_TRUE(r1 == -inf && r2 == 0 && std::signbit(r2));
  EXPECT_EQ(reference::SinCos(inf, r1, r2), 1);
  EXPECT_EQ(reference::SinCos(0.0, r1, r2), 0);
  EXPECT_EQ(std::pair(r1, r2), std::pair(0.0, 1.0));

  // 3 * (1 + 2^-52) - 3 keeps its bits; a vanishing numerator is no underflow.
  EXPECT_EQ(reference::LinearFrac(0x1.0000000000001p0, 0.0, 3.0, -3.0, 0.0, 1.0, r1), 0);
  EXPECT_EQ(r1, 3 * 0x1p-52);
  EXPECT_EQ(reference::LinearFrac(0.1, 0.0, 0x1.999999999999ap-4, -0x1.47ae147ae147cp-7, 0.0, 1.0, r1), 0);
  EXPECT_EQ(r1, std::fma(0.1, 0x1.999999999999ap-4, -0x1.47ae147ae147cp-7));
  EXPECT_EQ(reference::LinearFrac(1.0, 1.0, 1.0, -1.0, 1.0, 1.0, r1), 0);
  EXPECT_EQ(r1, 0);
  EXPECT_EQ(reference::LinearFrac(1.0, 1.0, 1.0, 0.0, 1.0, -1.0, r1), 2);
  EXPECT_EQ(reference::LinearFrac(1.0, 1.0, 1.0, -1.0, 1.0, -1.0, r1), 1);
}

// The caller may round upwards and treat subnormals as zero.
TEST(reference_real, results_do_not_depend_on_sse_controls) {
  constexpr unsigned flush_and_round_up = 0x1F80 | 0x8040 | 0x4000;
  for (const auto& [name, f] : functions) {
    if (name.ends_with("Rint") || name.ends_with("NearbyInt")) continue;  // defined by the controls
    std::mt19937_64 random(21);
    for (int i = 0; i < 100; ++i) {
      auto [a, b] = sample(name, i, random);
      if (i % 5 == 0) a = std::ldexp(i + 1, is_single(name) ? -149 : -1074);
      const outcome want = f(a, b);
      sse_controls = flush_and_round_up;
      const outcome got = f(a, b);
      sse_controls = 0x1F80;
      const bool same =
          std::isnan(want.value) ? std::isnan(got.value) : to_bits(got.value) == to_bits(want.value);
      EXPECT_TRUE(same && got.status == want.status) << name << "(" << a << ", " << b << ")";
    }
  }
}

}  // namespace
