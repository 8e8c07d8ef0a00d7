// SPDX-License-Identifier: Apache-2.0
// Splines in one dimension through points of one or many functions.
//
//   auto s = tmk::spline::natural(x, y);               x, y: vectors or spans of double or float
//   s(sites, out);  s(0.5);                            values; at one site
//   s.evaluate(sites, tmk::derivatives{0, 1, 2}, out, tmk::layout::site_derivative);
//   s.integrate(lo, hi, out);  s.cells(sites, numbers);  s.coefficients();
//   auto m = tmk::spline::akima(x, tmk::rows(Y));      many functions over the same x
//   auto u = tmk::spline::natural(tmk::uniform(0, 10, n), y, tmk::boundary::first_derivative(0));
//   s.extrapolate(tmk::side::left, tmk::extrapolation::constant);
//
// A spline owns what it needs; x and y may be freed. It never changes but by extrapolate: copies share what
// they hold, a move is a copy, and all const members may run in several threads at once. Inside a
// parallel_scope, long calls use its threads.
//
// x and y are checked at construction: x finite and strictly ascending, y finite, sizes that match, as many
// points as the family needs, all coefficients finite. Calls check their sizes alone. A refused call throws
// tmk::error naming argument and value and writes nothing.
#pragma once

#include <tmk/detail/spline_arguments.hpp>

namespace tmk {

/// What holds at an end of the partition.
struct boundary {
  enum class condition { usual, first, second, not_a_knot, periodic };

  condition what = condition::usual;
  double value = 0;

  /// The first derivative, or the second, has this value there.
  static constexpr boundary first_derivative(double value) { return {condition::first, value}; }
  static constexpr boundary second_derivative(double value) { return {condition::second, value}; }
  /// The second derivative is zero.
  static constexpr boundary free_end() { return {condition::second, 0}; }
  /// The outer cell's polynomial passes through the third point, too; so where the second derivative has no
  /// jump, the outer two cells have one polynomial. Holds for both ends or none.
  static constexpr boundary not_a_knot() { return {condition::not_a_knot, 0}; }
  /// The spline continues at the other end. Holds for both ends or none; the first value equals the last.
  static constexpr boundary periodic() { return {condition::periodic, 0}; }
};

enum class side { left, right };

/// What holds outside the partition, t being a site there and e the nearest end.
enum class extrapolation {
  polynomial,  ///< the outermost polynomial, continued
  constant,    ///< the value at e
  linear,      ///< the tangent at e
  periodic,    ///< the value in the partition whole periods away
  nan,         ///< not a number
};

/// Orders of derivatives, ascending, from 0 (the value) to 15: {0, 1, 2}. Throws for others.
class derivatives {
 public:
  derivatives(std::initializer_list<int> orders);

  std::span<const std::int32_t> orders() const { return {orders_, count_}; }

 private:
  std::int32_t orders_[16] = {};
  std::size_t count_ = 0;
};

/// The order of results, slowest index first. The last two are for a spline of one function.
enum class result_order {
  function_site_derivative,
  function_derivative_site,
  site_function_derivative,
  site_derivative_function,
  site_derivative,
  derivative_site,
};
namespace layout {
using enum result_order;
}

namespace detail {
// Throws for a value that is not a side.
family step_family(side from);
}  // namespace detail

/// The families, for double and float as y is. `x` is an array, or tmk::uniform(first, last, n); `y` is an
/// array, or tmk::rows(Y) or tmk::columns(Y) of a matrix_view, a function in each row or column. An end
/// without a condition takes the family's usual one; a right end that is not named takes the left's.
class spline_families {
  template <class Y>
  using x_of = const abscissae<detail::element_of<Y>>&;
  template <class Y>
  using result = basic_spline<detail::element_of<Y>>;
  template <class Y>
  using like = const function_set<detail::element_of<Y>>&;

 public:
  /// Straight lines between points. 2 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> linear(x_of<Y> x, const Y& y) {
    return {detail::family::linear, x, y, {}};
  }

