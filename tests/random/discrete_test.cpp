// SPDX-License-Identifier: Apache-2.0
// Integers: their laws, the same bits on every tier, floors below zero, and words of a fixed width.
#include <climits>
#include <cmath>

#include "random/goodness.hpp"
#include "random/placed.hpp"
#include "random/plain_generators.hpp"

namespace {

using draw_integers = std::function<int32_t(VtsStreamHandle, int32_t, int32_t*)>;

struct discrete_law {
  draw_integers draw;
  int least, cells;
  std::function<double(int)> probability;
};

discrete_law uniform_law(int a, int b) {
  const double width = static_cast<double>(b) - a;
  return {[=](VtsStreamHandle g, int32_t n, int32_t* r) { return _vtsiRngUniform(0, g, n, r, a, b); }, a,
          static_cast<int>(std::min(width, 1000.0)), [=](int) { return 1 / width; }};
}
discrete_law bernoulli_law(double p) {
  return {[=](VtsStreamHandle g, int32_t n, int32_t* r) { return _vtsiRngBernoulli(0, g, n, r, p); }, 0, 2,
          [=](int k) { return k == 1 ? p : 1 - p; }};
}
discrete_law geometric_law(double p, int cells) {
  return {[=](VtsStreamHandle g, int32_t n, int32_t* r) { return _vtsiRngGeometric(0, g, n, r, p); }, 0,
          cells, [=](int k) { return p * std::pow(1 - p, k); }};
}

const std::vector<discrete_law>& discrete_laws() {
  static const std::vector<discrete_law> table = {
      uniform_law(-3, 3),     uniform_law(0, 100),     uniform_law(-1000, -990),
      bernoulli_law(0.5),     bernoulli_law(0.001),    bernoulli_law(0.9),
      geometric_law(0.5, 12), geometric_law(0.05, 60), geometric_law(0.9, 4)};
  return table;
}

std::vector<int> draw(const discrete_law& l, VtsStreamHandle g, int32_t n) {
  std::vector<int> x(static_cast<size_t>(n));
  EXPECT_EQ(l.draw(g, n, x.data()), 0);
  return x;
}

TEST(discrete, have_their_laws) {
  for (const discrete_law& l : discrete_laws()) {
    const owned_stream g(VTS_BRNG_MT19937, {77});
    expect_discrete(draw(l, g, 50000), l.least, l.cells, l.probability);
  }
}

TEST(discrete, are_one_sequence_for_any_cut_and_tier) {
  for (size_t i = 0; i < discrete_laws().size(); ++i) {
    const discrete_law& l = discrete_laws()[i];
    tmk_select_tier(TMK_TIER_W7);
    const owned_stream reference(VTS_BRNG_MCG59, {5});
    const auto wanted = draw(l, reference, 2500);
    on_every_tier([&] {
      const owned_stream g(VTS_BRNG_MCG59, {5});
      std::vector<int> got;
      for (const int32_t count : {7, 9, 1008, 1, 1475}) {
        const auto piece = draw(l, g, count);
        got.insert(got.end(), piece.begin(), piece.end());
      }
      const bool same_on_every_tier = i < 6;  // the logarithm under the geometric law is the tier's own
      EXPECT_TRUE(!same_on_every_tier || got == wanted);
      const owned_stream whole(VTS_BRNG_MCG59, {5});
      EXPECT_EQ(got, draw(l, whole, 2500));
    });
  }
}

TEST(discrete, edges) {
  const auto geometric = [](double p) { return geometric_law(p, 1).draw; };
  const struct {
    double at;
    draw_integers draw;
    int wanted;
  } rows[] = {
      {0.25, uniform_law(-2, 2).draw, -1},
      {0.375, uniform_law(-2, 2).draw, -1},
      {0.374, uniform_law(-2, 2).draw, -1},
      {0.2, uniform_law(-2, 2).draw, -2},
      {0, uniform_law(INT_MIN, INT_MAX).draw, INT_MIN},
      {0.999, uniform_law(7, 8).draw, 7},
      {0, bernoulli_law(0).draw, 0},
      {0x1.fffffep-1, bernoulli_law(1).draw, 1},
      {1, bernoulli_law(1).draw, 1},  // a single uniform may be rounded up
      {0, geometric(0.5), 149},
      {0.75, geometric(0.5), 0},
      {0, geometric(1), 0},
      {0.01, geometric(1), 0},
  };
  on_every_tier([&] {
    for (const auto& row : rows) {
      placed::at = row.at;
      const owned_stream g(placed::id(), {1});
      std::vector<int> x(37);
      EXPECT_EQ(row.draw(g, 37, x.data()), 0);
      EXPECT_EQ(x, std::vector<int>(37, row.wanted)) << row.at;
    }
  });
}

TEST(bits, only_words_of_32_bits_have_them) {
  for (const int32_t id :
       {int32_t{VTS_BRNG_MCG31M1}, int32_t{VTS_BRNG_WH}, counting_id(), 3 /* MCG59 */, 5 /* WH */}) {
    const owned_stream g(id, {1}), untouched(id, {1});
    uint64_t r = 0;
    const int32_t wanted = id == 3 ? 0 : VTS_STATUS_NO_FIXED_WIDTH_BITS;
    EXPECT_EQ(_vtsiRngUniformBits32(0, g, 1, reinterpret_cast<uint32_t*>(&r)), wanted) << id;
    EXPECT_EQ(_vtsiRngUniformBits64(0, g, 1, &r), wanted) << id;
    if (wanted == 0) continue;
    EXPECT_EQ(r, 0u);
    EXPECT_EQ(draw_bytes(g, 2), draw_bytes(untouched, 2));
  }
}

TEST(bits, are_the_generators_words_or_the_upper_32_of_59) {
  for (const int32_t id :
       {VTS_BRNG_MCG59 + 0, VTS_BRNG_MT19937 + 0, VTS_BRNG_MT2203 + 3, VTS_BRNG_SFMT19937 + 0}) {
    constexpr int32_t n = 5000;
    const owned_stream plain(id, {1, 2}), narrow(id, {1, 2}), wide(id, {1, 2});
    std::vector<uint32_t> words(n), r(n);
    if (id == VTS_BRNG_MCG59) {
      std::vector<uint64_t> elements(n);
      _vtsiRngUniformBits(0, plain, n, elements.data());
      std::transform(elements.begin(), elements.end(), words.begin(), [](uint64_t x) { return x >> 27; });
    } else {
      _vtsiRngUniformBits(0, plain, n, words.data());
    }
    EXPECT_EQ(_vtsiRngUniformBits32(0, narrow, n, r.data()), 0);
    EXPECT_EQ(r, words) << id;
    std::vector<uint64_t> pairs(n / 2);
    EXPECT_EQ(_vtsiRngUniformBits64(0, wide, n / 2, pairs.data()), 0);
    for (int i = 0; i < n / 2; ++i)
      ASSERT_EQ(pairs[i], words[2 * i] | uint64_t{words[2 * i + 1]} << 32) << id << i;
    EXPECT_EQ(draw_bytes(wide, 2), draw_bytes(plain, 2));
  }
}

}  // namespace
