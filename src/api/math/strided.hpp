// SPDX-License-Identifier: Apache-2.0
// Arrays whose elements do not follow one another: rows or columns of a matrix, real parts of complex
// numbers, one value for all elements.
#pragma once

#include <cstddef>
#include <tmk/detail/shapes.hpp>

namespace tmk::detail {

// Whether the elements follow one another, so that a kernel may take them where they are.
bool is_plain(const strides& s);

// Where element i of a call is, in elements from the array's pointer. A null layout is that of a plain array.
std::ptrdiff_t element_offset(const strides* s, std::size_t i);

// Copies `count` elements of `width` bytes from the first one on, to and from an array without gaps.
void gather(std::byte* to, const std::byte* array, const strides& s, std::size_t first, std::size_t count,
            std::size_t width);
void scatter(std::byte* array, const strides& s, std::size_t first, std::size_t count, std::size_t width,
             const std::byte* from);

// Whether two arrays may share memory. Arrays that lie among each other, as real and imaginary parts do, are
// apart where their strides have a common divisor that shows it.
struct placement {
  const void* data;
  strides layout;
  std::size_t width;
};
bool may_overlap(const placement& x, const placement& y);

// Whether some element of the array is in two places of it.
bool repeats_elements(const strides& s);

}  // namespace tmk::detail
