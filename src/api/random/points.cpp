// SPDX-License-Identifier: Apache-2.0
// Points of a cube and of a sphere.
#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#include <tmk/sampling.hpp>

#include "api/call/refuse.hpp"
#include "api/call/settings.hpp"
#include "random/generators/owen.hpp"
#include "random/generators/scale.hpp"
#include "random/generators/sobol_directions.hpp"

namespace tmk {

namespace {

// The points that r has room for.
std::size_t points_in(const char* function, std::span<double> r, int dimensions, int most) {
  detail::refuse_unless_in(function, "dimensions", dimensions, 1, most);
  detail::check_data(function, {"r", {r.data(), r.size()}, sizeof(double)});
  const auto width = static_cast<std::size_t>(dimensions);
  if (r.size() % width != 0)
    detail::refuse_value(function, "r.size()", detail::number(r.size()),
                         "a multiple of dimensions, " + detail::number(dimensions));
  return r.size() / width;
}

}  // namespace

void uniform_on_sphere(stream& g, std::span<double> r, int dimensions) {
  points_in("uniform_on_sphere", r, dimensions, INT32_MAX);
  const auto width = static_cast<std::size_t>(dimensions);
  gaussian(g, r);
  for (std::span<double> rest = r; !rest.empty(); rest = rest.subspan(width)) {
    const std::span<double> point = rest.first(width);
    double square = 0;
    for (const double x : point) square += x * x;
    const double length = std::sqrt(square);
    for (double& x : point) x /= length;
  }
}

namespace {

using rng::direction_bits;

// Blocks of whole points as words: the sequence, then what scrambles it, then numbers.
class sobol_walk {
 public:
  sobol_walk(std::size_t dimensions, const sobol_options& options)
      : dimensions_(dimensions),
        points_(std::max<std::size_t>(1, block_words / dimensions)),
        index_(options.skip),
        options_(options),
        directions_(direction_bits * dimensions),
        x_(dimensions),
        words_(points_ * dimensions),
        scrambled_((words_.size() + rng::words_together - 1) / rng::words_together * rng::words_together) {
    rng::set_sobol_directions(static_cast<std::uint32_t>(dimensions),
                              [&](int i, std::uint32_t d) -> std::uint32_t& { return direction(i)[d]; });
    for (std::uint32_t gray = index_ ^ (index_ >> 1); gray != 0; gray &= gray - 1)
      step(std::countr_zero(gray));
    if (options.scrambling == scrambling::none) return;
    keys_ = seed_sequence(options.seed).words(dimensions);
    keys_.resize(scrambled_);
    words_.resize(scrambled_);
    for (std::size_t i = dimensions; i < keys_.size(); ++i) keys_[i] = keys_[i - dimensions];
  }

  // The next points, as many as a block or r has.
  std::size_t fill(std::span<double> r) {
    const std::size_t count = std::min(points_ * dimensions_, r.size());
    for (std::size_t i = 0; i < count; i += dimensions_) {
      std::copy(x_.begin(), x_.end(), words_.begin() + static_cast<std::ptrdiff_t>(i));
      step(std::min(std::countr_zero(++index_), direction_bits - 1));
    }
    const auto n = static_cast<int32_t>(count);
    if (options_.scrambling != scrambling::none) {
      const auto& kernels = rng::point_kernels_now();
      (options_.scrambling == scrambling::owen ? kernels.scramble : kernels.shift)(
          static_cast<int32_t>(scrambled_), words_.data(), keys_.data());
    }
    const double middle = options_.scrambling == scrambling::none ? 0 : 0x1p-33;
    rng::scale_kernels_now<double>().of_unsigned(n, words_.data(), r.data(), 0x1p-32, middle);
    return count;
  }

 private:
  static constexpr std::size_t block_words = 2048;
  std::uint32_t* direction(int i) { return directions_.data() + static_cast<std::size_t>(i) * dimensions_; }
  void step(int bit) {
    const std::uint32_t* v = direction(bit);
    for (std::size_t d = 0; d < dimensions_; ++d) x_[d] ^= v[d];
  }

  std::size_t dimensions_, points_;
  std::uint32_t index_;
  sobol_options options_;
  std::vector<std::uint32_t> directions_, x_, words_;
  std::size_t scrambled_;  // words, in whole registers
  std::vector<std::uint32_t> keys_;
};

}  // namespace

void sobol_points(std::span<double> r, int dimensions, const sobol_options& options) {
  const std::uint64_t points = points_in("sobol_points", r, dimensions, rng::sobol_table_dimensions);
  if (points + options.skip > std::uint64_t{1} << 32)
    detail::refuse_value("sobol_points", "skip", detail::number(options.skip),
                         "no more than 2^32 less the points, " + detail::number(points));
  if (options.scrambling < scrambling::none || options.scrambling > scrambling::owen)
    detail::refuse_value("sobol_points", "scrambling", detail::number(static_cast<int>(options.scrambling)),
                         "one of the enumeration");
  detail::select_first_tier();
  sobol_walk walk(static_cast<std::size_t>(dimensions), options);
  while (!r.empty()) r = r.subspan(walk.fill(r));
}

void latin_hypercube(stream& g, std::span<double> r, int dimensions, const latin_options& options) {
  const std::size_t n = points_in("latin_hypercube", r, dimensions, INT32_MAX);
  const auto width = static_cast<std::size_t>(dimensions);
  if (options.centred)
    std::ranges::fill(r, 0.5);
  else
    uniform(g, r);
  std::vector<std::size_t> cell(n);
  for (std::size_t d = 0; d < width; ++d) {
    std::iota(cell.begin(), cell.end(), std::size_t{0});
    shuffle(g, cell);
    for (std::size_t i = 0; i < n; ++i) {
      double& x = r[i * width + d];
      x = std::min((static_cast<double>(cell[i]) + x) / static_cast<double>(n), 0x1.fffffffffffffp-1);
    }
  }
}

}  // namespace tmk