  /// The value of the nearest point to the left (or right) of a site; at a point its own. 2 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> step(x_of<Y> x, const Y& y, side from = side::left) {
    return {detail::step_family(from), x, y, {}};
  }

  /// Parabolas with a continuous slope, knots at the points, given the slope at the left end: that of the
  /// parabola through the first three points unless given. 2 points; `left` may be a first derivative.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> quadratic(x_of<Y> x, const Y& y, boundary left = {}) {
    return {detail::family::quadratic, x, y, {.left = left}};
  }

  /// Parabolas with a continuous slope, knots midway between the points (Subbotin 1967). The usual ends have
  /// the slope of the parabola through the outer three points. 3 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> subbotin(x_of<Y> x, const Y& y, boundary left = {},
                                          std::optional<boundary> right = {}) {
    return {detail::family::subbotin, x, y, {.left = left, .right = right.value_or(left)}};
  }

  /// The cubic spline, twice continuously differentiable; free ends unless given others. 2 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> natural(x_of<Y> x, const Y& y, boundary left = {},
                                         std::optional<boundary> right = {}) {
    return {detail::family::natural, x, y, {.left = left, .right = right.value_or(left)}};
  }

  /// The cubic spline without a knot at the second and last but one points. 3 points, and then a parabola.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> not_a_knot(x_of<Y> x, const Y& y) {
    return {
        detail::family::not_a_knot, x, y, {.left = boundary::not_a_knot(), .right = boundary::not_a_knot()}};
  }

  /// The cubic spline whose first two derivatives continue at the other end. 3 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> periodic(x_of<Y> x, const Y& y) {
    return {detail::family::periodic, x, y, {.left = boundary::periodic(), .right = boundary::periodic()}};
  }

  /// Cubics of the first derivatives given at all points, or of the second; as y. 2 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> hermite(x_of<Y> x, const Y& y, like<Y> first_derivatives) {
    return {detail::family::hermite, x, y, {.given = &first_derivatives}};
  }
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> from_second_derivatives(x_of<Y> x, const Y& y, like<Y> second_derivatives) {
    return {detail::family::second_derivatives, x, y, {.given = &second_derivatives}};
  }

  /// Each slope is that of the parabola through a point and its neighbours (Bessel). 4 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> bessel(x_of<Y> x, const Y& y, boundary left = {},
                                        std::optional<boundary> right = {}) {
    return {detail::family::bessel, x, y, {.left = left, .right = right.value_or(left)}};
  }

  /// Slopes by Akima (1970), without overshoot next to straight parts: each a mean of its two differences,
  /// each weighted by how straight its side is; the plain mean where both sides are straight within rounding.
  /// 5 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> akima(x_of<Y> x, const Y& y, boundary left = {},
                                       std::optional<boundary> right = {}) {
    return {detail::family::akima, x, y, {.left = left, .right = right.value_or(left)}};
  }

  /// Bessel's slopes, limited so that the spline is monotone wherever the points are (Hyman 1983), at usual
  /// ends as well. 4 points.
  template <detail::array_of_double_or_float Y>
  [[nodiscard]] static result<Y> hyman(x_of<Y> x, const Y& y, boundary left = {},
                                       std::optional<boundary> right = {}) {
    return {detail::family::hyman, x, y, {.left = left, .right = right.value_or(left)}};
  }
};

/// The numbers of points above are the least. Sites may be any numbers: a NaN gives NaN.
template <class Real>
class basic_spline : public spline_families {
 public:
  /// Of a function: values, as (t, 0), or derivatives at a site t outside; called in the evaluating thread.
  using outside_function = std::function<Real(Real site, std::size_t function, int derivative)>;

  // Copies share the core, and a move is a copy: what was moved from is still the spline that it was.
  basic_spline(const basic_spline&) = default;
  basic_spline& operator=(const basic_spline&) = default;
  ~basic_spline() = default;

  [[nodiscard]] std::size_t functions() const;
  [[nodiscard]] std::size_t points() const;
  [[nodiscard]] Real first() const;  ///< ends of the partition
  [[nodiscard]] Real last() const;

  /// Value or derivative at one site, for a spline of one function.
  [[nodiscard]] Real operator()(Real site, int derivative = 0) const;

  /// Values at sites, an array or tmk::uniform(first, last, n): function by function. out has
  /// functions() * sites elements. Ascending sites are recognised, and are the fastest.
  void operator()(const abscissae<Real>& sites, std::span<Real> out) const;

  /// Values and derivatives; out has functions() * sites * orders elements.
  void evaluate(const abscissae<Real>& sites, const derivatives& orders, std::span<Real> out,
                result_order order = layout::function_site_derivative) const;

  /// Integral from lo to hi, which may be the lower, for a spline of one function.
  [[nodiscard]] Real integrate(Real lo, Real hi) const;

  /// Integrals between pairs of limits: function by function. out has functions() * pairs elements.
  void integrate(std::span<const Real> lo, std::span<const Real> hi, std::span<Real> out) const;

  /// 0 for a site below x[0], i for x[i-1] <= site < x[i], points() - 1 at x[points() - 1], points() above,
  /// and -1 for a NaN.
  void cells(const abscissae<Real>& sites, std::span<std::int32_t> out) const;
  void cells(const abscissae<Real>& sites, std::span<std::int64_t> out) const;

  /// The polynomials, function by function and cell by cell: coefficients of (t - x[i])^0, (t - x[i])^1 ...
  /// of cell i, from x[i] to x[i+1]. A Subbotin spline has one around each point; a step function has none.
  [[nodiscard]] std::span<const Real> coefficients() const;
  [[nodiscard]] std::span<const Real> coefficients(std::size_t function) const;

  /// What holds outside the partition at one side, in evaluations and in integrals. Returns *this.
  basic_spline& extrapolate(side which, extrapolation how);

  /// By a function of (site), or of (site, function, derivative). Derivative -1 requests the integral from
  /// the end of the partition to the site. A function of the site alone gives values, and NaN for the rest.
  template <class Function>
  requires std::invocable<Function&, Real, std::size_t, int> || std::invocable<Function&, Real> basic_spline&
  extrapolate(side which, Function function) {
    // A std::function may be empty.
    if constexpr (requires { function.target_type(); })
      if (!function) return extrapolate_by(which, nullptr);
    if constexpr (std::invocable<Function&, Real, std::size_t, int>)
      return extrapolate_by(which, std::move(function));
    else
      return extrapolate_by(which, [f = std::move(function)](Real t, std::size_t, int derivative) mutable {
        return derivative == 0 ? static_cast<Real>(f(t)) : std::numeric_limits<Real>::quiet_NaN();
      });
  }

 private:
  friend class spline_families;
  struct details {
    boundary left = {}, right = {};
    const function_set<Real>* given = nullptr;
  };
  basic_spline(detail::family kind, const abscissae<Real>& x, const function_set<Real>& y,
               const details& more);
  basic_spline& extrapolate_by(side which, outside_function function);

  std::shared_ptr<const detail::spline_core<Real>> core_;
  std::array<detail::outside_rule<Real>, 2> outside_;
};

using spline = basic_spline<double>;

extern template class basic_spline<double>;
extern template class basic_spline<float>;

}  // namespace tmk
