// The checked door to splines: what each family promises, ends and outsides as the books have them, every
// road to a cell, layouts, and what is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <thread>
#include <tmk/random.hpp>
#include <tmk/scopes.hpp>
#include <tmk/spline.hpp>

namespace tmk {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

enum class spacing { uniform, nearly, random };
constexpr spacing spacings[] = {spacing::uniform, spacing::nearly, spacing::random};

// From -1 to 3.
template <class Real>
std::vector<Real> points(std::size_t n, spacing how, unsigned seed = 1) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(0, 1);
  std::vector<Real> x(n);
  const double step = 4.0 / static_cast<double>(n - 1);
  for (std::size_t i = 0; i < n; ++i)
    x[i] =
        static_cast<Real>(static_cast<double>(i) * step - 1 + (how == spacing::nearly ? step * u(g) / 9 : 0));
  if (how == spacing::random) {
    double sum = 0;
    for (Real& v : x) v = static_cast<Real>(sum += std::exp(3 * u(g)));
    for (std::size_t i = n; i-- > 0;) x[i] = static_cast<Real>((x[i] - x[0]) / (sum - x[0]) * 4 - 1);
  }
  x[0] = -1, x[n - 1] = 3;
  return x;
}

template <class Real>
std::vector<Real> values(std::size_t n, unsigned seed) {
  std::mt19937 g(seed);
  std::normal_distribution<double> law;
  std::vector<Real> y(n);
  for (Real& v : y) v = static_cast<Real>(law(g));
  return y;
}

template <class Real>
std::vector<Real> random_sites(std::size_t n, double low, double high, unsigned seed = 3) {
  std::mt19937 g(seed);
  std::uniform_real_distribution<double> u(low, high);
  std::vector<Real> t(n);
  for (Real& v : t) v = static_cast<Real>(u(g));
  return t;
}

// Derivative k of 1 + t - 2 t^2 + t^3 / 2, cut at the degree.
double polynomial(int degree, double t, int k = 0) {
  const double c[] = {1, 1, -2, 0.5};
  double sum = 0;
  for (int m = k; m <= degree; ++m) {
    double term = c[m] * std::pow(t, m - k);
    for (int j = 0; j < k; ++j) term *= m - j;
    sum += term;
  }
  return sum;
}
template <class Real>
std::vector<Real> polynomial_at(int degree, const std::vector<Real>& x, int k = 0) {
  std::vector<Real> y;
  for (const Real t : x) y.push_back(static_cast<Real>(polynomial(degree, t, k)));
  return y;
}

template <class Real>
using maker = std::function<basic_spline<Real>(const abscissae<Real>&, const function_set<Real>&)>;

// With ends of the polynomial's own where the usual ones would not be.
template <class Real>
struct family_row {
  const char* name;
  int degree;          // reproduced on any points
  int uniform_degree;  // and on uniform ones
  maker<Real> make;
};

template <class Real>
std::vector<family_row<Real>> families(const std::vector<Real>& x) {
  using s = basic_spline<Real>;
  using xs = const abscissae<Real>&;
  using ys = const function_set<Real>&;
  const auto first = polynomial_at(3, x, 1), second = polynomial_at(3, x, 2);
  const auto one = [=](int k, double t) {
    return k == 1 ? boundary::first_derivative(polynomial(3, t, 1))
                  : boundary::second_derivative(polynomial(3, t, 2));
  };
  const auto set = [](const std::vector<Real>& d) { return function_set<Real>(d.data(), 1, d.size(), 0, 1); };
  return {
      {"linear", 1, 1, [](xs x, ys y) { return s::linear(x, y); }},
      {"quadratic", 2, 2, [](xs x, ys y) { return s::quadratic(x, y); }},
      {"subbotin", 2, 2, [](xs x, ys y) { return s::subbotin(x, y); }},
      {"natural", 1, 1, [](xs x, ys y) { return s::natural(x, y); }},
      {"natural 1 2", 3, 3, [=](xs x, ys y) { return s::natural(x, y, one(1, -1), one(2, 3)); }},
      {"natural 2 1", 3, 3, [=](xs x, ys y) { return s::natural(x, y, one(2, -1), one(1, 3)); }},
      {"not_a_knot", 3, 3, [](xs x, ys y) { return s::not_a_knot(x, y); }},
      {"hermite", 3, 3, [=](xs x, ys y) { return s::hermite(x, y, set(first)); }},
      {"second", 3, 3, [=](xs x, ys y) { return s::from_second_derivatives(x, y, set(second)); }},
      {"bessel", 2, 2, [](xs x, ys y) { return s::bessel(x, y); }},
      {"akima", 1, 2, [](xs x, ys y) { return s::akima(x, y); }},
      {"hyman", 1, 1, [](xs x, ys y) { return s::hyman(x, y); }},
  };
}

