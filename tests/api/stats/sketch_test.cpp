// SPDX-License-Identifier: Apache-2.0
// The sketch of the C++ API: bounds, merging, images, and what is left after a failure.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <new>
#include <random>
#include <string>

#include "api/stats/samples.hpp"

namespace tmk {
namespace {

TEST(stats_sketch, answers_within_its_bounds) {
  const std::size_t n = 60'000;
  std::vector<double> x = gaussian_values(2 * n, 9);
  std::vector<double> sorted;
  for (std::size_t i = 0; i < n; ++i) sorted.push_back(x[2 * i]);
  for (std::size_t i = 0; i < n; i += 100) x[2 * i + 1] = nan;
  std::sort(sorted.begin(), sorted.end());
  quantile_sketch q(2, 0.01, nan_policy::omit), strict(2, 0.01);
  const matrix_view<const double> view(x.data(), n, 2);
  EXPECT_TRUE(std::isnan(q.quantile(0, 0.5)));
  for (std::size_t first = 0; first < n; first += 7'001)
    q.add(view.block(first, std::min(n - first, std::size_t{7'001})));
  strict.add(view);
  const quantile_sketch moved(std::move(q));
  for (const double order : {0.0, 0.01, 0.25, 0.5, 0.99, 1.0}) {
    const auto b = moved.bounds(0, order);
    const auto rank = std::lower_bound(sorted.begin(), sorted.end(), b.value) - sorted.begin() + 1;
    EXPECT_LE(b.lowest_rank, rank);
    EXPECT_GE(b.highest_rank, rank);
    EXPECT_NEAR(static_cast<double>(rank), order * n, 0.01 * n + 1);
    EXPECT_EQ(b.count, n);
    EXPECT_EQ(b.value, moved.quantile(0, order));
    EXPECT_EQ(b.value, strict.quantile(0, order));
  }
  EXPECT_EQ(moved.count(1), n - n / 100);
  EXPECT_FALSE(std::isnan(moved.quantile(1, 0.5)));
  EXPECT_TRUE(std::isnan(strict.quantile(1, 0.5)));
}

// What is wrong with a sketch of one variable over these values, sorted, if anything is: answers, bounds, and
// ranks of values seen and not seen.
std::string fault(const quantile_sketch& q, const std::vector<double>& sorted) {
  const auto n = static_cast<double>(sorted.size()), allowed = q.epsilon() * n;
  if (q.count(0) != static_cast<std::int64_t>(sorted.size())) return "count";
  const auto not_above = [&](double v) {
    return std::upper_bound(sorted.begin(), sorted.end(), v) - sorted.begin();
  };
  const auto below = [&](double v) {
    return std::lower_bound(sorted.begin(), sorted.end(), v) - sorted.begin();
  };
  for (int k = 0; k <= 200; ++k) {
    const double target = k / 200.0 * n;
    const auto b = q.bounds(0, k / 200.0);
    const auto at = static_cast<double>(not_above(b.value));
    if (not_above(b.value) == below(b.value)) return "a value never seen";
    if (static_cast<double>(below(b.value)) > target + allowed || at < target - allowed)
      return "rank of an answer";
    if (at < static_cast<double>(b.lowest_rank) || at > static_cast<double>(b.highest_rank)) return "bounds";
    if (static_cast<double>(b.highest_rank - b.lowest_rank) > 2 * allowed + 1e-9) return "width";
    for (const double v : {b.value, std::nextafter(b.value, infinity)}) {
      const auto r = q.rank(0, v);
      if (r.lowest_rank > not_above(v) || r.highest_rank < not_above(v)) return "rank";
      if (static_cast<double>(r.highest_rank - r.lowest_rank) > 2 * allowed + 1e-9) return "width of a rank";
    }
  }
  if (q.quantile(0, 0) != sorted.front() || q.quantile(0, 1) != sorted.back()) return "extremes";
  return "";
}

quantile_sketch sketch_of(const std::vector<double>& x, double epsilon) {
  quantile_sketch q(1, epsilon);
  q.add(x);
  return q;
}

// Sketches of many sizes, merged in chains and trees and added to in between. Values come in an order that
// drifts, so that parts do not look alike.
TEST(stats_sketch, merged_ranks_stay_within_epsilon) {
  std::mt19937 g(21);
  std::vector<double> all;
  const auto draw = [&](std::size_t n) {
    std::vector<double> x(n);
    const double drift = static_cast<double>(g() % 100);
    for (double& v : x) v = drift + static_cast<double>(g() % 100'000) / 5'000;
    all.insert(all.end(), x.begin(), x.end());
    return x;
  };
  const auto sorted = [&] {
    std::vector<double> r = all;
    std::sort(r.begin(), r.end());
    return r;
  };
  for (const double epsilon : {0.3, 0.05, 0.01})
    for (const std::size_t leaf : {1u, 9u, 300u, 2'000u, 5'000u}) {
      all.clear();
      const std::size_t leaves = leaf > 1'000 ? 64 : 400;
      std::vector<quantile_sketch> tree;
      for (std::size_t k = 0; k < leaves; ++k) tree.push_back(sketch_of(draw(leaf), epsilon));
      quantile_sketch chain(1, epsilon);
      for (const quantile_sketch& q : tree) chain += q;
      ASSERT_EQ(fault(chain, sorted()), "") << "chain of " << leaf << ", epsilon " << epsilon;
      while (tree.size() > 1) {
        std::vector<quantile_sketch> next;
        for (std::size_t k = 0; k + 1 < tree.size(); k += 2) (next.emplace_back(tree[k])).merge(tree[k + 1]);
        if (tree.size() % 2 == 1) next.push_back(tree.back());
        tree = std::move(next);
      }
      ASSERT_EQ(fault(tree[0], sorted()), "") << "tree of " << leaf << ", epsilon " << epsilon;
      for (int k = 0; k < 20; ++k)
        tree[0].add(draw(1'000)), tree[0] += sketch_of(draw(77 * (k + 1)), epsilon);
      ASSERT_EQ(fault(tree[0], sorted()), "") << "mixed with " << leaf << ", epsilon " << epsilon;
      const double log2 = std::log2(std::max(2.0, epsilon * static_cast<double>(all.size())));
      EXPECT_LE(static_cast<double>(tree[0].to_bytes().size()) / 8,
                100 + (log2 + 4) * (2 * log2 + 4) / epsilon);
    }
}

TEST(stats_sketch, merging_keeps_what_is_simple) {
  const std::vector<double> x = gaussian_values(3'000, 22), y = gaussian_values(40'000, 23);
  const quantile_sketch fine = sketch_of(x, 0.001), coarse = sketch_of(y, 0.01), none(1, 0.01);
  quantile_sketch a = none, b = coarse;
  a.merge(coarse);
  EXPECT_EQ(a.to_bytes(), coarse.to_bytes()) << "nothing and a sketch is the sketch";
  b.merge(none);
  EXPECT_EQ(b.to_bytes(), coarse.to_bytes());
  a.merge(fine);
  EXPECT_EQ(a.epsilon(), 0.01) << "the larger";
  b = fine;
  b.merge(coarse);
  EXPECT_EQ(b.epsilon(), 0.01);
  std::vector<double> both = x;
  both.insert(both.end(), y.begin(), y.end());
  std::sort(both.begin(), both.end());
  EXPECT_EQ(fault(a, both), "");
  EXPECT_EQ(fault(b, both), "");
  a.merge(a);
  EXPECT_EQ(a.count(0), 86'000);
  EXPECT_EQ(coarse.count(0), 40'000) << "a copy is a sketch of its own";
  a.reset();
  EXPECT_EQ(a.to_bytes(), none.to_bytes());
}

TEST(stats_sketch, ranks_at_the_edges) {
  quantile_sketch q(1, 0.01);
  const auto rank = [&](double v) {
    const auto r = q.rank(0, v);
    EXPECT_EQ(r.lowest_rank, r.highest_rank);
    return r.lowest_rank;
  };
  EXPECT_EQ(rank(3), 0);
  q.add(std::vector<double>{-0.0, 0.0, 5, -2, 5});
  EXPECT_EQ(rank(-infinity), 0);
  EXPECT_EQ(rank(-2), 1);
  EXPECT_EQ(rank(-0.0), 3);
  EXPECT_EQ(rank(0.0), 3);
  EXPECT_EQ(rank(4.9), 3);
  EXPECT_EQ(rank(5), 5);
  EXPECT_EQ(rank(infinity), 5);
  q.add(std::vector<double>{nan});
  EXPECT_TRUE(std::isnan(q.rank(0, 1).value));
}

TEST(stats_sketch, images_come_back_and_damaged_ones_are_refused) {
  const std::vector<double> x = gaussian_values(30'000, 24);
  quantile_sketch q(2, 0.02, nan_policy::omit);
  for (const std::size_t rows : {0u, 3u, 700u, 14'000u}) {
    q.add(matrix_view<const double>(x.data(), rows, 2));
    const auto image = q.to_bytes();
    quantile_sketch same = quantile_sketch::from_bytes(image);
    EXPECT_EQ(same.to_bytes(), image);
    quantile_sketch further = q;
    for (quantile_sketch* each : {&same, &further}) {
      each->add(matrix_view<const double>(x.data(), 9'000, 2));
      each->merge(q);
    }
    EXPECT_EQ(same.to_bytes(), further.to_bytes()) << "both go on alike";
  }
  const auto image = sketch_of(std::vector<double>(x.begin(), x.begin() + 200), 0.3).to_bytes();
  for (std::size_t k = 0; k < image.size(); ++k) {
    auto bad = image;
    bad[k] ^= std::byte{static_cast<unsigned char>(1u << k % 8)};
    EXPECT_THROW((void)quantile_sketch::from_bytes(bad), error) << k;
    EXPECT_THROW((void)quantile_sketch::from_bytes(std::span(image).first(k)), error) << k;
  }
  struct row {
    std::size_t place;
    std::uint64_t word;
  };
  constexpr std::uint64_t huge = std::uint64_t{1} << 54, not_a_number = 0x7ff8000000000000;
  const row rows[] = {
      {16, not_a_number},  // epsilon
      {24, 0},             // columns
      {24, huge},
      {32, 2},     // whether there was a NaN
      {40, huge},  // a count above 2^53
      {40, 900},   // a count that the levels do not hold
      {48, huge},  // the error counted
      {64, 1},     // a block shorter than what it holds
      {72, 70},    // a stage
      {80, not_a_number},
      {80, 0x7fe0000000000000},   // a minimum above the maximum
      {96, 63},                   // levels
      {104, huge},                // values of a level
      {112, 2},                   // which value the next thinning keeps
      {120, huge},                // thinnings
      {128, not_a_number},        // a value
      {128, 0x7fe0000000000000},  // values out of order
  };
  for (const row& r : rows) {
    auto bad = image;
    put_word(bad, r.place, r.word);
    mend_hash(bad);
    EXPECT_THROW((void)quantile_sketch::from_bytes(bad), error) << r.place << ' ' << r.word;
  }
}

// With the hash mended, what is accepted must at least be a sketch: it answers, merges and goes on.
TEST(stats_sketch, forged_images_do_no_harm) {
  const std::vector<double> x = gaussian_values(500, 25);
  const auto image = sketch_of(x, 0.1).to_bytes();
  std::mt19937_64 g(26);
  int accepted = 0;
  for (int run = 0; run < 20'000; ++run) {
    auto bad = image;
    for (std::uint64_t k = 0; k <= g() % 3; ++k) {
      const std::size_t place = 16 + 8 * (g() % ((image.size() - 24) / 8));
      if (g() % 2 == 0)
        put_word(bad, place, g() >> g() % 64);
      else
        bad[place + g() % 8] ^= std::byte{static_cast<unsigned char>(1u << g() % 8)};
    }
    mend_hash(bad);
    try {
      quantile_sketch q = quantile_sketch::from_bytes(bad);
      ++accepted;
      q.merge(quantile_sketch(q));
      q.add(x);
      const auto b = q.bounds(0, 0.4);
      EXPECT_LE(b.lowest_rank, b.highest_rank);
    } catch (const error&) {
    }
  }
  EXPECT_GT(accepted, 100);
}

TEST(stats_sketch, one_that_was_moved_from_says_so) {
  quantile_sketch q(2, 0.1);
  const quantile_sketch taken = std::move(q);
  EXPECT_EQ(q.cols(), 0u);  // NOLINT(bugprone-use-after-move)
  const std::function<void()> calls[] = {[&] { q.add(std::vector<double>{1}); },
                                         [&] { q.merge(taken); },
                                         [&] { quantile_sketch(taken).merge(q); },
                                         [&] { (void)q.quantile(0, 0.5); },
                                         [&] { (void)q.rank(0, 1); },
                                         [&] { (void)q.bounds(0, 1); },
                                         [&] { (void)q.count(0); },
                                         [&] { (void)q.epsilon(); },
                                         [&] { (void)q.to_bytes(); },
                                         [&] { q.reset(); }};
  for (const auto& call : calls) EXPECT_THROW(call(), error);
  const quantile_sketch copy = q;
  EXPECT_EQ(copy.cols(), 0u);
  q = taken;
  EXPECT_EQ(q.cols(), 2u);
}

// The second column finds no memory, or a later part of the first: the sketch is as it was, and goes on. The
// data are larger than anything that earlier tests may have left in the heap.
TEST(stats_sketch, a_block_is_in_as_a_whole_or_not_at_all) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer needs address space of its own";
#endif
  constexpr std::size_t rows = std::size_t{1} << 25;
  void* const large =
      mmap(nullptr, rows * 2 * sizeof(double), PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(large, MAP_FAILED);
  quantile_sketch q(2, 1e-9);
  const std::vector<double> x = gaussian_values(2'000, 27);
  q.add(matrix_view<const double>(x.data(), 1'000, 2));
  const auto before = q.to_bytes();
  rlimit saved{};
  getrlimit(RLIMIT_AS, &saved);
  for (const std::size_t room : {std::size_t{1} << 20, std::size_t{700} << 20}) {
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit tight = saved;
    tight.rlim_cur = static_cast<rlim_t>(pages) * 4096 + room;
    setrlimit(RLIMIT_AS, &tight);
    bool refused = false;
    try {
      q.add(matrix_view<const double>(static_cast<const double*>(large), rows, 2));
    } catch (const std::bad_alloc&) {
      refused = true;
    }
    setrlimit(RLIMIT_AS, &saved);
    EXPECT_TRUE(refused) << room;
    EXPECT_EQ(q.to_bytes(), before);
    EXPECT_EQ(q.count(0), q.bounds(0, 0.5).count);
  }
  munmap(large, rows * 2 * sizeof(double));
  q.add(matrix_view<const double>(x.data(), 1'000, 2));
  EXPECT_EQ(q.count(1), 2'000);
}

}  // namespace
}  // namespace tmk
