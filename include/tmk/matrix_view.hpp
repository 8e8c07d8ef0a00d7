// SPDX-License-Identifier: Apache-2.0
// Matrices of observations by variables: a view of the caller's, and a small one that a function returns.
#pragma once

#include <complex>
#include <concepts>
#include <cstddef>
#include <ranges>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace tmk {

/// row_major: the values of an observation are adjacent. column_major: those of a variable are.
enum class matrix_order { row_major, column_major };
namespace layout {
using enum matrix_order;
}

/// `rows` observations of `cols` variables in the caller's memory: value (i, j) is
/// data[i row_stride + j col_stride]. Nothing is checked here; the functions that take a view check it.
template <class T>
class matrix_view {
 public:
  constexpr matrix_view(T* data, std::size_t rows, std::size_t cols, matrix_order order = layout::row_major)
      : matrix_view(data, rows, cols,
                    order == layout::row_major ? static_cast<std::ptrdiff_t>(cols) : std::ptrdiff_t{1},
                    order == layout::row_major ? std::ptrdiff_t{1} : static_cast<std::ptrdiff_t>(rows)) {}

  /// Strides count elements and may be negative or 0.
  constexpr matrix_view(T* data, std::size_t rows, std::size_t cols, std::ptrdiff_t row_stride,
                        std::ptrdiff_t col_stride)
      : data_(data), rows_(rows), cols_(cols), row_stride_(row_stride), col_stride_(col_stride) {}

  /// A vector or span as the one column of a matrix.
  template <class Range>
  requires std::convertible_to<Range&, std::span<T>>
  constexpr matrix_view(Range&& column)  // NOLINT(bugprone-forwarding-reference-overload)
      : matrix_view(std::span<T>(column).data(), std::span<T>(column).size(), 1) {}

  template <class U>
  requires std::is_convertible_v<U (*)[], T (*)[]>
  constexpr matrix_view(const matrix_view<U>& other)
      : matrix_view(other.data(), other.rows(), other.cols(), other.row_stride(), other.col_stride()) {}

  constexpr T* data() const { return data_; }
  constexpr std::size_t rows() const { return rows_; }
  constexpr std::size_t cols() const { return cols_; }
  constexpr std::ptrdiff_t row_stride() const { return row_stride_; }
  constexpr std::ptrdiff_t col_stride() const { return col_stride_; }

  constexpr T& operator()(std::size_t i, std::size_t j) const {
    return data_[static_cast<std::ptrdiff_t>(i) * row_stride_ + static_cast<std::ptrdiff_t>(j) * col_stride_];
  }

  /// Observations first to first + count - 1.
  constexpr matrix_view block(std::size_t first, std::size_t count) const {
    return {data_ + static_cast<std::ptrdiff_t>(first) * row_stride_, count, cols_, row_stride_, col_stride_};
  }

 private:
  T* data_;
  std::size_t rows_, cols_;
  std::ptrdiff_t row_stride_, col_stride_;
};

namespace detail {

template <class Part>
constexpr matrix_view<Part> column_of_parts(Part* first, std::size_t size) {
  return {first, size, 1, 2, 1};
}
template <class T>
constexpr T* parts_of(std::complex<T>* z) {
  return reinterpret_cast<T*>(z);
}
template <class T>
constexpr const T* parts_of(const std::complex<T>* z) {
  return reinterpret_cast<const T*>(z);
}

}  // namespace detail

/// The real parts of an array, vector or span of std::complex, as a column of its elements.
template <std::ranges::borrowed_range Range>
constexpr auto real_parts(Range&& z) {
  return detail::column_of_parts(detail::parts_of(std::ranges::data(z)), std::ranges::size(z));
}

/// The imaginary parts, likewise.
template <std::ranges::borrowed_range Range>
constexpr auto imaginary_parts(Range&& z) {
  return detail::column_of_parts(detail::parts_of(std::ranges::data(z)) + 1, std::ranges::size(z));
}

/// A matrix that owns its elements, by rows.
class matrix {
 public:
  matrix() = default;
  matrix(std::size_t rows, std::size_t cols) : rows_(rows), cols_(cols), values_(rows * cols) {}

  std::size_t rows() const { return rows_; }
  std::size_t cols() const { return cols_; }
  double& operator()(std::size_t i, std::size_t j) { return values_[i * cols_ + j]; }
  double operator()(std::size_t i, std::size_t j) const { return values_[i * cols_ + j]; }
  std::span<double> row(std::size_t i) { return std::span(values_).subspan(i * cols_, cols_); }
  std::span<const double> row(std::size_t i) const { return std::span(values_).subspan(i * cols_, cols_); }
  const std::vector<double>& values() const { return values_; }
  operator matrix_view<const double>() const { return {values_.data(), rows_, cols_}; }

 private:
  std::size_t rows_ = 0, cols_ = 0;
  std::vector<double> values_;
};

}  // namespace tmk