template <class Real>
void expect_near(Real value, double want, double scale, const std::string& what) {
  EXPECT_NEAR(value, want, (std::is_same_v<Real, double> ? 1e-12 : 3e-5) * scale) << what;
}

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
          // Quadratics of this family pass an error on from cell to cell.
          const double scale = std::string(f.name) == "quadratic" ? 1e4 : 50;
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

// Every road to a cell and to a polynomial against the plain one, from the coefficients; and how large the
// terms are that make the value.
struct plain_value {
  double value, size;
};
template <class Real>
plain_value plainly(const basic_spline<Real>& s, const std::vector<Real>& x, std::size_t f, Real t, int k) {
  const auto c = s.coefficients(f);
  const std::size_t cells = x.size() - 1, order = c.size() / cells;
  const auto above = std::upper_bound(x.begin() + 1, x.end() - 1, t);
  const auto i = static_cast<std::size_t>(above - x.begin()) - 1;
  const long double d = static_cast<long double>(t) - x[i];
  long double sum = 0, size = 0;
  for (std::size_t m = order; m-- > static_cast<std::size_t>(k);) {
    long double factor = 1;
    for (int j = 0; j < k; ++j) factor *= static_cast<long double>(m) - j;
    sum = sum * d + factor * c[i * order + m];
    size = size * std::abs(d) + factor * std::abs(c[i * order + m]);
  }
  return {static_cast<double>(sum), static_cast<double>(size)};
}

template <class Real>
void all_roads_agree() {
  const double unit = std::numeric_limits<Real>::epsilon();
  for (const spacing how : spacings)
    for (const std::size_t n : {5u, 40u, 3000u}) {
      const auto x = points<Real>(n, how);
      const std::size_t nf = 3;
      const auto y = values<Real>(n * nf, 5);
      const matrix_view<const Real> Y(y.data(), nf, n);
      for (const auto& s : {basic_spline<Real>::akima(x, rows(Y)), basic_spline<Real>::linear(x, rows(Y))})
        for (const std::size_t sites : {1u, 10u, 1000u, 20000u}) {
          auto t = random_sites<Real>(sites, -1.1, 3.1, static_cast<unsigned>(sites));
          if (sites > 10) std::copy_n(x.begin(), std::min<std::size_t>(n, 99), t.begin());
          std::vector<Real> shuffled(nf * sites * 3), sorted(shuffled.size());
          std::vector<std::int32_t> cells(sites);
          s.evaluate(t, {0, 1, 2}, shuffled, layout::site_function_derivative);
          std::vector<std::int64_t> wide_cells(sites);
          s.cells(t, cells);
          s.cells(t, wide_cells);
          ASSERT_TRUE(std::equal(cells.begin(), cells.end(), wide_cells.begin()));
          for (std::size_t i = 0; i < sites; ++i) {
            const auto above = std::upper_bound(x.begin(), x.end(), t[i]) - x.begin();
            ASSERT_EQ(cells[i], t[i] == x.back() ? above - 1 : above) << t[i];
            for (std::size_t f = 0; f < nf; ++f)
              for (int k = 0; k < 3; ++k) {
                const plain_value want = plainly(s, x, f, t[i], k);
                ASSERT_NEAR(shuffled[(i * nf + f) * 3 + static_cast<std::size_t>(k)], want.value,
                            8 * unit * want.size)
                    << n << ' ' << t[i];
              }
          }
          // Values alone, for which evenly spaced points may be taken as a grid.
          std::vector<Real> alone(nf * sites);
          s(t, alone);
          for (std::size_t i = 0; i < sites; ++i)
            for (std::size_t f = 0; f < nf; ++f) {
              const plain_value want = plainly(s, x, f, t[i], 0);
              ASSERT_NEAR(alone[f * sites + i], want.value,
                          4 * unit * static_cast<double>(n) * (1 + want.size));
            }
          std::vector<std::size_t> order(sites);
          for (std::size_t i = 0; i < sites; ++i) order[i] = i;
          std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return t[a] < t[b]; });
          std::vector<Real> ascending;
          for (const std::size_t i : order) ascending.push_back(t[i]);
          s.evaluate(ascending, {0, 1, 2}, sorted, layout::site_function_derivative);
          for (std::size_t i = 0; i < sites; ++i)
            ASSERT_TRUE(
                std::equal(&sorted[i * nf * 3], &sorted[i * nf * 3] + nf * 3, &shuffled[order[i] * nf * 3]));
        }
    }
}
TEST(spline, all_roads_agree) {
  all_roads_agree<double>();
  all_roads_agree<float>();
}

