// SPDX-License-Identifier: Apache-2.0
// Complex sums, products, quotients and moduli: their reports, what differs at level EP, and parts that
// cancel.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "oracle/oracle.hpp"
#include "tmk/abi/vtm.h"
#include "tools/common/kernels.hpp"

namespace {

using namespace tmk;
using namespace tmk::tools;
using number = std::complex<double>;

constexpr double inf = std::numeric_limits<double>::infinity(),
                 nan = std::numeric_limits<double>::quiet_NaN();

class complex_arithmetic : public testing::TestWithParam<int32_t> {
 protected:
  void SetUp() override {
    if (tmk_select_tier(GetParam()) != GetParam())
      GTEST_SKIP() << "this processor, build or TMK_TIER has no " << tmk_tier_name(GetParam());
    mode_ = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_CALLBACK);
    tmk_vtm_kernel_SetErrorCallBack([](VtmErrorContext* context) {
      reports.push_back(context->index);
      if (repairs) context->r1 = context->r1_imaginary = 7;
      return 0;
    });
    reports.clear();
    repairs = false;
  }
  void TearDown() override {
    tmk_vtm_kernel_ClearErrorCallBack();
    if (mode_ != 0) tmk_vtm_kernel_SetMode(mode_);
    tmk_select_tier(TMK_TIER_WIDEST);
  }

  static inline std::vector<int32_t> reports;
  static inline bool repairs;

 private:
  uint32_t mode_ = 0;
};
INSTANTIATE_TEST_SUITE_P(tiers, complex_arithmetic, testing::Values(TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4),
                         [](const auto& info) { return tmk_tier_name(info.param); });

template <class Real>
std::vector<std::complex<Real>> run(const std::string& name, int slot, const std::vector<number>& a,
                                    const std::vector<number>& b) {
  const std::vector<std::complex<Real>> x(a.begin(), a.end()), y(b.begin(), b.end());
  std::vector<std::complex<Real>> r(a.size());
  const vector_function* f = nullptr;
  static const auto functions = functions_with_value();
  for (const vector_function& one : functions)
    if (one.name == name) f = &one;
  const auto kernel =
      reinterpret_cast<void (*)(int32_t, const void*, const void*, void*)>(f->record->kernel[slot]);
  kernel(static_cast<int32_t>(a.size()), x.data(), y.data(), r.data());
  return r;
}
std::vector<number> run(const std::string& name, int slot, const std::vector<number>& a,
                        const std::vector<number>& b) {
  if (name[0] == 'z') return run<double>(name, slot, a, b);
  const auto r = run<float>(name, slot, a, b);
  return {r.begin(), r.end()};
}

// As many copies as make whole blocks of every tier and a tail.
constexpr size_t copies = 70;

bool same(double got, double want) {
  return std::isnan(want) ? std::isnan(got) : got == want && std::signbit(got) == std::signbit(want);
}

