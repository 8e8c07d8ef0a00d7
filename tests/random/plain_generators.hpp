// SPDX-License-Identifier: Apache-2.0
// Generators as their papers write them, element by element, for the draws of every tier to equal.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "random/streams.hpp"
#include "tmk/abi/vtm.h"

struct plain_generator {
  int32_t id;
  std::vector<uint32_t> seeds;
  std::function<void(uint32_t* element)> next;
  double (*to_double)(const uint32_t* element, double a, double b);
  double (*to_wide_single)(const uint32_t* element, double a, double b);  // before its rounding to single
};

inline std::vector<uint32_t> draw_words(VtsStreamHandle stream, int32_t n) {
  const auto bytes = draw_bytes(stream, n);
  std::vector<uint32_t> words(bytes.size() / 4);
  std::memcpy(words.data(), bytes.data(), bytes.size());
  return words;
}

inline void on_every_tier(const std::function<void()>& body) {
  const int32_t before = tmk_current_tier();
  for (int32_t tier = TMK_TIER_W7; tier <= TMK_TIER_V4; ++tier) {
    if (tmk_select_tier(tier) != tier) continue;
    SCOPED_TRACE(tmk_tier_name(tier));
    body();
  }
  tmk_select_tier(before);
}

// Draws of the stream in pieces of every size, short ones and such that cross blocks, equal what is wanted.
template <class Value, class Draw>
void expect_any_cut(const plain_generator& g, const std::vector<Value>& wanted, size_t per_element,
                    Draw draw) {
  const owned_stream stream(g.id, g.seeds);
  std::mt19937 engine(20);
  std::vector<Value> got(wanted.size() + 1, Value(77));
  for (size_t done = 0, n, end = wanted.size() / per_element; done < end; done += n) {
    n = std::min<size_t>(1 + engine() % (engine() % 8 == 0 ? 5000 : engine() % 2 ? 7 : 150), end - done);
    draw(stream, static_cast<int32_t>(n), got.data() + done * per_element);
    ASSERT_EQ(got[(done + n) * per_element], Value(77)) << "past " << n << " at " << done;
    got[(done + n) * per_element] = Value(77);
  }
  got.pop_back();
  const auto at = std::mismatch(got.begin(), got.end(), wanted.begin()).first - got.begin();
  ASSERT_EQ(at, static_cast<ptrdiff_t>(wanted.size())) << std::hex << g.id << " differs";
}

inline void expect_plain_sequence(const plain_generator& g) {
  constexpr size_t count = 40000;
  constexpr double a = -1.5, b = 2.75;
  VtsBrngProperties record;
  ASSERT_EQ(__vtsGetBrngProperties(g.id, &record), 0);
  const auto words_per_element = static_cast<size_t>(record.wordBytes) / 4;
  std::vector<uint32_t> words(count * words_per_element);
  std::vector<double> doubles(count);
  std::vector<float> singles(count);
  for (size_t i = 0; i < count; ++i) {
    uint32_t* element = &words[i * words_per_element];
    g.next(element);
    doubles[i] = g.to_double(element, a, b);
    singles[i] = static_cast<float>(g.to_wide_single(element, a, b));
  }
  on_every_tier([&] {
    expect_any_cut(g, words, words_per_element,
                   [&](VtsStreamHandle s, int32_t n, uint32_t* r) { record.iBrng(s, n, r); });
    expect_any_cut(g, doubles, 1,
                   [&](VtsStreamHandle s, int32_t n, double* r) { record.dBrng(s, n, r, a, b); });
    expect_any_cut(g, singles, 1, [&](VtsStreamHandle s, int32_t n, float* r) {
      record.sBrng(s, n, r, static_cast<float>(a), static_cast<float>(b));
    });
  });
}
