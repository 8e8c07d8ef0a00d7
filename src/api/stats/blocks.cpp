// SPDX-License-Identifier: Apache-2.0
// Sums of a block about its own mean. A shift close to the mean is subtracted before powers are summed, so
// that large offsets do not show in the result.
#include "api/stats/blocks.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "api/stats/block.hpp"
#include "api/call/threads.hpp"

namespace tmk::detail {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// Enough rows to hide the cost of a block's p by p sums, else what fits the second-level cache.
std::size_t block_rows(std::size_t cols, bool cross_product) {
  constexpr std::size_t elements = 16384;
  return std::max(elements / cols, std::size_t{cross_product ? 512u : 64u});
}

// One computation of the C interface over a block. Powers of a task's state from an earlier call would only
// be in the way: every call has a task of its own.
struct computation {
  const char* function;
  int32_t p, n;
  task_handle task;

  computation(const char* name, block& b)
      : function(name),
        p(static_cast<int32_t>(b.p)),
        n(static_cast<int32_t>(b.n)),
        task(new_task(name, &p, &n, b.x.data(), b.weights.empty() ? nullptr : b.weights.data())) {}
  computation(const computation&) = delete;

  void operator()(int32_t (*compute)(SSTask*, uint32_t, uint32_t, uint32_t, uint32_t,
                                     const ThreadingService*),
                  uint32_t low, uint32_t high, uint32_t method) const {
    check_status(function, compute(task.get(), low, high, method, 0, tmk_threading_serial()));
  }
};

std::vector<double> means(const char* function, block& b) {
  std::vector<double> mean(b.p);
  const computation run(function, b);
  __vtsdSSEditMoments(run.task.get(), mean.data(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  run(_vtsdSSBasic, VTS_SS_ESTIMATE_MEAN, 0, VTS_SS_METHOD_FAST);
  return mean;
}

struct extrema {
  std::vector<double> min, max;
};

extrema find_extrema(const char* function, block& b) {
  extrema e{std::vector<double>(b.p, infinity), std::vector<double>(b.p, -infinity)};
  const computation run(function, b);
  __vtsdSSEditTask(run.task.get(), VTS_SS_PARAM_MINIMUM, e.min.data());
  __vtsdSSEditTask(run.task.get(), VTS_SS_PARAM_MAXIMUM, e.max.data());
  run(_vtsdSSMinmax, VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM, 0, VTS_SS_METHOD_FAST);
  return e;
}

void subtract(double* x, std::size_t n, double shift) {
#pragma omp simd
  for (std::size_t k = 0; k < n; ++k) x[k] -= shift;
}

// Count, weight and mean weight of a block that is not empty. Weights are squared after the largest has been
// brought near 1 by a power of two.
variable_sums weights_of(const block& b, bool counts) {
  variable_sums r{.n = static_cast<std::int64_t>(b.n), .weight = static_cast<double>(b.n), .mean_weight = 1};
  if (b.weights.empty()) return r;
  const int exponent = std::ilogb(*std::max_element(b.weights.begin(), b.weights.end()));
  const double factor = std::ldexp(1.0, -std::clamp(exponent, -1000, 1000));
  double scaled = 0, squares = 0;
  r.weight = 0;
  for (const double w : b.weights) {
    const double near_one = w * factor;
    r.weight += w;
    scaled += near_one;
    squares += near_one * near_one;
  }
  r.mean_weight = squares / scaled / factor;
  if (counts) r.n = static_cast<std::int64_t>(r.weight), r.mean_weight = 1;
  return r;
}

// The sums of a block that has lost its NaNs, or propagates them. Destroys the block's values.
moment_sums sums_of(const char* function, block& b, const moments_options& options) {
  const bool cross_product = options.cross_product;
  moment_sums sums = no_sums(b.p, cross_product);
  if (b.n == 0) return sums;
  const variable_sums common = weights_of(b, options.weights_are_counts);

  const extrema e = find_extrema(function, b);
  const std::vector<double> rough = means(function, b);
  for (std::size_t j = 0; j < b.p; ++j) {
    variable_sums& v = sums.variables[j] = common;
    const bool nan = std::isnan(rough[j]) && contains_nan(b.column(j), b.n);
    v.min = nan ? rough[j] : e.min[j];
    v.max = nan ? rough[j] : e.max[j];
    // Between the extrema: of a constant the differences are exactly 0, and a sum that overflowed is no
    // shift.
    const double middle = std::fmax(std::fmin(rough[j], e.max[j]), e.min[j]);
    v.shift = std::isfinite(middle) ? middle : 0;
    subtract(b.column(j), b.n, v.shift);
  }

  std::vector<double> offset = means(function, b), c2(b.p), c3(b.p), c4(b.p);
  const computation run(function, b);
  const int32_t storage = VTS_SS_LOWER;
  __vtsdSSEditMoments(run.task.get(), offset.data(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  __vtsdSSEditSums(run.task.get(), nullptr, nullptr, nullptr, nullptr, c2.data(), c3.data(), c4.data());
  const bool products = cross_product && b.p > 1;
  if (products) __vtsdSSEditCP(run.task.get(), nullptr, nullptr, sums.joint.cross.data(), &storage);
  run(_vtsdSSBasic,
      VTS_SS_ESTIMATE_CENTRAL_SUM2 | VTS_SS_ESTIMATE_CENTRAL_SUM3 | VTS_SS_ESTIMATE_CENTRAL_SUM4,
      products ? VTS_SS_ESTIMATE_HIGH_CROSS : 0, VTS_SS_METHOD_TWO_PASS);
  for (std::size_t j = 0; j < b.p; ++j) {
    variable_sums& v = sums.variables[j];
    v.offset = offset[j], v.c2 = c2[j], v.c3 = c3[j], v.c4 = c4[j];
    if (cross_product) sums.joint.shift[j] = v.shift, sums.joint.offset[j] = v.offset;
  }
  if (cross_product && !products) sums.joint.cross = c2;
  if (cross_product)
    sums.joint.n = common.n, sums.joint.weight = common.weight, sums.joint.mean_weight = common.mean_weight;
  return sums;
}

moment_sums sums_without_nan(const char* function, block& b, const moments_options& options) {
  moment_sums sums = no_sums(b.p, options.cross_product);
  if (options.cross_product) {
    block complete = without_nan(b, 0, b.p);
    sums.joint = sums_of(function, complete, options).joint;
  }
  moments_options alone = options;
  alone.cross_product = false;
  for (std::size_t j = 0; j < b.p; ++j) {
    block column = without_nan(b, j, j + 1);
    sums.variables[j] = sums_of(function, column, alone).variables[0];
  }
  return sums;
}

}  // namespace

moment_sums no_sums(std::size_t cols, bool cross_product) {
  moment_sums sums;
  sums.variables.resize(cols);
  if (cross_product) {
    sums.joint.shift.resize(cols);
    sums.joint.offset.resize(cols);
    sums.joint.cross.resize(cols * (cols + 1) / 2);
  }
  return sums;
}

moment_sums summarise(const char* function, const data_view& x, const weight_view& weights,
                      const moments_options& options, int threads) {
  const std::size_t rows = rows_of(x), cols = cols_of(x), length = block_rows(cols, options.cross_product);
  const std::size_t blocks = (rows + length - 1) / length;
  const auto summarise_block = [&](block& b, std::size_t number) {
    read_block(b, x, weights, number * length, std::min(rows, (number + 1) * length));
    if (options.nan == nan_policy::omit && contains_nan(b.x.data(), b.x.size()))
      return sums_without_nan(function, b, options);
    return sums_of(function, b, options);
  };

  // Blocks are joined as a balanced tree: a rounding is passed on by as many joins as the count of blocks has
  // binary digits. Place k of the row waits with 2^k blocks for as many later ones.
  std::vector<std::optional<moment_sums>> waiting;
  const auto join = [&](moment_sums sums) {
    std::size_t k = 0;
    for (; k < waiting.size() && waiting[k]; ++k) {
      merge(*waiting[k], sums);
      sums = *std::exchange(waiting[k], std::nullopt);
    }
    if (k == waiting.size()) waiting.emplace_back();
    waiting[k] = std::move(sums);
  };
  // In waves: long enough to be worth starting threads, short enough for their sums to stay in memory.
  const std::size_t workers = std::min(static_cast<std::size_t>(usable_threads(threads)), blocks);
  const std::size_t matrix = options.cross_product ? cols * cols : cols;
  const std::size_t wave = workers * std::clamp<std::size_t>((std::size_t{1} << 22) / matrix, 1, 128);
  std::vector<block> scratch(workers);
  std::vector<moment_sums> parts(std::min(wave, blocks));
  for (std::size_t first = 0; first < blocks; first += wave) {
    const std::size_t count = std::min(wave, blocks - first);
    std::atomic<std::size_t> next =
        0;  // who is free takes it: on a busy machine threads do not get equal time
    for_each_item(workers, threads, [&](std::size_t worker) {
      for (std::size_t k; (k = next++) < count;) parts[k] = summarise_block(scratch[worker], first + k);
    });
    for (std::size_t k = 0; k < count; ++k) join(std::move(parts[k]));
  }
  moment_sums sums = no_sums(cols, options.cross_product);
  for (std::optional<moment_sums>& earlier : waiting)
    if (earlier) {
      merge(*earlier, sums);
      sums = std::move(*earlier);
    }
  return sums;
}

}  // namespace tmk::detail
