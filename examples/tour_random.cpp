// SPDX-License-Identifier: Apache-2.0
// The tour's page of random streams: three generators drawn and shown, a stream saved and resumed, a jump.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <tmk/random.hpp>
#include <vector>

#include "tour.hpp"

namespace {

constexpr int columns = 24, rows = 6;

// Bars of equal width over the interval, the tallest of full height.
struct histogram {
  std::string title;
  int height[columns] = {};

  histogram(std::string name, const std::vector<double>& x, double low, double high)
      : title(std::move(name)) {
    int count[columns] = {};
    for (const double value : x)
      if (value >= low && value < high) ++count[static_cast<int>((value - low) / (high - low) * columns)];
    const int tallest = *std::max_element(count, count + columns);
    for (int i = 0; i < columns; ++i) height[i] = (count[i] * rows + tallest / 2) / tallest;
  }
};

}  // namespace

void random_page() {
  std::puts("Random streams\n");
  std::puts("1. A million numbers from each of three generators, each under another law:");
  std::vector<double> x(1'000'000);
  std::vector<histogram> shown;
  tmk::stream twister(tmk::generator::mt19937, 42);
  tmk::gaussian(twister, x, {.mean = 0, .sd = 1});
  shown.emplace_back("MT19937, Gaussian", x, -3, 3);
  tmk::stream counter(tmk::generator::philox4x32x10, 42);
  tmk::exponential(counter, x, {.rate = 1});
  shown.emplace_back("PHILOX, exponential", x, 0, 5);
  tmk::stream vectors(tmk::generator::sfmt19937, 42);
  tmk::gumbel(vectors, x, {});
  shown.emplace_back("SFMT19937, Gumbel", x, -2, 6);
  for (int row = rows; row > 0; --row) {
    for (const histogram& h : shown) {
      std::fputs("  ", stdout);
      for (const int height : h.height) std::fputc(height >= row ? '#' : ' ', stdout);
    }
    std::fputc('\n', stdout);
  }
  for (const histogram& h : shown) std::printf("  %-*s", columns, h.title.c_str());

  std::puts("\n\n2. A stream saved and resumed goes on as if nothing had happened:");
  const std::vector<std::byte> image = twister.save();
  std::vector<double> next(3), again(3);
  tmk::uniform(twister, next, {});
  tmk::stream resumed = tmk::stream::load(image);
  tmk::uniform(resumed, again, {});
  std::printf("  %.6f %.6f %.6f from the stream\n  %.6f %.6f %.6f from its image of %zu bytes\n\n", next[0],
              next[1], next[2], again[0], again[1], again[2], image.size());

  const auto start = std::chrono::steady_clock::now();
  twister.skip(1'000'000'000'000'000);
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  tmk::uniform(twister, next, {});
  std::printf("3. Skipping 10^15 numbers of MT19937 took %.0f ms; the next one is %.6f.\n", time.count(),
              next[0]);
}
