// SPDX-License-Identifier: Apache-2.0
// The families of splines: polynomials they reproduce, ends as the books have them.
#include <algorithm>

#include "api/spline/samples.hpp"

namespace tmk {
namespace {

using namespace tests;

template <class Real>
void polynomials_are_reproduced() {
  for (const spacing how : spacings)
    for (const std::size_t n : {5u, 6u, 17u, 300u}) {
      const auto x = points<Real>(n, how, static_cast<unsigned>(n));
      for (const auto& f : families(x)) {
        const int degree = how == spacing::uniform ? f.uniform_degree : f.degree;
        const auto y = polynomial_at(degree, x);
        std::vector<abscissae<Real>> partitions{x};
        if (how == spacing::uniform) partitions.emplace_back(uniform(-1, 3, n));
        for (const auto& partition : partitions) {
          const auto s = f.make(partition, y);
          const std::string what = std::string(f.name) + ' ' + std::to_string(n);
          const double beyond = 1.0 / static_cast<double>(n);
          const auto t = random_sites<Real>(100, -1 - beyond, 3 + beyond);
          std::vector<Real> r(t.size() * 3);
          s.evaluate(t, {0, 1, 2}, r);
          const double sharpest = how == spacing::random ? 1e4 : static_cast<double>(n);
          const double scale = 5;  // of the polynomials between the ends
          for (std::size_t i = 0; i < t.size(); ++i) {
            expect_near<Real>(r[3 * i], polynomial(degree, t[i]), scale, what);
            if (std::is_same_v<Real, float> && n > 17) continue;
            expect_near<Real>(r[3 * i + 1], polynomial(degree, t[i], 1), scale * sharpest, what);
            if (s.coefficients().size() >= 3 * (n - 1) && n < 20)
              expect_near<Real>(r[3 * i + 2], polynomial(degree, t[i], 2), scale * sharpest * sharpest, what);
          }
          double integral = 0;  // by three points of Gauss
          for (const auto& [node, weight] : {std::pair(-std::sqrt(0.6), 5.0 / 9), std::pair(0.0, 8.0 / 9),
                                             std::pair(std::sqrt(0.6), 5.0 / 9)})
            integral += 1.8 * weight * polynomial(degree, 1.1 + 1.8 * node);
          expect_near<Real>(s.integrate(Real(-0.7), Real(2.9)), integral, scale, what);
        }
      }
    }
}
TEST(spline, polynomials_are_reproduced) {
  polynomials_are_reproduced<double>();
  polynomials_are_reproduced<float>();
}

TEST(spline, few_points) {
  const std::vector<double> x2{-1, 3}, x3{-1, 0, 3};
  const auto cubic = [](const std::vector<double>& x) { return polynomial_at(3, x); };
  const auto slopes = polynomial_at(3, x2, 1), bends = polynomial_at(3, x2, 2),
             slopes3 = polynomial_at(3, x3, 1), bends3 = polynomial_at(3, x3, 2);
  const auto parabola = polynomial_at(2, x3);
  struct row {
    spline s;
    int degree;
  };
  const row rows[] = {
      {spline::hermite(x2, cubic(x2), slopes), 3},
      {spline::hermite(x3, cubic(x3), slopes3), 3},
      {spline::from_second_derivatives(x2, cubic(x2), bends), 3},
      {spline::from_second_derivatives(x3, cubic(x3), bends3), 3},
      {spline::not_a_knot(x3, parabola), 2},
      {spline::not_a_knot(uniform(-1, 3, 3), polynomial_at(2, std::vector<double>{-1, 1, 3})), 2},
      {spline::quadratic(x3, parabola), 2},
      {spline::subbotin(x3, parabola), 2},
      {spline::natural(x2, polynomial_at(1, x2)), 1},
      {spline::quadratic(x2, polynomial_at(1, x2)), 1},
  };
  for (const row& r : rows)
    for (const double t : {-1.5, -1.0, -0.2, 0.0, 1.0, 2.9, 3.0, 4.0})
      EXPECT_NEAR(r.s(t), polynomial(r.degree, t), 1e-12) << &r - rows << ' ' << t;
}

// A grid gives the same spline as its points, with every condition.
TEST(spline, ends_are_the_books) {
  const std::size_t n = 12;
  const boundary conditions[] = {{},
                                 boundary::free_end(),
                                 boundary::first_derivative(-1.5),
                                 boundary::second_derivative(2.5),
                                 boundary::not_a_knot(),
                                 boundary::periodic()};
  using make =
      std::function<spline(const abscissae<double>&, const function_set<double>&, boundary, boundary)>;
  const std::pair<const char*, make> makers[] = {
      {"natural", [](auto& x, auto& y, boundary l, boundary r) { return spline::natural(x, y, l, r); }},
      {"bessel", [](auto& x, auto& y, boundary l, boundary r) { return spline::bessel(x, y, l, r); }},
      {"akima", [](auto& x, auto& y, boundary l, boundary r) { return spline::akima(x, y, l, r); }},
      {"hyman", [](auto& x, auto& y, boundary l, boundary r) { return spline::hyman(x, y, l, r); }},
      {"subbotin", [](auto& x, auto& y, boundary l, boundary r) { return spline::subbotin(x, y, l, r); }},
  };
  for (const auto& [name, make] : makers)
    for (const boundary& l : conditions)
      for (const boundary& r : conditions)
        for (const spacing how : spacings) {
          using condition = boundary::condition;
          const auto whole = [](const boundary& b) {
            return b.what == condition::not_a_knot || b.what == condition::periodic;
          };
          if ((whole(l) || whole(r)) && (l.what != r.what || std::string(name) == "subbotin")) continue;
          const auto x = points<double>(n, how);
          auto y = values<double>(n, 8);
          if (l.what == condition::periodic) y.back() = y.front();
          const auto s = make(x, y, l, r);
          const std::string what = std::string(name) + ' ' + std::to_string(&l - conditions) + ' ' +
                                   std::to_string(&r - conditions);
          for (const auto& [b, t] : {std::pair(l, -1.0), std::pair(r, 3.0)}) {
            if (b.what != condition::first && b.what != condition::second) continue;
            EXPECT_NEAR(s(t, b.what == condition::first ? 1 : 2), b.value, 1e-9) << what;
          }
          if (l.what == condition::not_a_knot) {
            const auto c = s.coefficients();
            const auto cubic = [&](std::size_t i, double t) {
              const double d = t - x[i], *k = &c[4 * i];
              return k[0] + d * (k[1] + d * (k[2] + d * k[3]));
            };
            EXPECT_NEAR(cubic(0, x[2]), y[2], 1e-11) << what;
            EXPECT_NEAR(cubic(n - 2, x[n - 3]), y[n - 3], 1e-11) << what;
          }
          if (l.what == condition::periodic) {
            EXPECT_NEAR(s(-1, 1), s(3, 1), 1e-10) << what;
            EXPECT_TRUE(std::string(name) != "natural" || std::abs(s(-1, 2) - s(3, 2)) < 1e-9);
            // The same function begun elsewhere.
            std::vector<double> x2, y2;
            for (std::size_t i = 5; i < n + 4; ++i) {
              x2.push_back(i < n - 1 ? x[i] : x[i - n + 1] + 4);
              y2.push_back(y[i % (n - 1)]);
            }
            x2.push_back(x[5] + 4), y2.push_back(y[5]);
            const auto moved = make(x2, y2, l, r);
            for (const double t : {x[5] + 0.01, 2.9}) EXPECT_NEAR(s(t), moved(t), 1e-12) << what;
            for (const double t : {-0.99, x[5] - 0.01}) EXPECT_NEAR(s(t), moved(t + 4), 1e-12) << what;
          }
          if (how == spacing::uniform) {
            const auto u = make(uniform(-1, 3, n), y, l, r);
            for (const double t : random_sites<double>(50, -1, 3))
              EXPECT_NEAR(u(t), s(t), 1e-12) << what << ' ' << t;
          }
        }
}

TEST(spline, usual_ends) {
  const std::vector<double> x{0, 1, 3, 4, 7, 9}, y{2, 3, 4, 2, 2, 9};
  const double d0 = 1, d1 = 0.5;
  const double parabola = d0 + (d0 - d1) / 3;
  EXPECT_NEAR(spline::bessel(x, y)(0, 1), parabola, 1e-15);
  EXPECT_NEAR(spline::bessel(x, y)(9, 1), 3.5 + 3.5 * 2 / 5, 1e-14);
  EXPECT_NEAR(spline::akima(x, y)(0, 1), (3 * d0 - d1) / 2, 1e-15);
  EXPECT_NEAR(spline::hyman(x, y)(0, 1), parabola, 1e-15);
  EXPECT_NEAR(spline::subbotin(x, y)(0, 1), parabola, 1e-14);
  // A parabola's slope that falls at a rising end, or rises too steeply, is cut.
  EXPECT_EQ(spline::hyman(x, std::vector<double>{0, 1, 20, 3, 4, 5})(0, 1), 0);
  EXPECT_NEAR(spline::hyman(uniform(0, 3, 4), std::vector<double>{0, 1, -9, 3})(0, 1), 3, 1e-15);
}

TEST(spline, hyman_is_monotone) {
  std::mt19937 g(11);
  std::vector<double> y(60);
  double sum = 0;
  for (double& v : y) v = sum += g() % 3 == 0 ? 0.0 : std::exp(static_cast<double>(g() % 12));
  for (const spacing how : spacings) {
    const auto s = spline::hyman(points<double>(y.size(), how), y);
    std::vector<double> r(20'001);
    s(uniform(-1, 3, r.size()), r);
    for (std::size_t i = 1; i < r.size(); ++i) EXPECT_GE(r[i] - r[i - 1], -1e-15 * sum) << i;
  }
}

// The kernels know slopes equal that differ by 1e-10.
TEST(spline, akima_knows_no_scale) {
  const auto x = points<double>(30, spacing::random);
  const auto y = values<double>(60, 12);
  std::vector<double> tiny(y);
  for (std::size_t i = 0; i < 30; ++i) tiny[i] = std::ldexp(y[i], -200), tiny[30 + i] = y[30 + i];
  const auto s = spline::akima(x, rows(matrix_view<const double>(y.data(), 2, 30))),
             t = spline::akima(x, rows(matrix_view<const double>(tiny.data(), 2, 30)));
  for (std::size_t i = 0; i < 4 * 29; ++i) {
    EXPECT_EQ(t.coefficients(0)[i], std::ldexp(s.coefficients(0)[i], -200));
    EXPECT_EQ(t.coefficients(1)[i], s.coefficients(1)[i]);
  }
}

}  // namespace
}  // namespace tmk
