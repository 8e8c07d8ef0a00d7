// SPDX-License-Identifier: Apache-2.0
// Radix sorts against a comparison sort by the order of the keys, bit for bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "tmk/abi/tpp.h"

namespace {

// The order of the sorts, by the values and not by their keys.
template <class T>
bool before(T a, T b) {
  if constexpr (std::is_floating_point_v<T>) {
    const auto rank = [](T x) { return std::isnan(x) ? (std::signbit(x) ? -1 : 1) : 0; };
    if (rank(a) != rank(b)) return rank(a) < rank(b);
    if (rank(a) == 0) return a < b || (a == b && std::signbit(a) && !std::signbit(b));
    using word = std::conditional_t<sizeof(T) == 4, int32_t, int64_t>;
    const auto payload = [](T x) { return std::bit_cast<word>(x) & std::numeric_limits<word>::max(); };
    return rank(a) > 0 ? payload(a) < payload(b) : payload(a) > payload(b);
  } else {
    return a < b;
  }
}

template <class T>
using sort_function = int32_t(T*, T*, int32_t);
template <class T>
using index_function = int32_t(const T*, int32_t, int32_t*, int32_t*, int32_t);

template <class T>
struct sorts {
  sort_function<T>*ascend, *descend;
  index_function<T>*index_ascend, *index_descend;
};
#define TMK_SORTS(tag) tmk_dft_t4_tppsSortRadixAscend_##tag##_I, tmk_dft_t4_tppsSortRadixDescend_##tag##_I
#define TMK_INDEX_SORTS(tag) \
  tmk_dft_t4_tppsSortRadixIndexAscend_##tag, tmk_dft_t4_tppsSortRadixIndexDescend_##tag
template <class T>
extern const sorts<T> of;
template <>
constexpr sorts<uint8_t> of<uint8_t> = {TMK_SORTS(8u), TMK_INDEX_SORTS(8u)};
template <>
constexpr sorts<uint16_t> of<uint16_t> = {TMK_SORTS(16u), TMK_INDEX_SORTS(16u)};
template <>
constexpr sorts<int16_t> of<int16_t> = {TMK_SORTS(16s), TMK_INDEX_SORTS(16s)};
template <>
constexpr sorts<uint32_t> of<uint32_t> = {TMK_SORTS(32u), TMK_INDEX_SORTS(32u)};
template <>
constexpr sorts<int32_t> of<int32_t> = {TMK_SORTS(32s), TMK_INDEX_SORTS(32s)};
template <>
constexpr sorts<float> of<float> = {TMK_SORTS(32f), TMK_INDEX_SORTS(32f)};
template <>
constexpr sorts<double> of<double> = {TMK_SORTS(64f), nullptr, nullptr};

enum pattern {
  any_bits,
  ascending,
  descending,
  organ_pipe,
  constant,
  few_values,
  near_one,
  long_runs,
  patterns
};

template <class T>
std::vector<T> make(pattern kind, int n) {
  std::mt19937_64 engine(static_cast<uint64_t>(n) * patterns + kind);
  const auto bits = [&] {
    const uint64_t word = engine();
    T x;
    std::memcpy(&x, &word, sizeof x);
    return x;
  };
  std::vector<T> a(static_cast<size_t>(n));
  std::generate(a.begin(), a.end(), bits);
  const T few[] = {a[0],
                   T(0),
                   static_cast<T>(-T(0)),
                   std::numeric_limits<T>::lowest(),
                   std::numeric_limits<T>::max(),
                   std::numeric_limits<T>::infinity(),
                   std::numeric_limits<T>::quiet_NaN()};
  switch (kind) {
    case ascending:
    case descending:
    case organ_pipe:
      std::sort(a.begin(), a.end(), before<T>);
      if (kind == descending) std::reverse(a.begin(), a.end());
      if (kind == organ_pipe) std::reverse(a.begin() + n / 2, a.end());
      break;
    case constant:
      std::fill(a.begin(), a.end(), a[0]);
      break;
    case few_values:
      for (T& x : a) x = few[engine() % std::size(few)];
      break;
    case near_one:
      for (T& x : a) x = static_cast<T>(1 + static_cast<double>(engine() % 4096) * 0x1p-52);
      break;
    case long_runs:  // two far clusters that differ in their lowest bits alone
      for (T& x : a) {
        const uint64_t word = (engine() % 2 == 0 ? uint64_t{0} : uint64_t{0x4340} << 48) + engine() % 100000;
        std::memcpy(&x, &word, sizeof x);
      }
      break;
    default:
      break;
  }
  return a;
}

template <class T>
class radix_sort : public testing::Test {};
using element_types = testing::Types<uint8_t, uint16_t, int16_t, uint32_t, int32_t, float, double>;
TYPED_TEST_SUITE(radix_sort, element_types);

constexpr int lengths[] = {1, 2, 7, 159, 160, 1000, 70000};

TYPED_TEST(radix_sort, elements_stand_in_order_both_ways) {
  using T = TypeParam;
  for (int kind = 0; kind < patterns; ++kind)
    for (const int n : lengths) {
      std::vector<T> want = make<T>(static_cast<pattern>(kind), n), up = want, down = want;
      std::vector<T> scratch(want.size());
      std::sort(want.begin(), want.end(), before<T>);
      EXPECT_EQ(of<T>.ascend(up.data(), scratch.data(), n), 0);
      EXPECT_EQ(std::memcmp(up.data(), want.data(), sizeof(T) * want.size()), 0) << kind << " " << n;
      std::reverse(want.begin(), want.end());
      EXPECT_EQ(of<T>.descend(down.data(), scratch.data(), n), 0);
      EXPECT_EQ(std::memcmp(down.data(), want.data(), sizeof(T) * want.size()), 0) << kind << " " << n;
    }
}

TYPED_TEST(radix_sort, positions_are_stable_at_any_stride) {
  using T = TypeParam;
  if (of<T>.index_ascend == nullptr) return;  // doubles
  for (int kind = 0; kind < patterns; ++kind)
    for (const int n : {1, 300, 5000})
      for (const size_t stride : {sizeof(T), 3 * sizeof(T) + 1}) {
        const std::vector<T> a = make<T>(static_cast<pattern>(kind), n);
        std::vector<char> spread(stride * a.size());
        for (size_t i = 0; i < a.size(); ++i) std::memcpy(spread.data() + i * stride, &a[i], sizeof(T));
        const std::vector<char> source = spread;
        std::vector<int32_t> up(a.size()), down(a.size()), scratch(a.size()), want(a.size());
        const auto* const first = reinterpret_cast<const T*>(spread.data());
        const auto place = [&](int32_t i) { return a[static_cast<size_t>(i)]; };
        EXPECT_EQ(of<T>.index_ascend(first, static_cast<int32_t>(stride), up.data(), scratch.data(), n), 0);
        EXPECT_EQ(of<T>.index_descend(first, static_cast<int32_t>(stride), down.data(), scratch.data(), n),
                  0);
        std::iota(want.begin(), want.end(), 0);
        std::stable_sort(want.begin(), want.end(),
                         [&](int32_t i, int32_t j) { return before(place(i), place(j)); });
        EXPECT_EQ(up, want) << kind << " " << n;
        std::iota(want.begin(), want.end(), 0);
        std::stable_sort(want.begin(), want.end(),
                         [&](int32_t i, int32_t j) { return before(place(j), place(i)); });
        EXPECT_EQ(down, want) << kind << " " << n;
        EXPECT_EQ(spread, source);
      }
}

TYPED_TEST(radix_sort, null_comes_before_size) {
  using T = TypeParam;
  T a[2] = {}, s[2];
  for (sort_function<T>* sort : {of<T>.ascend, of<T>.descend}) {
    EXPECT_EQ(sort(nullptr, s, 0), TPP_STATUS_NULL_PTR);
    EXPECT_EQ(sort(a, nullptr, 0), TPP_STATUS_NULL_PTR);
    EXPECT_EQ(sort(a, s, 0), TPP_STATUS_BAD_SIZE);
  }
  int32_t index[2], scratch[2];
  for (index_function<T>* sort : {of<T>.index_ascend, of<T>.index_descend}) {
    if (sort == nullptr) continue;
    EXPECT_EQ(sort(nullptr, 8, index, scratch, 2), TPP_STATUS_NULL_PTR);
    EXPECT_EQ(sort(a, 8, nullptr, scratch, 2), TPP_STATUS_NULL_PTR);
    EXPECT_EQ(sort(a, 8, index, nullptr, 0), TPP_STATUS_NULL_PTR);
    EXPECT_EQ(sort(a, 8, index, scratch, 0), TPP_STATUS_BAD_SIZE);
    EXPECT_EQ(sort(a, sizeof(T) - 1, index, scratch, 2), TPP_STATUS_BAD_SIZE);
  }
}

}  // namespace
