// SPDX-License-Identifier: Apache-2.0
// Sums of a block about its own mean. A shift close to the mean is subtracted before powers are summed, so
// that large offsets cost no digits of the result.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "stats/pooled/block.hpp"
#include "stats/pooled/run.hpp"
#include "stats/pooled/sums.hpp"

namespace tmk::stats::pooled {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// As many rows as fit the second-level cache, but enough for the cost of a block's p by p sums to be small.
size_t block_rows(size_t columns, bool cross_product) {
  constexpr size_t elements = 16384;
  return std::max(elements / columns, size_t{cross_product ? 512u : 64u});
}

// One computation over a block. A task accumulates over its calls, so each computation has its own.
struct computation {
  int32_t p, n;
  task_handle task;

  explicit computation(const block& b)
      : p(static_cast<int32_t>(b.p)),
        n(static_cast<int32_t>(b.n)),
        task(new_task(&p, &n, b.x.data(), b.weights.empty() ? nullptr : b.weights.data())) {}
  computation(const computation&) = delete;

  void operator()(int32_t (*compute)(SSTask*, uint32_t, uint32_t, uint32_t, uint32_t,
                                     const ThreadingService*),
                  uint32_t low, uint32_t high, uint32_t method) const {
    require(compute(task.get(), low, high, method, 0, tmk_threading_serial()));
  }
};

std::vector<double> means(const block& b) {
  std::vector<double> mean(b.p);
  const computation run(b);
  __vtsdSSEditMoments(run.task.get(), mean.data(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  run(_vtsdSSBasic, VTS_SS_ESTIMATE_MEAN, 0, VTS_SS_METHOD_FAST);
  return mean;
}

struct extrema {
  std::vector<double> min, max;
};

extrema find_extrema(const block& b) {
  extrema e{std::vector<double>(b.p, infinity), std::vector<double>(b.p, -infinity)};
  const computation run(b);
  __vtsdSSEditTask(run.task.get(), VTS_SS_PARAM_MINIMUM, e.min.data());
  __vtsdSSEditTask(run.task.get(), VTS_SS_PARAM_MAXIMUM, e.max.data());
  run(_vtsdSSMinmax, VTS_SS_ESTIMATE_MINIMUM | VTS_SS_ESTIMATE_MAXIMUM, 0, VTS_SS_METHOD_FAST);
  return e;
}

// The inner loop has a fixed length so that the compiler vectorises it.
void subtract(double* x, size_t n, double shift) {
  constexpr size_t unrolled = 64;
  size_t k = 0;
  for (; k + unrolled <= n; k += unrolled)
    for (size_t l = 0; l < unrolled; ++l) x[k + l] -= shift;
  for (; k < n; ++k) x[k] -= shift;
}

// Count, weight and mean weight of a block that is not empty. Weights are squared after the largest has been
// brought near 1 by a power of two.
variable_sums weights_of(const block& b, bool counts) {
  variable_sums r{.n = static_cast<int64_t>(b.n), .weight = static_cast<double>(b.n), .mean_weight = 1};
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
  if (counts) r.n = static_cast<int64_t>(r.weight), r.mean_weight = 1;
  return r;
}

// The sums of a block whose NaNs were removed or are to propagate. Overwrites the block's values.
moment_sums sums_of(block& b, const TmkSSOptions& options) {
  const bool cross_product = options.crossProduct != 0;
  moment_sums sums = no_sums(b.p, cross_product);
  if (b.n == 0) return sums;
  const variable_sums common = weights_of(b, options.weightsAreCounts != 0);

  const extrema e = find_extrema(b);
  const std::vector<double> rough = means(b);
  for (size_t j = 0; j < b.p; ++j) {
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

  std::vector<double> offset = means(b), c2(b.p), c3(b.p), c4(b.p);
  const computation run(b);
  const int32_t storage = VTS_SS_LOWER;
  __vtsdSSEditMoments(run.task.get(), offset.data(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
  __vtsdSSEditSums(run.task.get(), nullptr, nullptr, nullptr, nullptr, c2.data(), c3.data(), c4.data());
  const bool products = cross_product && b.p > 1;
  if (products) __vtsdSSEditCP(run.task.get(), nullptr, nullptr, sums.joint.cross.data(), &storage);
  run(_vtsdSSBasic,
      VTS_SS_ESTIMATE_CENTRAL_SUM2 | VTS_SS_ESTIMATE_CENTRAL_SUM3 | VTS_SS_ESTIMATE_CENTRAL_SUM4,
      products ? VTS_SS_ESTIMATE_HIGH_CROSS : 0, VTS_SS_METHOD_TWO_PASS);
  for (size_t j = 0; j < b.p; ++j) {
    variable_sums& v = sums.variables[j];
    v.offset = offset[j], v.c2 = c2[j], v.c3 = c3[j], v.c4 = c4[j];
    if (cross_product) sums.joint.shift[j] = v.shift, sums.joint.offset[j] = v.offset;
  }
  if (cross_product && !products) sums.joint.cross = c2;
  if (cross_product)
    sums.joint.n = common.n, sums.joint.weight = common.weight, sums.joint.mean_weight = common.mean_weight;
  return sums;
}

moment_sums sums_without_nan(const block& b, const TmkSSOptions& options) {
  const bool cross_product = options.crossProduct != 0;
  moment_sums sums = no_sums(b.p, cross_product);
  if (cross_product) {
    block complete = without_nan(b, 0, b.p);
    sums.joint = sums_of(complete, options).joint;
  }
  TmkSSOptions alone = options;
  alone.crossProduct = 0;
  for (size_t j = 0; j < b.p; ++j) {
    block column = without_nan(b, j, j + 1);
    sums.variables[j] = sums_of(column, alone).variables[0];
  }
  return sums;
}

}  // namespace

moment_sums no_sums(size_t columns, bool cross_product) {
  moment_sums sums;
  sums.variables.resize(columns);
  if (cross_product) {
    sums.joint.shift.resize(columns);
    sums.joint.offset.resize(columns);
    sums.joint.cross.resize(columns * (columns + 1) / 2);
  }
  return sums;
}

moment_sums summarise(const TmkSSData& data, const TmkSSOptions& options, const ThreadingService* threading) {
  const bool cross_product = options.crossProduct != 0;
  const size_t rows = rows_of(data), columns = columns_of(data), length = block_rows(columns, cross_product);
  const size_t blocks = (rows + length - 1) / length;
  const auto summarise_block = [&](block& b, size_t number) {
    read_block(b, data, number * length, std::min(rows, (number + 1) * length));
    if (options.nanPolicy == TMK_SS_NAN_OMIT && contains_nan(b.x.data(), b.x.size()))
      return sums_without_nan(b, options);
    return sums_of(b, options);
  };

  // Blocks merge as a balanced tree, so that a rounding passes through as many merges as the count of blocks
  // has binary digits. Element k of `waiting` holds the sums of 2^k blocks until as many later ones are
  // complete.
  std::vector<std::optional<moment_sums>> waiting;
  const auto join = [&](moment_sums sums) {
    size_t k = 0;
    for (; k < waiting.size() && waiting[k]; ++k) {
      merge(*waiting[k], sums);
      sums = *std::exchange(waiting[k], std::nullopt);
    }
    if (k == waiting.size()) waiting.emplace_back();
    waiting[k] = std::move(sums);
  };
  // In waves: long enough to be worth starting threads, short enough for their sums to stay in memory.
  const size_t workers = worker_count(threading, blocks);
  const size_t matrix = cross_product ? columns * columns : columns;
  const size_t wave = workers * std::clamp<size_t>((size_t{1} << 22) / matrix, 1, 128);
  std::vector<block> scratch(workers);
  std::vector<moment_sums> parts(std::min(wave, blocks));
  for (size_t first = 0; first < blocks; first += wave) {
    const size_t count = std::min(wave, blocks - first);
    for_each_item(threading, workers, count,
                  [&](size_t k, size_t worker) { parts[k] = summarise_block(scratch[worker], first + k); });
    for (size_t k = 0; k < count; ++k) join(std::move(parts[k]));
  }
  moment_sums sums = no_sums(columns, cross_product);
  for (std::optional<moment_sums>& earlier : waiting)
    if (earlier) {
      merge(*earlier, sums);
      sums = std::move(*earlier);
    }
  return sums;
}

}  // namespace tmk::stats::pooled
