// SPDX-License-Identifier: Apache-2.0
// Random streams: seeded, filled, copied and jumped ahead, saved and resumed, shared by threads, and points.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <tmk/random.hpp>
#include <vector>

namespace {

double mean(const std::vector<double>& x) {
  return std::accumulate(x.begin(), x.end(), 0.0) / static_cast<double>(x.size());
}

}  // namespace

int main() {
  tmk::stream g(tmk::generator::mt19937, 2026);
  std::vector<double> x(1'000'000), y(x.size());

  tmk::exponential(g, x, {.rate = 2.0});
  std::printf("waiting time      %.4f on average\n", mean(x));
  tmk::gaussian(g, x, {.mean = 20, .sd = 3}, tmk::gaussian_method::inversion);
  std::printf("temperature       %.4f on average\n", mean(x));

  tmk::stream h = g;
  h.skip(1'000'000'000'000);
  std::printf("a word from here  %08x, and from 10^12 words on %08x\n", tmk::stream(g)(), h());

  const std::string path = (std::filesystem::temp_directory_path() / "run.tmk").string();
  g.save(path);
  tmk::uniform(g, x);
  auto again = tmk::stream::load(path);
  std::filesystem::remove(path);
  tmk::fill_parallel(again, y, tmk::distribution::uniform{0, 1}, 2);
  std::printf("resumed, on two threads: %s\n", x == y ? "the same numbers" : "other numbers");

  std::vector<std::int32_t> dice(12);
  tmk::uniform_int(g, dice, {.low = 1, .high = 6});
  std::printf("dice             ");
  for (const int d : dice) std::printf(" %d", d);
  std::puts("");

  tmk::stream points = tmk::stream::sobol(2);
  tmk::uniform(points, x);
  std::ptrdiff_t within = 0;
  for (std::size_t i = 0; i < x.size(); i += 2) within += x[i] * x[i] + x[i + 1] * x[i + 1] < 1;
  std::printf("pi                %.5f by Sobol points\n",
              8.0 * static_cast<double>(within) / static_cast<double>(x.size()));

  std::vector<int> deck(8);
  std::iota(deck.begin(), deck.end(), 1);
  std::shuffle(deck.begin(), deck.end(), g);
  for (const int card : deck) std::printf("%d ", card);
  std::puts("");

  try {
    tmk::rayleigh(g, x, {.scale = -1});
  } catch (const tmk::error& e) {
    std::puts(e.what());
  }
}