TEST(spline, points_keep_their_values) {
  for (const spacing how : spacings) {
    const auto x = points<double>(200, how);
    const auto y = values<double>(x.size(), 6);
    for (const auto& f : families(x)) {
      std::vector<double> r(x.size());
      const auto s = f.make(x, y);
      s(x, r);
      // To the bit, but where a grid stands in for the points or the value is that of a cell's right end.
      const double rounding = std::string(f.name) == "quadratic" ? 1e-9 : 1e-12;
      for (std::size_t i = 0; i < x.size(); ++i)
        EXPECT_NEAR(r[i], y[i], how == spacing::uniform || i + 1 == x.size() ? rounding : 0) << f.name << i;
      EXPECT_EQ(s(x[7]), r[7]);
    }
    for (const side from : {side::left, side::right}) {
      const auto s = spline::step(x, y, from);
      std::vector<double> r(x.size());
      s(x, r);
      EXPECT_EQ(r, y);
      EXPECT_EQ(s((x[4] + x[5]) / 2), from == side::left ? y[4] : y[5]);
      EXPECT_EQ(s(-2), y.front());
      EXPECT_EQ(s(4), y.back());
      EXPECT_NEAR(
          s.integrate(x[4], x[6]),
          (x[5] - x[4]) * y[from == side::left ? 4 : 5] + (x[6] - x[5]) * y[from == side::left ? 5 : 6],
          1e-13);
    }
  }
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

TEST(spline, many_functions_are_many_splines) {
  const std::size_t n = 50, nf = 7, m = 100;
  const auto x = points<double>(n, spacing::random);
  const auto block = values<double>(n * nf, 13);
  std::vector<double> across(n * nf), wide(2 * n * nf);
  for (std::size_t f = 0; f < nf; ++f)
    for (std::size_t i = 0; i < n; ++i) across[i * nf + f] = wide[2 * (f * n + n - 1 - i)] = block[f * n + i];
  const auto step = static_cast<std::ptrdiff_t>(2 * n);
  const function_set<double> sets[] = {
      rows(matrix_view<const double>(block.data(), nf, n)),
      columns(matrix_view<const double>(across.data(), n, nf)),
      rows(matrix_view<double>(wide.data() + 2 * n - 2, nf, n, step, -2)),
  };
  const auto t = random_sites<double>(m, -1.2, 3.2);
  for (const auto& f : families(x)) {
    if (f.degree == 3 && std::string(f.name).find("not") == std::string::npos) continue;  // one set of ends
    for (const auto& set : sets) {
      auto s = f.make(x, set);
      s.extrapolate(side::left, extrapolation::linear);
      std::vector<double> all(nf * m * 2), other(all.size()), integrals(nf * (m - 1));
      s.evaluate(t, {0, 2}, all);
      s.integrate(std::span(t).first(m - 1), std::span(t).last(m - 1), integrals);
      for (std::size_t k = 0; k < nf; ++k) {
        auto single = f.make(x, std::span(block).subspan(k * n, n));
        single.extrapolate(side::left, extrapolation::linear);
        for (std::size_t i = 0; i + 1 < m; ++i)
          EXPECT_NEAR(integrals[k * (m - 1) + i], single.integrate(t[i], t[i + 1]), 1e-10) << f.name;
        for (std::size_t i = 0; i < m; ++i)
          for (const int d : {0, 1})
            EXPECT_NEAR(all[(k * m + i) * 2 + static_cast<std::size_t>(d)], single(t[i], 2 * d),
                        1e-9 * (1 + std::abs(single(t[i], 2 * d))))
                << f.name << ' ' << k << ' ' << i;
      }
      const std::pair<result_order, std::array<std::size_t, 3>> orders[] = {
          {layout::function_derivative_site, {2 * m, 1, m}},
          {layout::site_function_derivative, {2, 2 * nf, 1}},
          {layout::site_derivative_function, {1, 2 * nf, nf}},
      };
      for (const auto& [order, stride] : orders) {
        s.evaluate(t, {0, 2}, other, order);
        for (std::size_t k = 0; k < nf; ++k)
          for (std::size_t i = 0; i < m; ++i)
            for (std::size_t d = 0; d < 2; ++d)
              EXPECT_EQ(other[k * stride[0] + i * stride[1] + d * stride[2]], all[(k * m + i) * 2 + d]);
      }
    }
  }
}

// Outside by the definitions; integrals against Simpson's rule over the values.
TEST(spline, outside) {
  const auto x = points<double>(9, spacing::random);
  const auto y = values<double>(9, 14);
  for (auto s : {spline::natural(x, y), spline::subbotin(x, y), spline::linear(x, y)}) {
    const double e = 3, v = s(e), slope = s(e, 1);
    const auto at = [&](extrapolation how, double t, int k) { return s.extrapolate(side::right, how)(t, k); };
    EXPECT_NEAR(at(extrapolation::constant, 5, 0), v, 1e-13);
    EXPECT_EQ(at(extrapolation::constant, 5, 1), 0);
    EXPECT_NEAR(at(extrapolation::linear, 5, 0), v + 2 * slope, 1e-12);
    EXPECT_NEAR(at(extrapolation::linear, 5, 1), slope, 1e-12);
    EXPECT_EQ(at(extrapolation::linear, 5, 2), 0);
    for (const int k : {0, 1}) EXPECT_NEAR(at(extrapolation::periodic, 3.5 + 8, k), s(-0.5, k), 1e-12);
    EXPECT_TRUE(std::isnan(at(extrapolation::nan, 3.001, 2)));
    s.extrapolate(side::right, [](double t) { return 2 * t; });
    EXPECT_EQ(s(4), 8);
    EXPECT_TRUE(std::isnan(s(4, 1)));
    EXPECT_TRUE(std::isnan(s.integrate(0, 4)));
    EXPECT_FALSE(std::isnan(s(-2)));

    const auto exponential = [](double t, std::size_t f, int k) {
      return k == -1 ? std::exp(t) - std::exp(t < 0 ? -1 : 3) : std::exp(t) + static_cast<double>(f);
    };
    const auto simpson = [&](double lo, double hi) {
      const std::size_t n = 40'000;
      std::vector<double> r(n + 1);
      s(uniform(lo, hi, n + 1), r);
      double sum = r.front() + r.back();
      for (std::size_t i = 1; i < n; ++i) sum += (i % 2 == 0 ? 2 : 4) * r[i];
      return sum * (hi - lo) / (3.0 * n);
    };
    for (int rule = 0; rule < 5; ++rule) {
      for (const side which : {side::left, side::right})
        if (rule == 4)
          s.extrapolate(which, exponential);
        else
          s.extrapolate(which, static_cast<extrapolation>(rule));
      for (const auto& [lo, hi] :
           {std::pair(-8.0, 9.5), std::pair(3.5, 6.0), std::pair(-6.0, -1.5), std::pair(-2.5, 0.5)}) {
        const double want = simpson(lo, hi);
        EXPECT_NEAR(s.integrate(lo, hi), want, 3e-3 * (1 + std::abs(want))) << rule << ' ' << lo;
        EXPECT_NEAR(s.integrate(hi, lo), -s.integrate(lo, hi), 1e-12 * (1 + std::abs(want))) << rule;
        EXPECT_NEAR(s.integrate(lo, 1) + s.integrate(1, hi), s.integrate(lo, hi),
                    1e-12 * (1 + std::abs(want)));
      }
    }
  }
}

TEST(spline, sites_that_are_no_numbers) {
  for (const spacing how : spacings) {
    const auto x = points<double>(500, how);
    for (const auto& f : families(x)) {
      auto s = f.make(x, values<double>(x.size(), 15));
      for (const bool constant : {false, true}) {
        if (constant)
          s.extrapolate(side::left, extrapolation::constant)
              .extrapolate(side::right, extrapolation::periodic);
        for (std::size_t n : {3u, 100u}) {
          std::vector<double> t(n, 0.5), r(4 * n);
          t[1] = nan;
          s.evaluate(t, {0, 1, 2, 3}, r);
          for (std::size_t i = 0; i < 4 * n; ++i)
            EXPECT_EQ(std::isnan(r[i]), i / 4 == 1) << f.name << ' ' << i;
          std::vector<std::int32_t> cells(n);
          s.cells(t, cells);
          EXPECT_EQ(cells[1], -1);
          EXPECT_GT(cells[2], 0);
          t[1] = infinity, t[2] = -infinity, t[0] = 1e300;
          s.evaluate(t, {0, 1, 2, 3}, r);
          s.cells(t, cells);
          EXPECT_EQ(cells[0], 500);
          EXPECT_EQ(cells[1], 500);
          EXPECT_EQ(cells[2], 0);
        }
      }
      EXPECT_TRUE(std::isnan(s.integrate(nan, 1)));
      EXPECT_TRUE(std::isnan(s.integrate(0, nan)));
    }
  }
}

TEST(spline, threads_and_copies) {
  const std::size_t n = 2000, nf = 5, m = 50'000;
  const auto x = points<double>(n, spacing::random);
  const auto y = values<double>(n * nf, 16);
  const matrix_view<const double> Y(y.data(), nf, n);
  const auto t = random_sites<double>(m, -1, 3), hi = random_sites<double>(m, -1, 3, 9);
  const auto run = [&](int threads, auto make) {
    const parallel_scope scope(threads);
    const spline s = make();
    std::vector<double> all(s.coefficients().begin(), s.coefficients().end()), r(2 * nf * m), q(nf * m);
    s.evaluate(t, {0, 1}, r, layout::function_derivative_site);
    s.integrate(t, hi, q);
    all.insert(all.end(), r.begin(), r.end());
    all.insert(all.end(), q.begin(), q.end());
    return all;
  };
  const auto natural = [&] { return spline::natural(x, rows(Y)); };
  const auto akima = [&] { return spline::akima(x, rows(Y)); };
  for (const int threads : {2, 3}) {
    EXPECT_EQ(run(threads, akima), run(1, akima));
    EXPECT_EQ(run(threads, natural), run(1, natural));
  }

  spline s = natural();
  spline copy = s;
  copy.extrapolate(side::left, extrapolation::constant);
  std::vector<double> want(nf * m), r[2] = {want, want};
  s(t, want);
  std::thread threads[2];
  for (int k = 0; k < 2; ++k) threads[k] = std::thread([&, k] { (k == 0 ? s : copy)(t, r[k]); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(r[0], want);
  EXPECT_EQ(r[1], want);
  std::vector<double> left(nf), left_of_copy(nf);
  const double below = -2;
  s(std::span(&below, 1), left);
  copy(std::span(&below, 1), left_of_copy);
  EXPECT_NE(left, left_of_copy);
  s = std::move(copy);
  s(std::span(&below, 1), left);
  EXPECT_EQ(left, left_of_copy);
}

// The name `uniform` serves two headers.
TEST(spline, uniform_is_a_grid_and_a_law) {
  stream g(generator::philox4x32x10, 1);
  std::vector<double> v(10);
  uniform(g, v);
  uniform(g, v, {.low = 2, .high = 3});
  EXPECT_TRUE(std::all_of(v.begin(), v.end(), [](double u) { return u >= 2 && u <= 3; }));
  std::vector<double> r(3);
  spline::linear(uniform(0, 1, 2), std::vector<double>{5, 7})(uniform(0, 1, 3), r);
  EXPECT_EQ(r, (std::vector<double>{5, 6, 7}));
}

TEST(spline, refused_calls) {
  const std::vector<double> x{0, 1, 2, 3, 4}, y{1, 2, 4, 3, 1}, four{0, 1, 2, 3}, one{1};
  const auto with = [](std::vector<double> v, std::size_t i, double value) {
    v[i] = value;
    return v;
  };
  const spline s = spline::akima(x, y),
               two = spline::linear(x, rows(matrix_view<const double>(y.data(), 2, 5, 0, 1)));
  std::vector<double> out(10);
  std::vector<std::int32_t> cells(3);
  struct row {
    const char *argument, *value;
    std::function<void()> call;
  };
  const row refused[] = {
      {"x", "1", [&] { spline::linear(one, one); }},
      {"x", "4", [&] { spline::akima(four, four); }},
      {"x", "2",
       [&] {
         spline::not_a_knot(std::vector{0.0, 1.0}, std::vector{0.0, 1.0});
       }},
      {"x[2]", "1", [&] { spline::natural(with(x, 2, 1), y); }},
      {"x[3]", "1.5", [&] { spline::natural(with(x, 3, 1.5), y); }},
      {"x[1]", "nan", [&] { spline::natural(with(x, 1, nan), y); }},
      {"x[4]", "inf", [&] { spline::natural(with(x, 4, infinity), y); }},
      {"x[0]", "-inf", [&] { spline::natural(with(x, 0, -infinity), y); }},
      {"x.first", "nan", [&] { spline::natural(uniform(nan, 4, 5), y); }},
      {"x.last", "-4", [&] { spline::natural(uniform(0, -4, 5), y); }},
      {"x.last", "1", [&] { spline::natural(uniform(1, 1, 5), y); }},
      {"y[3]", "nan", [&] { spline::natural(x, with(y, 3, nan)); }},
      {"y[0]", "inf", [&] { spline::natural(x, with(y, 0, infinity)); }},
      {"y(0, 2)", "inf",
       [&] {
         const auto z = with(y, 2, infinity);
         spline::natural(x, columns(matrix_view<const double>(z.data(), 5, 2, 1, 0)));
       }},
      {"y", "4", [&] { spline::natural(x, four); }},
      {"y", "0", [&] { spline::natural(x, rows(matrix_view<const double>(y.data(), 0, 5))); }},
      {"y", "null", [&] { spline::natural(x, rows(matrix_view<const double>(nullptr, 1, 5))); }},
      {"y[4]", "2", [&] { spline::periodic(x, with(y, 4, 2)); }},
      {"derivatives", "4", [&] { spline::hermite(x, y, four); }},
      {"derivatives[1]", "nan", [&] { spline::hermite(x, y, with(y, 1, nan)); }},
      {"left", "nan", [&] { spline::natural(x, y, boundary::first_derivative(nan)); }},
      {"right", "", [&] { spline::natural(x, y, boundary::not_a_knot(), boundary::free_end()); }},
      {"left", "", [&] { spline::quadratic(x, y, boundary::free_end()); }},
      {"left", "", [&] { spline::subbotin(x, y, boundary::not_a_knot()); }},
      {"out", "10", [&] { s(four, out); }},
      {"out", "10",
       [&] {
         s.evaluate(four, {0, 1}, out);
       }},
      {"out", "null", [&] { s(four, std::span(static_cast<double*>(nullptr), 4)); }},
      {"out", "begins 8 bytes from sites", [&] { s(std::span(out).first(4), std::span(out).subspan(1, 4)); }},
      {"out", "3", [&] { s.cells(four, cells); }},
      {"hi", "1", [&] { s.integrate(four, one, out); }},
      {"order", "2", [&] { two.evaluate(x, {0}, out, layout::site_derivative); }},
      {"order", "2", [&] { static_cast<void>(two(0.5)); }},
      {"out", "2", [&] { static_cast<void>(two.integrate(0, 1)); }},
      {"orders[1]", "1",
       [&] {
         s.evaluate(four, {1, 1}, out);
       }},
      {"orders[0]", "-1", [&] { static_cast<void>(s(0.5, -1)); }},
      {"function", "2", [&] { static_cast<void>(two.coefficients(2)); }},
      {"how", "9", [&] { spline(s).extrapolate(side::left, static_cast<extrapolation>(9)); }},
  };
  for (const row& r : refused) {
    try {
      r.call();
      ADD_FAILURE() << "not refused: " << r.argument << ' ' << r.value;
    } catch (const error& e) {
      EXPECT_EQ(e.argument(), r.argument) << e.what();
      EXPECT_EQ(e.value(), r.value) << e.what();
    }
  }
  EXPECT_EQ(out, std::vector<double>(10));
}

}  // namespace
}  // namespace tmk
