// SPDX-License-Identifier: Apache-2.0
// The walks over each shape of arrays, by descriptions whose fast formula and slow path leave different
// marks: which elements took which, with which arguments and scalars, and what was reported.
#include <gtest/gtest.h>

#include <vector>

#include "vector/walk/walk.hpp"

namespace {

using namespace tmk;

// The slow path takes multiples of 7, and reports those of 14.
lane_mask<double> multiples_of_seven(const f64& x) {
  alignas(64) double lane[lanes<double>];
  x.store_aligned(lane);
  for (double& v : lane) v = static_cast<int>(v) % 7 == 0 ? 1 : 0;
  return f64::load_aligned(lane) == f64(1);
}
int32_t status_of(double x) { return static_cast<int>(x) % 14 == 0 ? VTM_STATUS_DOMAIN : VTM_STATUS_OK; }
double slowly(double y) { return y + 0.5; }

struct two_scalars : description<double> {
  double scale, shift;
  two_scalars(double scale, double shift) : scale(scale), shift(shift) {}
  f64 fast(const f64& x, const f64& y) const { return x * f64(scale) + y * f64(shift); }
  static lane_mask<double> flagged(const f64& x, const f64&, const f64&) { return multiples_of_seven(x); }
};
int32_t two_scalars_slowly(const double* a, const double* b, double scale, double shift, double* r) {
  *r = slowly(*a * scale + *b * shift);
  return status_of(*a);
}

struct two_results : description<double> {
  static auto fast(const f64& x) { return pack{x + f64(1), x * f64(2)}; }
  static lane_mask<double> flagged(const f64& x, const f64&, const f64&) { return multiples_of_seven(x); }
  static int32_t rare(const double* a, double* r1, double* r2) {
    const double x = *a;
    *r1 = slowly(x + 1);
    *r2 = slowly(x * 2);
    return status_of(x);
  }
};

struct complex_to_complex : description<double> {
  static complex_value<double> fast(const complex_value<double>& z) { return {z.im, z.re}; }
  static lane_mask<double> flagged(const complex_value<double>& z, const complex_value<double>&) {
    return multiples_of_seven(z.re);
  }
};
int32_t complex_slowly(const tmk_complex16* a, tmk_complex16* r) {
  *r = {slowly(a->im), slowly(a->re)};
  return status_of(a->re);
}

// Either part sends its element to the slow path.
struct parts_doubled : description<double> {
  using value = parts_in_turn<double>;
  static value fast(const value& z) { return {z.parts + z.parts}; }
  static lane_mask<double> flagged(const value& z, const value&) { return multiples_of_seven(z.parts); }
};
int32_t doubled_slowly(const tmk_complex16* a, tmk_complex16* r) {
  *r = {slowly(a->re + a->re), slowly(a->im + a->im)};
  return status_of(a->re);
}

struct complex_to_real : description<double> {
  static f64 fast(const complex_value<double>& z) { return z.re - z.im; }
  static lane_mask<double> flagged(const complex_value<double>& z, const f64&) {
    return multiples_of_seven(z.re);
  }
};
int32_t difference_slowly(const tmk_complex16* a, double* r) {
  *r = slowly(a->re - a->im);
  return status_of(a->re);
}

struct in_blocks : two_results {
  static constexpr bool by_blocks = true;
};

int32_t never(const double*, double*, double*) { return VTM_STATUS_DOMAIN; }

std::vector<int32_t> reported;

struct walks : testing::TestWithParam<int> {
  void SetUp() override {
    reported.clear();
    tmk_vtm_kernel_SetErrorCallBack([](VtmErrorContext* context) {
      reported.push_back(context->index);
      return 0;
    });
    for (int i = 0; i < n(); ++i) {
      a.push_back(i + 1);
      z.push_back({double(i + 1), i + 0.25});
    }
  }
  void TearDown() override { tmk_vtm_kernel_ClearErrorCallBack(); }
  int n() const { return GetParam(); }
  // Whether element i went by the slow path, and must be marked.
  double mark(int i) const { return (i + 1) % 7 == 0 ? 0.5 : 0; }
  void expect_reports() const {
    std::vector<int32_t> expected;
    for (int i = 13; i < n(); i += 14) expected.push_back(i);
    EXPECT_EQ(reported, expected);
  }
  std::vector<double> a;
  std::vector<tmk_complex16> z;
};

TEST_P(walks, two_arguments_and_scalars) {
  std::vector<double> b(a.rbegin(), a.rend()), r(a.size());
  run<two_scalars>("test", two_scalars_slowly, n(),
                   pack{static_cast<const double*>(a.data()), static_cast<const double*>(b.data())},
                   pack{r.data()}, 3.0, 0.25);
  for (int i = 0; i < n(); ++i) EXPECT_EQ(r[i], a[i] * 3 + b[i] * 0.25 + mark(i)) << i;
  expect_reports();
}

template <class Kernel>
void expect_two_results(const walks& w) {
  std::vector<double> first(w.a.size()), second(w.a.size());
  run<Kernel>("test", never, w.n(), pack{w.a.data()}, pack{first.data(), second.data()});
  for (int i = 0; i < w.n(); ++i) {
    const double marked = Kernel::by_blocks && first[i] != w.a[i] + 1 ? 0.5 : w.mark(i);
    EXPECT_EQ(first[i], w.a[i] + 1 + marked) << i;
    EXPECT_EQ(second[i], w.a[i] * 2 + marked) << i;
  }
  w.expect_reports();
}
TEST_P(walks, two_results) { expect_two_results<two_results>(*this); }
// Blocks with a flagged element and the tail take the slow path whole: the mark is the element's own affair.
TEST_P(walks, two_results_by_blocks) { expect_two_results<in_blocks>(*this); }

TEST_P(walks, two_results_in_place) {
  std::vector<double> first = a, second(a.size());
  run<two_results>("test", never, n(), pack{static_cast<const double*>(first.data())},
                   pack{first.data(), second.data()});
  for (int i = 0; i < n(); ++i) EXPECT_EQ(first[i], a[i] + 1 + mark(i)) << i;
}

TEST_P(walks, complex_elements) {
  std::vector<tmk_complex16> r(z.size());
  run<complex_to_complex>("test", complex_slowly, n(), pack{static_cast<const tmk_complex16*>(z.data())},
                          pack{r.data()});
  for (int i = 0; i < n(); ++i) {
    EXPECT_EQ(r[i].re, z[i].im + mark(i)) << i;
    EXPECT_EQ(r[i].im, z[i].re + mark(i)) << i;
  }
  expect_reports();
}

TEST_P(walks, complex_elements_of_parts_in_turn) {
  std::vector<tmk_complex16> r = z;
  run<parts_doubled>("test", doubled_slowly, n(), pack{static_cast<const tmk_complex16*>(r.data())},
                     pack{r.data()});
  for (int i = 0; i < n(); ++i) {
    const double marked = i % 7 == 0 ? 0.5 : mark(i);
    EXPECT_EQ(r[i].re, 2 * z[i].re + marked) << i;
    EXPECT_EQ(r[i].im, 2 * z[i].im + marked) << i;
  }
  expect_reports();
}

TEST_P(walks, complex_arguments_and_real_results) {
  std::vector<double> r(z.size());
  run<complex_to_real>("test", difference_slowly, n(), pack{static_cast<const tmk_complex16*>(z.data())},
                       pack{r.data()});
  for (int i = 0; i < n(); ++i) EXPECT_EQ(r[i], z[i].re - z[i].im + mark(i)) << i;
  expect_reports();
}

INSTANTIATE_TEST_SUITE_P(counts, walks, testing::Values(0, 1, 3, 8, 13, 14, 29, 64, 77));

}  // namespace