TEST_P(complex_arithmetic, special_elements_and_their_reports) {
  constexpr int LA = TMK_SLOT_LA, HA = TMK_SLOT_HA, EP = TMK_SLOT_EP;
  struct row {
    const char* name;
    int slot;
    number a, b, want;
    bool reported;
  };
  const row rows[] = {
      {"cAdd", HA, {3e38, 1}, {3e38, 2}, {inf, 3}, true},
      {"cAdd", EP, {3e38, 1}, {3e38, 2}, {inf, 3}, false},
      {"zSub", LA, {-1.7e308, nan}, {1.7e308, 2}, {-inf, nan}, true},
      {"zAdd", HA, {1.7e308, 1}, {1.7e308, inf}, {inf, inf}, false},
      {"zAdd", HA, {1, nan}, {1, 1}, {2, nan}, false},
      {"zSub", EP, {-1.7e308, 1}, {1.7e308, 2}, {-inf, -1}, false},
      // a product that overflows: not reported next to a zero of singles, nor at their level EP
      {"cMul", HA, {0x1p100, 0x1p100}, {0x1p100, 0x1p100}, {0, inf}, true},
      {"cMul", HA, {0x1p100, 1}, {0x1p100, 0}, {inf, 0x1p100}, false},
      {"cMul", EP, {0x1p100, 0x1p100}, {0x1p100, 0x1p100}, {0, inf}, false},
      {"zMul", HA, {0x1p600, 0}, {0x1p600, 0}, {inf, 0}, true},
      {"zMul", EP, {0x1p600, 0x1p601}, {0x1p601, 0x1p600}, {0, inf}, true},
      {"zMul", EP, {0x1p600, 0x1p600}, {0x1p601, 0x1p600}, {inf, inf}, true},
      {"cMulByConj", HA, {0x1p100, 0x1p100}, {0x1p100, 0x1p100}, {inf, 0}, true},
      // infinities are recovered
      {"cMul", HA, {inf, 0}, {0, 1}, {nan, inf}, false},
      {"cMul", EP, {inf, nan}, {2, 0}, {inf, nan}, false},
      {"zMul", EP, {nan, 1}, {inf, 3}, {nan, inf}, false},
      {"zMul", HA, {0, 0}, {inf, 1}, {nan, nan}, false},
      {"zMulByConj", HA, {inf, 1}, {inf, 1}, {inf, nan}, false},
      // zeros have the sign of the plain formula
      {"zMul", HA, {0, 0}, {-1, 2}, {-0.0, 0}, false},
      {"cMul", EP, {0, 0}, {-1, 2}, {-0.0, 0}, false},
      {"zMul", HA, {-0.0, -0.0}, {1, 0}, {0, -0.0}, false},
      {"zMul", HA, {1, 1}, {1, 1}, {0, 2}, false},
      // cancellation brings EP to more bits
      {"cMul", EP, {1, 1}, {1, 1 - 0x1p-20}, {0x1p-20, 2 - 0x1p-20}, false},
      {"zMul",
       EP,
       {1, 1 + 0x1p-52},
       {1 - 0x1p-53, 1 - 0x1p-52},
       {-0x1.ffffffffffffcp-54, 0x1.fffffffffffffp0},
       false},
      // divisors of zero, one zero part, and the ends of the range
      {"zDiv", HA, {1, 1}, {0, 0}, {inf, inf}, false},
      {"zDiv", HA, {1, 0}, {-0.0, 0}, {-inf, nan}, false},
      {"zDiv", HA, {0, 0}, {0, 0}, {nan, nan}, false},
      {"zDiv", EP, {1, 1}, {0, 0}, {nan, nan}, false},
      {"cDiv", EP, {1, 1}, {0, 0}, {nan, nan}, false},
      {"cDiv", HA, {1, -1}, {0, 0}, {inf, -inf}, false},
      {"zDiv", HA, {3, 0}, {0, 2}, {0, -1.5}, false},
      {"zDiv", HA, {0, -4}, {2, 0}, {0, -2}, false},
      {"zDiv", HA, {-0.0, 4}, {2, 0}, {0, 2}, false},
      {"zDiv", HA, {-0.0, -4}, {2, 0}, {-0.0, -2}, false},
      {"zDiv", HA, {0x1p1000, 1}, {0x1p-1000, 0}, {inf, 0x1p1000}, true},
      {"zDiv", HA, {0x1p1000, 0x1p1000}, {0x1p1000, 0x1p1000}, {1, 0}, false},
      {"zDiv", HA, {0x1p-1000, 0x1p-1000}, {0x1p-1000, -0x1p-1000}, {0, 1}, false},
      {"cDiv", HA, {0x1p100, 0x1p100}, {0x1p-100, 0x1p-120}, {inf, inf}, true},
      {"cDiv", HA, {0x1p100, 0x1p100}, {0x1p-100, 0}, {inf, inf}, false},
      {"cDiv", HA, {1, 2}, {nan, inf}, {0, -0.0}, false},
      {"zDiv", HA, {inf, nan}, {2, 3}, {inf, -inf}, false},
  };
  for (const row& x : rows) {
    reports.clear();
    // Ordinary elements between the special ones.
    std::vector<number> a(copies, {1, 2}), b(copies, {3, 4});
    std::vector<int32_t> expected;
    for (size_t i = 0; i < copies; i += 3) {
      a[i] = x.a;
      b[i] = x.b;
      if (x.reported) expected.push_back(static_cast<int32_t>(i));
    }
    const auto r = run(x.name, x.slot, a, b);
    EXPECT_EQ(reports, expected) << x.name << " slot " << x.slot << x.a << x.b;
    for (size_t i = 0; i < copies; i += 3)
      EXPECT_TRUE(same(r[i].real(), x.want.real()) && same(r[i].imag(), x.want.imag()))
          << std::hexfloat << x.name << " slot " << x.slot << x.a << x.b << " = " << r[i];
    EXPECT_EQ(r[1], r[2]) << x.name;
  }
}

