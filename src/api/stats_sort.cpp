// Sorting by the array primitives.
#include <tmk/abi/tpp.h>

#include "api/check.hpp"
#include "api/settings.hpp"
#include "api/stats.hpp"

namespace tmk {

namespace {

int32_t length_of(const char* function, const void* data, std::size_t size) {
  detail::select_first_tier();
  if (size > INT32_MAX)
    detail::refuse(function, "x", std::to_string(size),
                   "has size " + std::to_string(size) + ", want at most 2147483647");
  detail::check_data(function, {"x", {data, size}, 1});
  return static_cast<int32_t>(size);
}

template <class T>
using sorter = int32_t(T*, T*, int32_t);
template <class T>
using index_sorter = int32_t(const T*, int32_t, int32_t*, int32_t*, int32_t);

template <class T>
void sort_by(sorter<T>* sort, std::span<T> x) {
  const int32_t n = length_of("sort", x.data(), x.size());
  if (n == 0) return;
  std::vector<T> scratch(x.size());
  detail::check_status("sort", sort(x.data(), scratch.data(), n));
}

template <class T>
std::vector<std::int32_t> index_by(index_sorter<T>* sort, std::span<const T> x) {
  const int32_t n = length_of("sort_index", x.data(), x.size());
  std::vector<std::int32_t> index(x.size()), scratch(x.size());
  if (n != 0) detail::check_status("sort_index", sort(x.data(), sizeof(T), index.data(), scratch.data(), n));
  return index;
}

}  // namespace

void sort(std::span<double> x, bool descending) {
  sort_by(descending ? tmk_dft_t4_tppsSortRadixDescend_64f_I : tmk_dft_t4_tppsSortRadixAscend_64f_I, x);
}
void sort(std::span<float> x, bool descending) {
  sort_by(descending ? tmk_dft_t4_tppsSortRadixDescend_32f_I : tmk_dft_t4_tppsSortRadixAscend_32f_I, x);
}
void sort(std::span<std::int32_t> x, bool descending) {
  sort_by(descending ? tmk_dft_t4_tppsSortRadixDescend_32s_I : tmk_dft_t4_tppsSortRadixAscend_32s_I, x);
}

std::vector<std::int32_t> sort_index(std::span<const float> x, bool descending) {
  return index_by(
      descending ? tmk_dft_t4_tppsSortRadixIndexDescend_32f : tmk_dft_t4_tppsSortRadixIndexAscend_32f, x);
}
std::vector<std::int32_t> sort_index(std::span<const std::int32_t> x, bool descending) {
  return index_by(
      descending ? tmk_dft_t4_tppsSortRadixIndexDescend_32s : tmk_dft_t4_tppsSortRadixIndexAscend_32s, x);
}

}  // namespace tmk
