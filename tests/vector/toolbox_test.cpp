// SPDX-License-Identifier: Apache-2.0
// The vocabulary of kernels on every tier: exact products, the error bounds of pairs against MPFR, tables
// against their entries, complex elements taken apart, and polynomials.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "toolbox_kernels.hpp"

namespace {

// high + low, in so many bits that what is rounded lies far below the square of a unit.
struct wide_number {
  explicit wide_number(double high = 0, double low = 0) {
    mpfr_init2(value, 500);
    mpfr_set_d(value, high, MPFR_RNDN);
    mpfr_add_d(value, value, low, MPFR_RNDN);
  }
  wide_number(const wide_number&) = delete;
  wide_number& operator=(const wide_number&) = delete;
  ~wide_number() { mpfr_clear(value); }
  mpfr_t value;
};

int root_of_first(mpfr_ptr r, mpfr_srcptr x, mpfr_srcptr, mpfr_rnd_t rounding) {
  return mpfr_sqrt(r, x, rounding);
}

// Bounds in units of u^2: with fused operations, and without. No bound: exact, at both ends of the range too.
const struct {
  const char* name;
  int (*exact)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
  bool x_is_pair, y_is_pair;
  double bound, baseline;
} pair_rows[] = {
    {"two_prod", mpfr_mul, false, false, 0, 0},
    {"pair + value", mpfr_add, true, false, 2, 2},
    {"pair + pair", mpfr_add, true, true, 3, 3},
    {"pair * value", mpfr_mul, true, false, 2, 3},
    {"pair * pair", mpfr_mul, true, true, 6, 7},
    {"value / value", mpfr_div, false, false, 0.5, 0.5},
    {"pair / value", mpfr_div, true, false, 3, 3},
    {"pair / pair", mpfr_div, true, true, 15, 15},
    {"root of a value", root_of_first, false, false, 1, 1},
    {"root of a pair", root_of_first, true, false, 3.125, 3.125},
};

class toolbox : public testing::TestWithParam<int32_t> {
 protected:
  void SetUp() override {
    before_ = tmk_current_tier();
    if (tmk_select_tier(GetParam()) != GetParam())
      GTEST_SKIP() << "this processor, build or TMK_TIER has no " << tmk_tier_name(GetParam());
  }
  void TearDown() override { tmk_select_tier(before_); }

  int between(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }
  // A positive number of an exponent. A third of the mantissas are near 1 or 2.
  template <class Real>
  Real number(int exponent) {
    const double m = std::uniform_real_distribution<double>(1, 2)(random_),
                 near = std::ldexp(m, -between(2, 20));
    const int kind = between(0, 5);
    return static_cast<Real>(std::ldexp(kind == 0 ? 1 + near : kind == 1 ? 2 - near : m, exponent));
  }
  // What may follow x in a pair.
  template <class Real>
  Real rest(Real x) {
    const double half = std::uniform_real_distribution<double>(-0.5, 0.5)(random_);
    const Real low = static_cast<Real>(std::ldexp(half, std::ilogb(x) - tmk::format<Real>::precision + 1));
    return static_cast<Real>(x + low) == x ? low : Real(0);
  }

  std::mt19937_64 random_{1};