TEST_P(complex_arithmetic, a_report_may_replace_the_element) {
  repairs = true;
  for (const char* name : {"cAdd", "zMul", "cMulByConj"}) {
    const double large = name[0] == 'c' ? 0x1.8p127 : 0x1.8p1023;
    const auto r = run(name, TMK_SLOT_HA, {{large, large}, {1, 1}}, {{large, large}, {2, 1}});
    EXPECT_EQ(r[0], number(7, 7)) << name;
    EXPECT_NE(r[1], number(7, 7)) << name;
  }
}

// Numbers whose parts in the result cancel but for some bits: near multiples of the conjugate, or of its
// product with i.
struct cancelling {
  std::mt19937_64 random{17};
  int precision;
  double spread;

  double uniform() { return std::uniform_real_distribution(-1.0, 1.0)(random); }
  double rounded(double x) const { return precision == 24 ? static_cast<double>(static_cast<float>(x)) : x; }
  double scale() { return std::exp2(std::round(spread * uniform())); }
  number first() {
    return {rounded((1 + std::abs(uniform())) * scale()), rounded((1 + std::abs(uniform())) * scale())};
  }
  number second(number a, bool product, bool imaginary) {
    const double noise = std::exp2(-std::abs(uniform()) * precision), size = rounded(1 + std::abs(uniform()));
    const double first = rounded(a.imag() * size),
                 second = rounded(a.real() * size * (1 + noise * uniform()));
    // a c - b d and a d + b c vanish for (b, a) and (a, -b), and the sums of quotients for their conjugates.
    const number b = imaginary ? number(second, -first) : number(first, second);
    return product ? b : std::conj(b);
  }
};

TEST_P(complex_arithmetic, parts_that_cancel_are_right_to_the_last_place) {
  constexpr size_t n = 4000;
  struct row {
    const char* name;
    double bound;
  };
  for (const auto& [name, bound] : {row{"cMul", 0.51},
                                    {"zMul", 1},
                                    {"cMulByConj", 0.51},
                                    {"zMulByConj", 1},
                                    {"cDiv", 0.51},
                                    {"zDiv", 1}}) {
    const bool single = name[0] == 'c', product = std::string(name).ends_with("Mul");
    cancelling draw{.precision = single ? 24 : 53, .spread = single ? 20.0 : 100.0};
    std::vector<number> a(n), b(n);
    for (size_t i = 0; i < n; ++i) {
      a[i] = draw.first();
      b[i] = draw.second(a[i], product, i % 2 == 0);
    }
    const auto r = run(name, TMK_SLOT_HA, a, b);
    const accuracy::oracle exact(name);
    for (size_t i = 0; i < n; ++i) {
      const auto value = exact({.a = a[i], .b = b[i]});
      ASSERT_LE(accuracy::ulp_error(value[0], r[i].real()), bound)
          << std::hexfloat << name << a[i] << b[i] << r[i];
      ASSERT_LE(accuracy::ulp_error(value[1], r[i].imag()), bound)
          << std::hexfloat << name << a[i] << b[i] << r[i];
    }
  }
}

}  // namespace
