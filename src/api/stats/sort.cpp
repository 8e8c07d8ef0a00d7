// SPDX-License-Identifier: Apache-2.0
// Sorting by the array primitives.
#include "primitives/sort.hpp"

#include <tmk/stats.hpp>

#include "api/call/refuse.hpp"
#include "primitives/sort_positions.hpp"

namespace tmk::detail {

namespace {

int32_t length_of(const char* function, const void* data, std::size_t size) {
  if (size > INT32_MAX)
    refuse(function, "x", std::to_string(size),
           "has size " + std::to_string(size) + ", want at most 2147483647");
  check_data(function, {"x", {data, size}, 1});
  return static_cast<int32_t>(size);
}

}  // namespace

template <sortable T>
void sort_elements(std::span<T> x, bool descending) {
  const int32_t n = length_of("sort", x.data(), x.size());
  if (n == 0) return;
  std::vector<T> scratch(x.size());
  primitives::sort_elements(x.data(), scratch.data(), n, descending);
}

template <sortable T>
std::vector<std::size_t> sorted_positions(std::span<const T> x, bool descending) {
  const int32_t n = length_of("sort_index", x.data(), x.size());
  std::vector<std::size_t> positions(x.size());
  (descending
       ? primitives::sort_positions<T, true>
       : primitives::sort_positions<T, false>)(x.data(), static_cast<std::uint32_t>(n), positions.data());
  return positions;
}

#define TMK_SORT(T)                                \
  template void sort_elements(std::span<T>, bool); \
  template std::vector<std::size_t> sorted_positions(std::span<const T>, bool);
TMK_SORT(double)
TMK_SORT(float)
TMK_SORT(std::int32_t)
TMK_SORT(std::uint32_t)
TMK_SORT(std::int64_t)
TMK_SORT(std::uint64_t)
#undef TMK_SORT

}  // namespace tmk::detail
