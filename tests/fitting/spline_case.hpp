// SPDX-License-Identifier: Apache-2.0
// Splines with random coefficients over random functions, which no construction has touched, and what they
// are in extended precision.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <type_traits>
#include <vector>

#include "tmk/abi/df.h"

namespace tmk::tests {

template <class Real>
struct df {
  static constexpr bool wide = sizeof(Real) == 8;
  template <auto Double, auto Single>
  static constexpr auto pick = [] {
    if constexpr (wide)
      return Double;
    else
      return Single;
  }();
  static constexpr auto new_task = pick<tmk_df_kernel_dNewTask1D, tmk_df_kernel_sNewTask1D>;
  static constexpr auto edit_spline = pick<tmk_df_kernel_dEditPPSpline1D, tmk_df_kernel_sEditPPSpline1D>;
  static constexpr auto interpolate = pick<tmk_df_kernel_dDFInterpolate1D, tmk_df_kernel_sDFInterpolate1D>;
  static constexpr auto integrate = pick<tmk_df_kernel_dDFIntegrate1D, tmk_df_kernel_sDFIntegrate1D>;
  using hook = std::conditional_t<wide, DFdHook, DFsHook>;
  using search_hook = std::conditional_t<wide, DFdSearchHook, DFsSearchHook>;
  using integration_hook = std::conditional_t<wide, DFdIntegrationHook, DFsIntegrationHook>;
};

struct spline_form {
  int64_t order, type;
  bool subbotin() const { return order == 3 && type == DF_TYPE_SUBBOTIN; }
  bool reads_y() const { return order == 0; }
};
inline constexpr spline_form linear{2, 0}, quadratic{3, 0}, cubic{4, 0}, subbotin{3, DF_TYPE_SUBBOTIN};
inline constexpr spline_form step_left{0, DF_TYPE_STEP_LEFT}, step_right{0, DF_TYPE_STEP_RIGHT};
inline constexpr spline_form look_up{0, DF_TYPE_LOOKUP}, by_caller{7, 0};

template <class Real>
struct spline_case {
  spline_form form;
  bool uniform, columns;
  int64_t nx, ny;
  std::vector<Real> points, x, y, coefficients, knots, ic;
  DFTask* task = nullptr;

  spline_case(spline_form f, bool even, int64_t n, int64_t functions, bool y_columns = false,
              bool wide_ints = false)
      : form(f), uniform(even), columns(y_columns), nx(n), ny(functions), engine_(static_cast<uint32_t>(n)) {
    // Steps that are powers of two make uniform points exact: no site changes its piece by rounding.
    const Real step = Real(0.125);
    for (int64_t i = 0; i < nx; ++i)
      points.push_back(Real(-2) + step * (Real(i) + (uniform ? Real(0) : real(0, Real(0.9)))));
    for (int64_t k = 0; k <= nx; ++k) {
      if (uniform)
        knots.push_back(points[0] + step * (Real(k) - Real(0.5)));
      else
        knots.push_back(k == 0    ? points[0]
                        : k == nx ? points[nx - 1]
                                  : std::midpoint(points[k - 1], points[k]));
    }
    x = uniform ? std::vector{points[0], points[nx - 1]} : points;
    ic = uniform ? std::vector{knots[0], knots[nx]} : knots;
    fill(y, nx * ny);
    fill(coefficients, form.order * nx * ny);
    df<Real>::new_task(&task, nx, x.data(), uniform ? DF_PARTITION_UNIFORM : DF_PARTITION_UNKNOWN, ny,
                       y.data(), columns ? DF_COLUMNS : DF_ROWS, wide_ints ? 1u : 0u);
    const int64_t ic_type = DF_IC_KNOTS | (uniform ? DF_IC_KNOTS_UNIFORM : 0);
    df<Real>::edit_spline(task, form.order, form.type, DF_BC_NONE, nullptr, ic_type, ic.data(),
                          coefficients.data(), DF_ROWS);
  }
  ~spline_case() { tmk_df_kernel_DeleteTask(&task); }
  spline_case(const spline_case&) = delete;
  spline_case& operator=(const spline_case&) = delete;

  Real real(Real low, Real high) { return std::uniform_real_distribution<Real>(low, high)(engine_); }
  // Points, knots, neighbours of both ends, and sites in between and outside.
  std::vector<Real> sites(int64_t n) {
    std::vector<Real> all(points);
    all.insert(all.end(), knots.begin(), knots.end());
    while (static_cast<int64_t>(all.size()) < n) all.push_back(real(points[0] - 1, points[nx - 1] + 1));
    std::shuffle(all.begin(), all.end(), engine_);
    all.resize(static_cast<size_t>(n));
    return all;
  }

  int64_t cell(long double t) const {
    if (t == points[nx - 1]) return nx - 1;
    return std::upper_bound(points.begin(), points.end(), t) - points.begin();
  }
  int64_t pieces() const { return form.subbotin() ? nx : nx - 1; }
  int64_t piece(long double t) const {
    if (!form.subbotin()) return std::clamp<int64_t>(cell(t) - 1, 0, nx - 2);
    return std::upper_bound(knots.begin() + 1, knots.end() - 1, t) - knots.begin() - 1;
  }
  Real value_at_point(int64_t function, int64_t i) const {
    return columns ? y[i * ny + function] : y[function * nx + i];
  }
  // The derivative of this order, as a plain sum.
  long double exact(int64_t function, long double t, int64_t derivative) const {
    if (form.reads_y()) {
      if (derivative > 0) return 0;
      const int64_t c = cell(t);
      const auto at = static_cast<int64_t>(std::find(points.begin(), points.end(), t) - points.begin());
      if (at < nx) return value_at_point(function, at);
      const int64_t p = form.type == DF_TYPE_STEP_LEFT ? c : c - 1;
      return value_at_point(function, std::clamp<int64_t>(p, 0, nx - 1));
    }
    const int64_t k = piece(t);
    const Real* c = &coefficients[(function * pieces() + k) * form.order];
    long double d = t - points[k], sum = 0, power = 1;
    for (int64_t m = derivative; m < form.order; ++m, power *= d) {
      long double factor = 1;
      for (int64_t j = 0; j < derivative; ++j) factor *= static_cast<long double>(m - j);
      sum += factor * c[m] * power;
    }
    return sum;
  }
  // Between the ends of pieces two-point quadrature is exact.
  long double exact_integral(int64_t function, long double l, long double r) const {
    if (l > r) return -exact_integral(function, r, l);
    const auto& ends = form.subbotin() ? knots : points;
    const bool inner = !form.reads_y();  // the outer pieces of polynomials extend outwards
    long double sum = 0;
    const auto add = [&](long double a, long double b) {
      const long double half = (b - a) / 2, middle = (a + b) / 2, node = half / std::sqrt(3.0L);
      sum += half * (exact(function, middle - node, 0) + exact(function, middle + node, 0));
    };
    for (size_t i = inner; i + inner < ends.size(); ++i)
      if (ends[i] > l && ends[i] < r) {
        add(l, ends[i]);
        l = ends[i];
      }
    add(l, r);
    return sum;
  }

 private:
  std::mt19937 engine_;
  void fill(std::vector<Real>& v, int64_t n) {
    for (int64_t i = 0; i < n; ++i) v.push_back(real(-1, 1));
  }
};

}  // namespace tmk::tests
