// SPDX-License-Identifier: Apache-2.0
// What programs draw besides variates of a law: indices by weight, permutations, samples, directions, and
// points that fill a cube more evenly than random ones.
//
//   tmk::stream g = tmk::random(2026);
//   tmk::discrete die(std::vector{1.0, 1.0, 1.0, 1.0, 1.0, 2.0});
//   std::vector<int> thrown(1000);  die(g, thrown);                0 to 5, 5 twice as often
//   tmk::shuffle(g, deck);
//   auto rows = tmk::choice(g, 150, 20);                           20 of 150 indices, none twice
//   std::vector<double> x(1024 * 6);
//   tmk::sobol_points(x, 6, {.scrambling = tmk::scrambling::owen, .seed = 7});
//
// A call that is refused throws tmk::error and leaves stream and arrays alone.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <ranges>
#include <span>
#include <tmk/random.hpp>
#include <utility>
#include <vector>

namespace tmk {

/// Indices 0 to size() - 1, index i with probability weights[i] / (their sum), to within 2^-52 of it: an
/// alias table (A. J. Walker 1977; M. D. Vose, A linear algorithm for generating random numbers with a given
/// distribution, 1991). Building takes time in proportion to the weights, an index one uniform double
/// whatever their number.
class discrete {
 public:
  /// 1 to 2^31 - 1 weights, finite, none negative, not all zero; else tmk::error.
  explicit discrete(std::span<const double> weights);

  void operator()(stream& g, std::span<std::int32_t> r) const;

  [[nodiscard]] std::size_t size() const { return cells_.size(); }
  /// The weight of an index divided by the sum of all. Throws for an index that is not there.
  [[nodiscard]] double probability(std::size_t index) const;

 private:
  // Cell i is index i up to `share` of its width, and `alias` beyond.
  struct cell {
    double share;
    std::int32_t alias;
  };
  std::vector<cell> cells_;
  std::vector<double> probabilities_;
};

namespace detail {

std::uint64_t long_index_below(stream& g, std::uint64_t bound);

// Each of 0 to bound - 1 as likely as any other (D. Lemire, Fast random integer generation in an interval,
// ACM TOMACS 29, 2019). bound is positive.
inline std::uint64_t index_below(stream& g, std::uint64_t bound) {
  if (bound >> 32 != 0) return long_index_below(g, bound);
  std::uint64_t product = g() * bound;
  if (static_cast<std::uint32_t>(product) < bound) {
    const auto narrow = static_cast<std::uint32_t>(bound);
    const std::uint32_t surplus = (0 - narrow) % narrow;
    while (static_cast<std::uint32_t>(product) < surplus) product = g() * bound;
  }
  return product >> 32;
}

}  // namespace detail

/// Puts the elements of a range into random order, every order being as likely as any other as far as the
/// generator's period allows (R. A. Fisher, F. Yates; R. Durstenfeld, Algorithm 235, CACM 7, 1964).
template <std::ranges::random_access_range Range>
requires std::ranges::sized_range<Range> && std::permutable<std::ranges::iterator_t<Range>>
void shuffle(stream& g, Range&& r) {
  const auto first = std::ranges::begin(r);
  for (auto left = static_cast<std::uint64_t>(std::ranges::size(r)); left > 1; --left) {
    const auto k = static_cast<std::iter_difference_t<decltype(first)>>(detail::index_below(g, left));
    std::ranges::iter_swap(first + k, first + static_cast<decltype(k)>(left - 1));
  }
}

/// 0 to n - 1 in random order.
[[nodiscard]] std::vector<std::size_t> permutation(stream& g, std::size_t n);

struct choice_options {
  bool replace = false;  ///< an element may come more than once
  // NOLINTNEXTLINE(readability-redundant-member-init): for callers that warn of missing initializers
  std::span<const double> weights = {};  ///< one for each element; none: all the same
};

/// `count` of the indices 0 to n - 1, in random order. With replacement, each pick is like the first.
/// Without, a pick is proportional to the weights of those that are left (P. S. Efraimidis, P. G. Spirakis,
/// Weighted random sampling with a reservoir, 2006); equal ones take memory in proportion to `count` where
/// that is much less than n. Throws tmk::error for more picks than there are elements (of positive weight),
/// for n of 0 unless count is 0, and for weights as tmk::discrete or of another number than n.
[[nodiscard]] std::vector<std::size_t> choice(stream& g, std::size_t n, std::size_t count,
                                              const choice_options& options = {});

/// The same of the elements of a span: copies of those that choice picks.
template <std::ranges::random_access_range Range>
[[nodiscard]] auto sample(stream& g, const Range& from, std::size_t count,
                          const choice_options& options = {}) {
  std::vector<std::ranges::range_value_t<Range>> picked;
  picked.reserve(count);
  for (const std::size_t i : choice(g, static_cast<std::size_t>(std::ranges::size(from)), count, options))
    picked.push_back(std::ranges::begin(from)[static_cast<std::ranges::range_difference_t<Range>>(i)]);
  return picked;
}

/// r[i dimensions] to r[(i + 1) dimensions - 1] are a point of the unit sphere, every direction being as
/// likely as any other (M. E. Muller, CACM 2, 1959). Throws tmk::error for dimensions below 1, and where they
/// do not divide the size of r.
void uniform_on_sphere(stream& g, std::span<double> r, int dimensions);

enum class scrambling {
  none,           ///< Sobol's own points; the first is the origin
  digital_shift,  ///< the bits of each coordinate are turned by those of a random word
  owen,           ///< each bit is turned by chance depending on those above it: errors fall faster
};

struct sobol_options {
  tmk::scrambling scrambling = tmk::scrambling::none;
  std::uint64_t seed = 0;  ///< of shift or scrambling; goes through tmk::seed_sequence
  std::uint32_t skip = 0;  ///< points left out at the beginning
};

/// Points skip, skip + 1, ... of Sobol's sequence in the order of the Gray code, coordinate after coordinate,
/// with the direction numbers of S. Joe and F. Y. Kuo (2008). Coordinates have 32 bits and are at least 0 and
/// less than 1; those of scrambled points are in the middle between two such numbers, never 0. Use a count of
/// points that is a power of two, and skip multiples of it. Scrambled points of different seeds are
/// independent, and the mean of their means has a standard error to go by (A. B. Owen 1995). Throws
/// tmk::error for dimensions outside 1 to 1111, where they do not divide the size of r, and for more than
/// 2^32 points.
void sobol_points(std::span<double> r, int dimensions, const sobol_options& options = {});

struct latin_options {
  bool centred = false;  ///< points in the middle of their cells
};

/// n = r.size() / dimensions points, of which each of n equal intervals of each coordinate has one (M. D.
/// McKay, R. J. Beckman, W. J. Conover, Technometrics 21, 1979). Throws tmk::error as uniform_on_sphere.
void latin_hypercube(stream& g, std::span<double> r, int dimensions, const latin_options& options = {});

}  // namespace tmk
