// SPDX-License-Identifier: Apache-2.0
// Calls of a spline: every way to a cell, layouts, what lies outside, threads, and what is refused.
#include <algorithm>
#include <thread>
#include <tmk/random.hpp>
#include <tmk/scopes.hpp>

#include "api/spline/samples.hpp"

namespace tmk {
namespace {

using namespace tests;

// Every way to a cell and to a polynomial against the plain one, from the coefficients; and how large the
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
void all_ways_agree() {
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
          std::vector<Real> alone(nf * sites);
          s(t, alone);
          for (std::size_t i = 0; i < sites; ++i)
            for (std::size_t f = 0; f < nf; ++f) ASSERT_EQ(alone[f * sites + i], shuffled[(i * nf + f) * 3]);
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
TEST(spline, all_ways_agree) {
  all_ways_agree<double>();
  all_ways_agree<float>();
}

TEST(spline, points_keep_their_values) {
  for (const spacing how : spacings) {
    const auto x = points<double>(200, how);
    const auto y = values<double>(x.size(), 6);
    for (const auto& f : families(x)) {
      std::vector<double> r(x.size());
      const auto s = f.make(x, y);
      s(x, r);
      // To the bit, but where the value is that of a cell's right end.
      const double rounding = std::string(f.name) == "quadratic" ? 1e-9 : 1e-12;
      for (std::size_t i = 0; i < x.size(); ++i)
        EXPECT_NEAR(r[i], y[i], i + 1 == x.size() ? rounding : 0) << f.name << i;
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
      {"x", "1", [&] { return spline::linear(one, one); }},
      {"x", "4", [&] { return spline::akima(four, four); }},
      {"x", "2",
       [&] {
         return spline::not_a_knot(std::vector{0.0, 1.0}, std::vector{0.0, 1.0});
       }},
      {"x[2]", "1", [&] { return spline::natural(with(x, 2, 1), y); }},
      {"x[3]", "1.5", [&] { return spline::natural(with(x, 3, 1.5), y); }},
      {"x[1]", "nan", [&] { return spline::natural(with(x, 1, nan), y); }},
      {"x[4]", "inf", [&] { return spline::natural(with(x, 4, infinity), y); }},
      {"x[0]", "-inf", [&] { return spline::natural(with(x, 0, -infinity), y); }},
      {"x.first", "nan", [&] { return spline::natural(uniform(nan, 4, 5), y); }},
      {"x.last", "-4", [&] { return spline::natural(uniform(0, -4, 5), y); }},
      {"x.last", "1", [&] { return spline::natural(uniform(1, 1, 5), y); }},
      {"y[3]", "nan", [&] { return spline::natural(x, with(y, 3, nan)); }},
      {"y[0]", "inf", [&] { return spline::natural(x, with(y, 0, infinity)); }},
      {"y(0, 2)", "inf",
       [&] {
         const auto z = with(y, 2, infinity);
         return spline::natural(x, columns(matrix_view<const double>(z.data(), 5, 2, 1, 0)));
       }},
      {"y", "4", [&] { return spline::natural(x, four); }},
      {"y", "0", [&] { return spline::natural(x, rows(matrix_view<const double>(y.data(), 0, 5))); }},
      {"y", "null", [&] { return spline::natural(x, rows(matrix_view<const double>(nullptr, 1, 5))); }},
      {"y[4]", "2", [&] { return spline::periodic(x, with(y, 4, 2)); }},
      {"first_derivatives", "4", [&] { return spline::hermite(x, y, four); }},
      {"first_derivatives[1]", "nan", [&] { return spline::hermite(x, y, with(y, 1, nan)); }},
      {"left", "nan", [&] { return spline::natural(x, y, boundary::first_derivative(nan)); }},
      {"right", "", [&] { return spline::natural(x, y, boundary::not_a_knot(), boundary::free_end()); }},
      {"left", "", [&] { return spline::quadratic(x, y, boundary::free_end()); }},
      {"left", "", [&] { return spline::subbotin(x, y, boundary::not_a_knot()); }},
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
      {"out", "2", [&] { return two(0.5); }},
      {"out", "2", [&] { return two.integrate(0, 1); }},
      {"orders[1]", "1",
       [&] {
         s.evaluate(four, {1, 1}, out);
       }},
      {"derivative", "-1", [&] { return s(0.5, -1); }},
      {"derivative", "16", [&] { return s(0.5, 16); }},
      {"function", "2", [&] { return two.coefficients(2); }},
      {"left", "99",
       [&] {
         return spline::natural(x, y, {boundary::condition(99), 0});
       }},
      {"right", "-1",
       [&] {
         return spline::akima(x, y, {}, boundary{boundary::condition(-1), 0});
       }},
      {"from", "5", [&] { return spline::step(x, y, side(5)); }},
      {"which", "5", [&] { spline(s).extrapolate(side(5), extrapolation::nan); }},
      {"which", "-1", [&] { spline(s).extrapolate(side(-1), [](double t) { return t; }); }},
      {"function", "null", [&] { spline(s).extrapolate(side::left, std::function<double(double)>()); }},
      {"function", "null", [&] { spline(s).extrapolate(side::left, spline::outside_function()); }},
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

  // The function that the caller wrote, not the one that serves it.
  const std::pair<const char*, std::function<void()>> names[] = {
      {"tmk::spline::not_a_knot: argument x ", [&] { return spline::not_a_knot(one, one); }},
      {"tmk::spline::periodic: argument y[4] ", [&] { return spline::periodic(x, with(y, 4, 2)); }},
      {"tmk::spline::operator(): argument out ", [&] { s(four, out); }},
      {"tmk::spline::operator(): argument derivative ", [&] { return s(0.5, 16); }},
      {"tmk::spline::from_second_derivatives: argument second_derivatives ",
       [&] { return spline::from_second_derivatives(x, y, four); }},
  };
  for (const auto& [begin, call] : names) try {
      call();
      ADD_FAILURE() << "not refused: " << begin;
    } catch (const error& e) {
      EXPECT_EQ(std::string(e.what()).find(begin), 0) << e.what();
    }
}

}  // namespace
}  // namespace tmk
