// SPDX-License-Identifier: Apache-2.0
// What rounding, scale and range may do to a spline, and what they may not.
#include <algorithm>

#include "api/spline/samples.hpp"

namespace tmk {
namespace {

using namespace tests;

// Points that are a grid but for rounding: cells follow from proportion, distances are from the points.
template <class Real>
void rounded_grid(std::size_t n, Real (*point)(std::size_t)) {
  std::vector<Real> x(n), t = random_sites<Real>(500, 0, 1);
  for (std::size_t i = 0; i < n; ++i) x[i] = point(i);
  const auto y = values<Real>(n, 21);
  const Real first = x.front(), last = x.back();
  std::mt19937 g(22);
  for (Real& site : t) site = first + site * (last - first);
  for (std::size_t k = 0; k < 500; ++k) {
    const Real at = x[g() % n];
    for (const Real site : {at, std::nextafter(at, first), std::nextafter(at, last)}) t.push_back(site);
  }
  const auto s = basic_spline<Real>::natural(x, y);
  std::vector<Real> alone(t.size()), all(4 * t.size());
  std::vector<std::int32_t> cells(t.size());
  s(t, alone);
  s.evaluate(t, {0, 1, 2, 3}, all);
  s.cells(t, cells);
  for (std::size_t i = 0; i < t.size(); ++i) {
    const auto above = std::upper_bound(x.begin(), x.end() - 1, t[i]);
    ASSERT_EQ(cells[i], above - x.begin()) << t[i];
    ASSERT_EQ(alone[i], all[4 * i]) << t[i];
    ASSERT_TRUE(i % 100 != 0 || s(t[i]) == alone[i]) << t[i];
    ASSERT_TRUE(t[i] != above[-1] || alone[i] == y[static_cast<std::size_t>(above - x.begin()) - 1]) << t[i];
  }
  ASSERT_NEAR(s(last), y.back(), 30 * std::numeric_limits<Real>::epsilon());
}
TEST(spline_numbers, rounded_grids_keep_their_digits) {
  for (const std::size_t n : {2u, 50u, 300u, 100'000u}) {
    rounded_grid<double>(n, [](std::size_t i) { return 0.1 * static_cast<double>(i); });
    rounded_grid<double>(n, [](std::size_t i) { return 1e9 + static_cast<double>(i); });
    rounded_grid<float>(n, [](std::size_t i) { return static_cast<float>(i) / 10; });
    rounded_grid<float>(n, [](std::size_t i) { return static_cast<float>(i) - 7; });
  }
}

// Straight on both sides of a corner but for rounding, at any scale: the mean of the two slopes. One bend
// that is no rounding takes its side's weight away.
template <class Real>
void corner_of_any_scale(int low, int high) {
  const std::size_t n = 40, corner = 15;
  std::vector<Real> x(n), y(n), bent(n);
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = static_cast<Real>(0.1 * static_cast<double>(i));
    const double from = 0.1 * (static_cast<double>(i) - corner);
    y[i] = static_cast<Real>(i < corner ? 2 * from : -0.7 * from);
    bent[i] = y[i] + (i == corner + 2 ? Real(0.001) : Real(0));
  }
  const double unit = std::numeric_limits<Real>::epsilon();
  const auto at_scale_1 = basic_spline<Real>::akima(x, y);
  EXPECT_NEAR(at_scale_1(x[corner], 1), 0.65, 200 * unit);
  EXPECT_NEAR(basic_spline<Real>::akima(x, bent)(x[corner], 1), 2, 1e4 * unit);
  for (int power = low; power <= high; power += 40) {
    std::vector<Real> scaled(n);
    for (std::size_t i = 0; i < n; ++i) scaled[i] = std::ldexp(y[i], power);
    const auto s = basic_spline<Real>::akima(x, scaled);
    for (std::size_t i = 0; i < s.coefficients().size(); ++i)
      ASSERT_EQ(s.coefficients()[i], std::ldexp(at_scale_1.coefficients()[i], power)) << power << ' ' << i;
  }
}
TEST(spline_numbers, akima_has_no_scale) {
  corner_of_any_scale<double>(-820, 940);
  corner_of_any_scale<float>(-80, 100);
}

TEST(spline_numbers, hyman_has_no_scale) {
  for (const float unit : {1e-24f, -1e-36f, 1.0f})
    EXPECT_NEAR(basic_spline<float>::hyman(std::vector<float>{0, 1, 2, 3},
                                           std::vector<float>{0, unit, 3 * unit, 4 * unit})(1, 1) /
                    unit,
                1.5, 1e-6);
  EXPECT_NEAR(spline::hyman(uniform(0, 3, 4), std::vector<double>{0, 1e-200, 3e-200, 4e-200})(1, 1) * 1e200,
              1.5, 1e-14);
  // Where the data turn, the slope is 0 all the same.
  EXPECT_EQ(spline::hyman(uniform(0, 3, 4), std::vector<double>{0, 1e-200, -1e-200, 0})(1, 1), 0);
}

// Finite points and values, and coefficients that are not: refused, with the ends of the cell.
template <class Real>
void out_of_range(const maker<Real>& make, const std::vector<Real>& x, const std::vector<Real>& y,
                  const char* argument, const char* cell) {
  const std::vector<Real> plain_x{0, 1, 2, 3, 4}, plain_y{1, 2, 4, 3, 1};
  auto s = make(plain_x, plain_y);
  const Real before = s(Real(0.5));
  try {
    s = make(x, y);
    ADD_FAILURE() << "not refused: " << cell << ' ' << s(x[1]);
  } catch (const error& e) {
    EXPECT_EQ(e.argument(), argument) << e.what();
    EXPECT_NE(std::string(e.what()).find(cell), std::string::npos) << e.what();
  }
  EXPECT_EQ(s(Real(0.5)), before);
}
TEST(spline_numbers, coefficients_out_of_range_are_refused) {
  const maker<float> natural_f = [](auto& x, auto& y) { return basic_spline<float>::natural(x, y); };
  const maker<double> natural = [](auto&x, auto&y) { return spline::natural(x, y); },
                      linear = [](auto&x, auto&y) { return spline::linear(x, y); },
                      akima = [](auto&x, auto&y) { return spline::akima(x, y); },
                      subbotin = [](auto&x, auto&y) { return spline::subbotin(x, y); };
  out_of_range<float>(natural_f, {0, 1e-13f, 2e-13f, 3e-13f, 4e-13f}, {1, 2, 4, 9, 8}, "y[3]",
                      "x[2] = 2e-13");
  for (const auto& make : {natural, linear, akima, subbotin}) {
    out_of_range<double>(make, {0, 1e-310, 1, 2, 3}, {5, 6, 5, 5, 5}, "y[1]", "to x[1] = ");
    out_of_range<double>(make, {0, 1, 2, 3, 4}, {0, 1, 1e308, -1e308, 0}, "y[3]",
                         "from x[2] = 2 to x[3] = 3");
  }
  // Short steps and large values that fit are served.
  EXPECT_NEAR(natural_f(std::vector<float>{0, 1e-10f, 2e-10f}, std::vector<float>{0, 1, 2})(1.5e-10f), 1.5,
              1e-6);
  EXPECT_NEAR(linear(std::vector<double>{0, 1}, std::vector<double>{8e307, -8e307})(0.25) / 4e307, 1, 1e-15);
}

TEST(spline_numbers, what_was_moved_from_still_serves) {
  spline a = spline::natural(uniform(0, 4, 5), std::vector<double>{1, 2, 4, 3, 1});
  a.extrapolate(side::left, extrapolation::constant);
  const double inside = a(0.5), outside = a(-1);
  const spline b = std::move(a);
  for (const spline* s : {static_cast<const spline*>(&a), &b}) {  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ((*s)(0.5), inside);
    EXPECT_EQ((*s)(-1), outside);
  }
}

template <class X, class Y>
concept makes_splines = requires(const X& x, const Y& y) {
  spline::natural(x, y);
};
template <class Sites, class Out>
concept evaluates = requires(const spline& s, const Sites& t, Out& out) {
  s(t, out);
};
template <class T>
using array_of = std::vector<T>;
static_assert(makes_splines<array_of<double>, array_of<double>>);
static_assert(makes_splines<array_of<float>, array_of<float>>);
static_assert(makes_splines<uniform_grid, array_of<float>>);
static_assert(!makes_splines<array_of<int>, array_of<int>>);
static_assert(!makes_splines<array_of<int>, array_of<double>>);
static_assert(!makes_splines<array_of<double>, array_of<float>>);
static_assert(!makes_splines<array_of<double>, array_of<long double>>);
static_assert(!makes_splines<array_of<double>, double>);
static_assert(evaluates<array_of<double>, array_of<double>>);
static_assert(!evaluates<array_of<float>, array_of<double>>);

}  // namespace
}  // namespace tmk
