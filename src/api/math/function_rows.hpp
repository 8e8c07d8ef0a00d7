// SPDX-License-Identifier: Apache-2.0
// The functions as the C++ API calls them: one row per function, made from functions.def.
#pragma once

#include <tmk/abi/vtm.h>

#include <array>
#include <complex>
#include <cstddef>
#include <tmk/detail/shapes.hpp>

namespace tmk::detail {

// The arrays of a call, or of a piece of one.
struct operands {
  const std::byte *a, *b;
  std::byte *r, *r2;
  const void* scalars;
};

// Elements of an array by their place; single precision is widened, real numbers have a zero imaginary part.
struct element_type {
  bool complex, wide;
  std::size_t width() const { return std::size_t{4} << (complex + wide); }
  std::complex<double> load(const std::byte* array, std::size_t i) const;
  void store(std::byte* array, std::size_t i, std::complex<double> value) const;
};

using reporter = void(int32_t, int32_t, const void*, const void*, void*, void*, const char*);

struct function_row {
  const char* c_name;         // "vsExp", as the C interface reports it
  std::array<char, 16> name;  // "exp"
  VtmDispatchRecord* record;
  const VtmCostRecord* cost;
  void (*invoke)(VtmKernel, const operands&, int32_t n);  // null for gather and scatter
  reporter* report;
  element_type a, r;  // b is like a, r2 like r
  bool has_b, has_r2;
};

const function_row& function_row_of(stem function, precision letter);

}  // namespace tmk::detail
