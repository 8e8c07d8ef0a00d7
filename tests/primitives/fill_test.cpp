// Copy, zero and set of every type: the bytes asked for and none beside them.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "tmk/abi/tpp.h"

namespace {

template <class T>
void check(int32_t (*copy)(const T*, T*, int32_t), int32_t (*zero)(T*, int32_t),
           int32_t (*set)(T, T*, int32_t)) {
  T value;
  for (size_t i = 0; i < sizeof value; ++i)
    reinterpret_cast<unsigned char*>(&value)[i] = 0x11 * (i + 1) & 0x3F;
  const auto differs = [](const T& a, const T& b) { return std::memcmp(&a, &b, sizeof a) != 0; };
  T guard, nought;
  std::memset(&guard, 0x5A, sizeof guard);
  std::memset(&nought, 0, sizeof nought);
  for (const int32_t n : {1, 2, 3, 17, 4095, 4096, 10001}) {
    std::vector<T> a(static_cast<size_t>(n) + 2, guard), b = a;
    EXPECT_EQ(set(value, a.data() + 1, n), 0);
    EXPECT_EQ(copy(a.data() + 1, b.data() + 1, n), 0);
    int wrong = 0;
    for (int32_t i = 1; i <= n; ++i) wrong += differs(a[i], value) || differs(b[i], value);
    EXPECT_EQ(zero(a.data() + 1, n), 0);
    for (int32_t i = 1; i <= n; ++i) wrong += differs(a[i], nought);
    for (const T* end : {&a[0], &a[n + 1], &b[0], &b[n + 1]}) wrong += differs(*end, guard);
    EXPECT_EQ(wrong, 0) << sizeof(T) << " " << n;
  }
  T place = guard;
  EXPECT_EQ(copy(nullptr, &place, 0), TPP_STATUS_NULL_PTR);
  EXPECT_EQ(copy(&place, nullptr, 1), TPP_STATUS_NULL_PTR);
  EXPECT_EQ(copy(&value, &place, 0), TPP_STATUS_BAD_SIZE);
  EXPECT_EQ(zero(nullptr, 0), TPP_STATUS_NULL_PTR);
  EXPECT_EQ(zero(&place, -1), TPP_STATUS_BAD_SIZE);
  EXPECT_EQ(set(value, nullptr, 0), TPP_STATUS_NULL_PTR);
  EXPECT_EQ(set(value, &place, 0), TPP_STATUS_BAD_SIZE);
  EXPECT_FALSE(differs(place, guard));
}

#define TMK_CHECK(tag) check(tmk_dft_t4_tppsCopy_##tag, tmk_dft_t4_tppsZero_##tag, tmk_dft_t4_tppsSet_##tag)
TEST(fill, every_type) {
  TMK_CHECK(8u);
  TMK_CHECK(16s);
  TMK_CHECK(16sc);
  TMK_CHECK(32f);
  TMK_CHECK(32fc);
  TMK_CHECK(32s);
  TMK_CHECK(32sc);
  TMK_CHECK(64f);
  TMK_CHECK(64fc);
  TMK_CHECK(64s);
  TMK_CHECK(64sc);
}

}  // namespace
