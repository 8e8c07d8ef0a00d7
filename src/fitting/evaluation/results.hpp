// SPDX-License-Identifier: Apache-2.0
// What an interpolation computes: which derivatives, and where in the result they go.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "tmk/abi/df.h"

namespace tmk::fitting {

// Derivatives of orders 0 to 3 as bits, ascending orders in ascending columns; after them columns of higher
// ones, which are zero. `stride` is the count of results of a site and function that the caller has room for,
// the sum of the entries of dorder: with entries above 1 it is more than there are columns.
struct derivative_request {
  unsigned set = 1;
  int64_t zeros = 0;
  int64_t stride = 1;

  int columns() const { return std::popcount(set); }
};

inline derivative_request requested(int64_t count, const void* dorder, bool wide) {
  constexpr int highest = 3;
  derivative_request r{.set = 0, .stride = 0};
  for (int64_t k = 0; dorder != nullptr && k < count; ++k) {
    const int64_t entry =
        wide ? static_cast<const int64_t*>(dorder)[k] : static_cast<const int32_t*>(dorder)[k];
    r.stride += entry;
    if (entry == 0) continue;
    if (k <= highest)
      r.set |= 1u << k;
    else
      ++r.zeros;
  }
  if (r.stride == 0) return {};
  // Negative entries leave less room than columns: the highest derivatives go.
  if (r.stride < 0) return {.set = 0, .stride = 0};
  while (r.columns() > r.stride) r.set &= ~std::bit_floor(r.set);
  if (r.zeros > r.stride - r.columns()) r.zeros = r.stride - r.columns();
  return r;
}

// Distances between functions, sites and derivatives in the result, in elements.
struct result_layout {
  ptrdiff_t function, site, derivative;
};

inline int32_t layout_of(int64_t rhint, int64_t sites, int64_t functions, int64_t derivatives,
                         result_layout& layout) {
  const auto n = static_cast<ptrdiff_t>(sites), f = static_cast<ptrdiff_t>(functions);
  const auto d = static_cast<ptrdiff_t>(derivatives);
  switch (rhint) {
    case 0:
    case 128:
    case DF_FUNCTION_SITE_DERIVATIVE:
      layout = {n * d, d, 1};
      break;
    case DF_FUNCTION_DERIVATIVE_SITE:
      layout = {n * d, 1, n};
      break;
    case DF_SITE_FUNCTION_DERIVATIVE:
      layout = {d, f * d, 1};
      break;
    case DF_SITE_DERIVATIVE_FUNCTION:
      layout = {1, f * d, f};
      break;
    default:
      return DF_STATUS_BAD_RESULT_HINT;
  }
  return DF_STATUS_OK;
}

}  // namespace tmk::fitting
