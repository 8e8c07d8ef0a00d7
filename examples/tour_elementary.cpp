// SPDX-License-Identifier: Apache-2.0
// The tour's page of elementary functions: errors and times of a sine and a power and the C library's, and
// arguments that are easy to get wrong.
#include <cmath>
#include <cstdio>
#include <random>
#include <tmk/math.hpp>
#include <vector>

#include "measured.hpp"
#include "tour.hpp"

namespace {

constexpr std::size_t count = 1000;

std::vector<double> drawn(double low, double high, unsigned seed) {
  std::mt19937 generate(seed);
  std::uniform_real_distribution<double> draw(low, high);
  std::vector<double> x(count);
  for (double& v : x) v = draw(generate);
  return x;
}

// ours(result, level) and theirs(i), with exact(i) to judge them by.
template <class Ours, class Theirs, class Exact>
void compare(const char* name, Ours ours, Theirs theirs, Exact exact) {
  std::vector<double> y(count);
  const auto loop = [&] {
    for (std::size_t i = 0; i < count; ++i) y[i] = theirs(i);
  };
  const double their_time = nanoseconds_per_element(count, loop);
  std::printf("  %-28s %9.2f ulp %8.2f ns\n", name, worst_ulp(y, exact), their_time);
  struct row {
    tmk::accuracy level;
    const char* text;
  };
  constexpr row rows[] = {{tmk::accuracy::high, "tmk, high accuracy"},
                          {tmk::accuracy::low, "tmk, low accuracy"},
                          {tmk::accuracy::fast, "tmk, fast"}};
  for (const row& r : rows) {
    const double time = nanoseconds_per_element(count, [&] { ours(y, r.level); });
    const double ulp = worst_ulp(y, exact);
    std::printf(ulp < 1000 ? "  %-28s %9.2f ulp %8.2f ns  %5.1f times as fast\n"
                           : "  %-28s %9.1e ulp %8.2f ns  %5.1f times as fast\n",
                r.text, ulp, time, their_time / time);
  }
}

double one(void (*function)(std::span<const double>, std::span<double>), double x) {
  double y;
  function({&x, 1}, {&y, 1});
  return y;
}

}  // namespace

void elementary_page() {
  std::puts("Elementary functions\n");
  std::puts(
      "1. A thousand sines of angles between -100 and 100, and as many powers x^y with x between 0 and 100,");
  std::puts("   y between -10 and 10: largest error and time of an element, compared with the C library.");
  const std::vector<double> angles = drawn(-100, 100, 1), x = drawn(0, 100, 2), y = drawn(-10, 10, 3);
  compare(
      "sin, the C library", [&](auto& r, tmk::accuracy level) { tmk::sin(angles, r, level); },
      [&](std::size_t i) { return std::sin(angles[i]); },
      [&](std::size_t i) { return std::sin(static_cast<long double>(angles[i])); });
  compare(
      "pow, the C library", [&](auto& r, tmk::accuracy level) { tmk::pow(x, y, r, level); },
      [&](std::size_t i) { return std::pow(x[i], y[i]); },
      [&](std::size_t i) {
        return std::pow(static_cast<long double>(x[i]), static_cast<long double>(y[i]));
      });

  std::puts("\n2. Arguments that are easy to get wrong:");
  const auto show = [](const char* text, double value) { std::printf("  %-28s %.17g\n", text, value); };
  show("sin(10^22)", one([](auto a, auto r) { tmk::sin(a, r); }, 1e22));
  show("sin(nearest double to pi)", one([](auto a, auto r) { tmk::sin(a, r); }, M_PI));
  show("tan(nearest double to pi/2)", one([](auto a, auto r) { tmk::tan(a, r); }, M_PI / 2));
  show("cospi(1/3 of a half turn)", one([](auto a, auto r) { tmk::cospi(a, r); }, 1.0 / 3));
  show("sind(30 degrees)", one([](auto a, auto r) { tmk::sind(a, r); }, 30));
  show("tand(10^15 + 45 degrees)", one([](auto a, auto r) { tmk::tand(a, r); }, 1e15 + 45));
  double base = 1 + 0x1p-52, exponent = 1e16, power;
  tmk::pow({&base, 1}, {&exponent, 1}, {&power, 1});
  show("(1 + 2^-52)^(10^16)", power);
}
