// SPDX-License-Identifier: Apache-2.0
#include "api/math/strided.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <numeric>

namespace tmk::detail {

namespace {

// move(element, k) for element k of `count`, from the first one on; `element` counts from the array's
// pointer.
template <class Move>
void walk_elements(const strides& s, std::size_t first, std::size_t count, Move move) {
  std::size_t column = first % s.cols;
  auto row = static_cast<std::ptrdiff_t>(first / s.cols);
  for (std::size_t k = 0; k < count; column = 0, ++row) {
    const std::size_t columns = std::min(s.cols - column, count - k);
    std::ptrdiff_t element = row * s.row + static_cast<std::ptrdiff_t>(column) * s.col;
    for (const std::size_t end = k + columns; k < end; ++k, element += s.col) move(element, k);
  }
}

// Copies of a fixed number of bytes are single moves.
template <class Function>
void with_width(std::size_t width, Function function) {
  switch (width) {
    case 4:
      return function(std::integral_constant<std::size_t, 4>());
    case 8:
      return function(std::integral_constant<std::size_t, 8>());
    default:
      return function(std::integral_constant<std::size_t, 16>());
  }
}

// The bytes from the first element's to past the last one's, wherever in memory those are.
struct extent {
  std::intptr_t begin, end;
};
extent extent_of(const placement& p) {
  const auto width = static_cast<std::ptrdiff_t>(p.width);
  extent e{reinterpret_cast<std::intptr_t>(p.data), reinterpret_cast<std::intptr_t>(p.data) + width};
  const auto stretch = [&](std::size_t steps, std::ptrdiff_t stride) {
    const std::ptrdiff_t reach = static_cast<std::ptrdiff_t>(steps) * stride * width;
    (reach < 0 ? e.begin : e.end) += reach;
  };
  stretch(p.layout.rows - 1, p.layout.row);
  stretch(p.layout.cols - 1, p.layout.col);
  return e;
}

// Strides of dimensions that have a second element.
std::ptrdiff_t stride_divisor(const placement& p) {
  const auto width = static_cast<std::ptrdiff_t>(p.width);
  return std::gcd(p.layout.rows > 1 ? p.layout.row * width : 0, p.layout.cols > 1 ? p.layout.col * width : 0);
}

}  // namespace

bool is_plain(const strides& s) {
  return (s.cols == 1 || s.col == 1) && (s.rows == 1 || s.row == static_cast<std::ptrdiff_t>(s.cols));
}

std::ptrdiff_t element_offset(const strides* s, std::size_t i) {
  if (s == nullptr) return static_cast<std::ptrdiff_t>(i);
  return static_cast<std::ptrdiff_t>(i / s->cols) * s->row +
         static_cast<std::ptrdiff_t>(i % s->cols) * s->col;
}

void gather(std::byte* to, const std::byte* array, const strides& s, std::size_t first, std::size_t count,
            std::size_t width) {
  with_width(width, [&](auto bytes) {
    constexpr auto size = static_cast<std::ptrdiff_t>(decltype(bytes)::value);
    walk_elements(s, first, count, [&](std::ptrdiff_t element, std::size_t k) {
      std::memcpy(to + k * bytes, array + element * size, bytes);
    });
  });
}

void scatter(std::byte* array, const strides& s, std::size_t first, std::size_t count, std::size_t width,
             const std::byte* from) {
  with_width(width, [&](auto bytes) {
    constexpr auto size = static_cast<std::ptrdiff_t>(decltype(bytes)::value);
    walk_elements(s, first, count, [&](std::ptrdiff_t element, std::size_t k) {
      std::memcpy(array + element * size, from + k * bytes, bytes);
    });
  });
}

bool may_overlap(const placement& x, const placement& y) {
  const extent a = extent_of(x), b = extent_of(y);
  if (a.end <= b.begin || b.end <= a.begin) return false;
  const std::ptrdiff_t divisor = std::gcd(stride_divisor(x), stride_divisor(y));
  if (divisor == 0) return true;
  const auto from_x = static_cast<std::size_t>((b.begin - a.begin) % divisor + divisor) % divisor;
  return from_x < x.width || from_x + y.width > static_cast<std::size_t>(divisor);
}

bool repeats_elements(const strides& s) {
  const auto row = static_cast<std::size_t>(std::abs(s.row)), col = static_cast<std::size_t>(std::abs(s.col));
  if (s.rows == 1 || s.cols == 1) return (s.rows > 1 && row == 0) || (s.cols > 1 && col == 0);
  return row == 0 || col == 0 || (row < col * s.cols && col < row * s.rows);
}

}  // namespace tmk::detail