 private:
  int32_t before_ = 0;
};
INSTANTIATE_TEST_SUITE_P(tiers, toolbox, testing::Values(TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4),
                         [](const auto& info) { return tmk_tier_name(info.param); });

// Both precisions: a test body is a generic lambda of a value.
template <class Body>
void in_both_precisions(const Body& body) {
  body(1.0);
  body(1.0f);
}

TEST_P(toolbox, keeps_the_bounds_of_pairs) {
  in_both_precisions([&]<class Real>(Real) {
    constexpr int precision = tmk::format<Real>::precision, top = tmk::format<Real>::bias - 1;
    const auto& kernels = tmk::toolbox_kernels_now<Real>();
    wide_number exact, error;
    for (int row = 0; row < 10; ++row) {
      const auto& r = pair_rows[row];
      const bool sum = r.exact == mpfr_add;
      double worst = 0;
      for (int round = 0; round < 400; ++round) {
        Real x[2][16], y[2][16], got[2][16];
        for (int i = 0; i < kernels.lanes; ++i) {
          int of_x = between(sum ? -2 : -20, sum ? 2 : 20), of_y = between(sum ? -2 : -20, sum ? 2 : 20);
          if (r.bound == 0) do {
              of_x = between(-top, top);
              of_y = between(precision - tmk::format<Real>::bias, top - 1) - of_x;
            } while (std::abs(of_y) > top);
          x[0][i] = number<Real>(of_x);
          y[0][i] = number<Real>(of_y);
          if (between(0, 1) != 0) y[0][i] = sum ? -x[0][i] * (1 + Real(between(0, 2)) / (1 << 20)) : -y[0][i];
          x[1][i] = r.x_is_pair ? rest(x[0][i]) : Real(0);
          y[1][i] = r.y_is_pair ? rest(y[0][i]) : Real(0);
        }
        kernels.pairs[row](x[0], x[1], y[0], y[1], got[0], got[1]);
        for (int i = 0; i < kernels.lanes; ++i) {
          const wide_number a(x[0][i], x[1][i]), b(y[0][i], y[1][i]), result(got[0][i], got[1][i]);
          r.exact(exact.value, a.value, b.value, MPFR_RNDN);
          mpfr_sub(error.value, result.value, exact.value, MPFR_RNDN);
          EXPECT_EQ(got[0][i], static_cast<Real>(got[0][i] + got[1][i])) << r.name;
          if (mpfr_zero_p(error.value)) continue;
          mpfr_div(error.value, error.value, exact.value, MPFR_RNDN);
          worst = std::max(worst, std::ldexp(std::fabs(mpfr_get_d(error.value, MPFR_RNDN)), 2 * precision));
        }
      }
      const double bound = GetParam() == TMK_TIER_W7 ? r.baseline : r.bound;
      EXPECT_LE(worst, bound * (1 + std::ldexp(8.0, -precision))) << r.name;
      EXPECT_GE(worst, bound / 8) << r.name << ": the arguments are too easy";
    }
  });
}

TEST_P(toolbox, gives_table_entries) {
  in_both_precisions([&]<class Real>(Real) {
    using bits = typename tmk::format<Real>::bits;
    constexpr bits upper = sizeof(Real) == 8 ? static_cast<bits>(0xFFFFFFFF00000000) : ~bits{0};
    const auto& kernels = tmk::toolbox_kernels_now<Real>();
    for (int k = 0, count = 4; k < 4; ++k, count *= 2) {
      for (const bool all_bits : {true, false}) {
        Real entry[32], got[3][16];
        bits x[16];
        for (Real& e : entry) {
          e = number<Real>(between(-30, 30));
          if (!all_bits) e = tmk::from_bits<Real>(tmk::to_bits(e) & upper);
        }
        for (int round = 0; round < 50; ++round) {
          for (bits& b : x) b = static_cast<bits>(random_());
          kernels.look_up[k](entry, x, got[0], got[1], got[2]);
          for (int i = 0; i < kernels.lanes; ++i) {
            const Real by_last = entry[x[i] % static_cast<bits>(count)];
            const Real by_fraction = entry[(x[i] >> (tmk::format<Real>::fraction_bits - 2 - k)) % count];
            EXPECT_EQ(got[0][i], by_last) << count;
            EXPECT_EQ(tmk::to_bits(got[1][i]) & upper, tmk::to_bits(by_last) & upper) << count;
            EXPECT_EQ(tmk::to_bits(got[2][i]) & upper, tmk::to_bits(by_fraction) & upper) << count;
            EXPECT_TRUE(all_bits || got[2][i] == by_fraction) << count;
          }
        }
      }
    }
  });
}

TEST_P(toolbox, takes_complex_elements_apart_and_evaluates_polynomials) {
  in_both_precisions([&]<class Real>(Real) {
    const auto& kernels = tmk::toolbox_kernels_now<Real>();
    const int n = kernels.lanes;
    Real x[32] = {}, parts[32], whole[32];
    for (int i = 0; i < 2 * n; ++i) x[i] = static_cast<Real>(i + 1);
    kernels.deinterleave(x, parts);
    kernels.interleave(parts, whole);
    for (int i = 0; i < 2 * n; ++i) {
      EXPECT_EQ(parts[i], x[i < n ? 2 * i : 2 * (i - n) + 1]) << i;
      EXPECT_EQ(whole[i], x[i]) << i;
    }
    // Exact in any order. The last row leaves c[0] out.
    const Real c[] = {3, -7, 11, -2, 5, 13, -17, 19};
    for (int size = 1; size <= 8; ++size)
      for (int at = -3; at <= 3; ++at) {
        Real exact = 0;
        for (int i = size - 1; i >= size / 8; --i) exact = exact * at + c[i];
        EXPECT_EQ(kernels.polynomial[size - 1](static_cast<Real>(at), c), exact) << size << " at " << at;
      }
    const Real u = std::numeric_limits<Real>::epsilon();
    EXPECT_EQ(kernels.multiply_add(1 + u, 1 - u, -1), GetParam() == TMK_TIER_W7 ? 0 : -u * u);
  });
}

}  // namespace
