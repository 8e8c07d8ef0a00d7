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
}

/// Points or sites: an array of the caller's, or a grid in place of one.
template <class Real>
class abscissae {
 public:
  template <detail::array_of<Real> Range>
  abscissae(const Range& array) : array_(array), grid_{}, is_grid_(false) {}
  abscissae(const uniform_grid& grid) : grid_(grid), is_grid_(true) {}

  bool is_grid() const { return is_grid_; }
  const uniform_grid& grid() const { return grid_; }
  std::span<const Real> array() const { return array_; }
  std::size_t size() const { return is_grid_ ? grid_.size : array_.size(); }

 private:
  std::span<const Real> array_;
  uniform_grid grid_;
  bool is_grid_;
};

/// Values of functions at the same points, the caller's: function f at point i stands at
/// data[f function_stride + i point_stride]. An array converts, as one function.
template <class Real>
struct function_set {
  const Real* data;
  std::size_t functions, points;
  std::ptrdiff_t function_stride, point_stride;

  function_set(const Real* data, std::size_t functions, std::size_t points, std::ptrdiff_t function_stride,
               std::ptrdiff_t point_stride)
      : data(data),
        functions(functions),
        points(points),
        function_stride(function_stride),
        point_stride(point_stride) {}

  template <detail::array_of<Real> Range>
  function_set(const Range& array)
      : function_set(std::span<const Real>(array).data(), 1, std::span<const Real>(array).size(),
                     static_cast<std::ptrdiff_t>(std::span<const Real>(array).size()), 1) {}

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
struct element {
  using type = std::remove_cv_t<std::ranges::range_value_t<Y>>;
};
template <class Real>
struct element<function_set<Real>> {
  using type = Real;
};
template <class Y>
using element_of = typename element<Y>::type;

enum class family {
  linear,
  step_left,
  step_right,
  quadratic,
  subbotin,
  natural,
  hermite,
  second_derivatives,
  bessel,
  akima,
  hyman,
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
