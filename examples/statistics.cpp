// SPDX-License-Identifier: Apache-2.0
// Summary statistics: a data set described, the same from blocks that come one by one, and a sketch of its
// quantiles.
#include <cstdio>
#include <limits>
#include <span>
#include <tmk/random.hpp>
#include <tmk/stats.hpp>
#include <vector>

int main() {
  constexpr std::size_t rows = 100'000, cols = 2;
  tmk::stream g(tmk::generator::philox4x32x10, 1);
  std::vector<double> data(rows * cols), weights(rows);
  tmk::gaussian(g, data, {.mean = 1e9, .sd = 1});
  tmk::uniform(g, weights);
  data[7] = std::numeric_limits<double>::quiet_NaN();

  const tmk::matrix_view<const double> x(data.data(), rows, cols);
  const tmk::summary s = tmk::describe(
      x, {.weights = weights, .threads = 2, .nan = tmk::nan_policy::omit, .orders = {0.01, 0.99}});
  for (std::size_t j = 0; j < cols; ++j)
    std::printf("variable %zu: %lld values, %lld NaN, mean %.6f, sd %.6f, median %.3f, 99 %% below %.3f\n", j,
                static_cast<long long>(s.n[j]), static_cast<long long>(s.nans[j]), s.mean[j], s.sd[j],
                s.median[j], s.quantiles(j, 1));

  // As two programs would: each takes half, one sends its state to the other.
  const std::span<const double> w(weights);
  tmk::moments first(cols, {.nan = tmk::nan_policy::omit}), second = first;
  first.add(x.block(0, rows / 2), w.first(rows / 2));
  second.add(x.block(rows / 2, rows / 2), w.last(rows / 2));
  const std::vector<std::byte> sent = second.to_bytes();
  first += tmk::moments::from_bytes(sent);
  std::printf("from halves: sd %.6f and %.6f, %zu bytes sent\n", first.sd()[0], first.sd()[1], sent.size());

  tmk::quantile_sketch q(cols, 0.001, tmk::nan_policy::omit), rest = q;
  q.add(x.block(0, rows / 2));
  rest.add(x.block(rows / 2, rows / 2));
  q += tmk::quantile_sketch::from_bytes(rest.to_bytes());
  const auto e = q.bounds(0, 0.99);
  std::printf("sketch: %.3f, of rank %lld to %lld among %lld\n", e.value,
              static_cast<long long>(e.lowest_rank), static_cast<long long>(e.highest_rank),
              static_cast<long long>(e.count));

  try {
    weights[3] = -1;
    (void)tmk::describe(x, {.weights = weights});
  } catch (const tmk::error& refused) {
    std::puts(refused.what());
  }
}
