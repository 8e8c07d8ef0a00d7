// SPDX-License-Identifier: Apache-2.0
// Copy, zero and set of every type: the requested bytes and none next to them.
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

// The routines that the checked functions end in, as callers reach them: by bytes and by elements.
TEST(fill, inner_routines) {
  std::vector<Tpp64sc> a(300, {1, -2}), b(302, {7, 7});
  tmk_dft_t4_ownsCopy_8u(reinterpret_cast<const uint8_t*>(a.data()), reinterpret_cast<uint8_t*>(&b[1]), 4800);
  EXPECT_EQ(std::memcmp(a.data(), &b[1], 4800), 0);
  tmk_dft_t4_ownsZero_8u(reinterpret_cast<uint8_t*>(&b[1]), 16);
  tmk_dft_t4_ownsSet_8u(0x11, reinterpret_cast<uint8_t*>(&b[2].re), 3);
  tmk_dft_t4_ownsSet_16u(0x2233, reinterpret_cast<uint16_t*>(&b[3].re), 2);
  tmk_dft_t4_ownsSet_32s(-5, reinterpret_cast<int32_t*>(&b[4].re), 1);
  tmk_dft_t4_ownsSet_64s(9, &b[5].im, 2);
  tmk_dft_t4_ownsSet_64sc({3, 4}, &b[7], 2);
  EXPECT_EQ(b[0].im, 7);
  EXPECT_EQ(b[1].re, 0);
  EXPECT_EQ(b[2].re, 0x111111);
  EXPECT_EQ(b[2].im, -2);
  EXPECT_EQ(b[3].re, 0x22332233);
  EXPECT_EQ(b[4].re, 0xFFFFFFFB);
  EXPECT_EQ(b[5].im, 9);
  EXPECT_EQ(b[6].re, 9);
  EXPECT_EQ(b[6].im, -2);
  EXPECT_EQ(b[8].im, 4);
  EXPECT_EQ(b[9].re, 1);
  EXPECT_EQ(b[301].re, 7);
}

}  // namespace
