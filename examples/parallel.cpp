// SPDX-License-Identifier: Apache-2.0
// One long call on several threads: the same bits, sooner.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>
#include <tmk/math.hpp>
#include <vector>

int main() {
  const std::vector<double> x(4'000'000, 1.25);
  std::vector<double> y(x.size()), z(x.size());
  const auto milliseconds = [&](std::vector<double>& result) {
    const auto start = std::chrono::steady_clock::now();
    tmk::sin(x, result);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  };
  std::printf("one thread: %.1f ms\n", milliseconds(y));
  const int threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  const tmk::parallel_scope scope(threads);
  std::printf("%d threads: %.1f ms\n", threads, milliseconds(z));
  std::puts(y == z ? "the same results" : "different results");
}
