// SPDX-License-Identifier: Apache-2.0
// What the functions of <tmk/spline.hpp> take and keep.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <tmk/error.hpp>
#include <tmk/matrix_view.hpp>
#include <tmk/uniform.hpp>
#include <type_traits>
#include <utility>
#include <vector>

namespace tmk {

namespace detail {
template <class Range, class Real>
concept array_of = std::convertible_to<const Range&, std::span<const Real>>;
// An array, but of other elements.
template <class Range, class Real>
concept array_of_others = std::ranges::contiguous_range<const Range> && !array_of<Range, Real>;
}  // namespace detail

/// Points or sites: an array of the caller's, or a grid in place of one.
template <class Real>
class abscissae {
 public:
  template <detail::array_of<Real> Range>
  abscissae(const Range& elements) : array_(elements), grid_{}, is_grid_(false) {}
  abscissae(const uniform_grid& points) : grid_(points), is_grid_(true) {}
  template <detail::array_of_others<Real> Range>
  abscissae(const Range&) = delete;  // x, y and sites have one type of elements, double or float

  bool is_grid() const { return is_grid_; }
  const uniform_grid& grid() const { return grid_; }
  std::span<const Real> array() const { return array_; }
  std::size_t size() const { return is_grid_ ? grid_.size : array_.size(); }

 private:
  std::span<const Real> array_;
  uniform_grid grid_;
  bool is_grid_;
};

/// Values of functions at the same points, the caller's: function f at point i is
/// data[f function_stride + i point_stride]. An array converts, as one function.
template <class Real>
struct function_set {
  const Real* data;
  std::size_t functions, points;
  std::ptrdiff_t function_stride, point_stride;

  function_set(const Real* values, std::size_t function_count, std::size_t point_count,
               std::ptrdiff_t from_function, std::ptrdiff_t from_point)
      : data(values),
        functions(function_count),
        points(point_count),
        function_stride(from_function),
        point_stride(from_point) {}

  template <detail::array_of<Real> Range>
  function_set(const Range& array)
      : function_set(std::span<const Real>(array).data(), 1, std::span<const Real>(array).size(),
                     static_cast<std::ptrdiff_t>(std::span<const Real>(array).size()), 1) {}
  template <detail::array_of_others<Real> Range>
  function_set(const Range&) = delete;  // y and its derivatives have one type of elements, double or float

  Real operator()(std::size_t f, std::size_t i) const {
    return data[static_cast<std::ptrdiff_t>(f) * function_stride +
                static_cast<std::ptrdiff_t>(i) * point_stride];
  }
};

/// A function in each row of a matrix, or in each column.
template <class T>
function_set<std::remove_const_t<T>> rows(const matrix_view<T>& y) {
  return {y.data(), y.rows(), y.cols(), y.row_stride(), y.col_stride()};
}
template <class T>
function_set<std::remove_const_t<T>> columns(const matrix_view<T>& y) {
  return {y.data(), y.cols(), y.rows(), y.col_stride(), y.row_stride()};
}
inline function_set<double> rows(const matrix& y) {
  return rows(matrix_view<const double>(y.values().data(), y.rows(), y.cols()));
}
inline function_set<double> columns(const matrix& y) {
  return columns(matrix_view<const double>(y.values().data(), y.rows(), y.cols()));
}

enum class extrapolation;

template <class Real>
class basic_spline;

namespace detail {

template <class Y>
struct element {};
template <std::ranges::range Y>
struct element<Y> {
  using type = std::remove_cv_t<std::ranges::range_value_t<Y>>;
};
template <class Real>
struct element<function_set<Real>> {
  using type = Real;
};
template <class Y>
using element_of = typename element<Y>::type;

// What y must be.
template <class Y>
concept array_of_double_or_float = std::same_as < element_of<Y>,
double > || std::same_as<element_of<Y>, float>;

// Programs that were compiled pass these numbers: new families come last.
enum class family {
  linear = 0,
  step_left = 1,
  step_right = 2,
  quadratic = 3,
  subbotin = 4,
  natural = 5,
  hermite = 6,
  second_derivatives = 7,
  bessel = 8,
  akima = 9,
  hyman = 10,
  not_a_knot = 11,
  periodic = 12,
};

template <class Real>
struct spline_core;

// One side's rule, and what it needs to know: two terms per function, the value and the slope at that end, or
// for a periodic rule the integral over a period.
template <class Real>
struct outside_rule {
  extrapolation how{};
  std::function<Real(Real, std::size_t, int)> function;
  std::vector<Real> terms;
};

}  // namespace detail
}  // namespace tmk
