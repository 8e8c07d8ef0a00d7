// SPDX-License-Identifier: Apache-2.0
#include "stats/missing/likelihood.hpp"

#include <numbers>

#include "stats/missing/sums.hpp"
#include "stats/pooled/run.hpp"

namespace tmk::stats::missing {
namespace {

// trace(K S) with S about the mean.
double trace_of_product(const precision_model& k, const square<double>& sums, const square<double>& theta) {
  double trace = 0;
  for (ptrdiff_t i = 1; i < sums.order; ++i)
    for (ptrdiff_t j = 1; j < sums.order; ++j) {
      const double about_mean = sums[i][j] - theta[0][i] * sums[0][j] - theta[0][j] * sums[0][i] +
                                sums[0][0] * theta[0][i] * theta[0][j];
      trace += k(i, j) * about_mean;
    }
  return trace;
}

}  // namespace

likelihood::likelihood(const standardised_data& data, const ThreadingService* threading)
    : data_(data.rows),
      threading_(threading),
      begin_(data.empty_rows()),
      rows_(static_cast<double>(data_.n - begin_)),
      holes_(static_cast<double>(data_.holes() - begin_ * data_.p)),
      blocks_(static_cast<size_t>((data_.n - begin_ + block_rows - 1) / block_rows)),
      workers_(pooled::worker_count(threading, blocks_)),
      observed_(observed_sums(data_.p, data_.n - begin_, data_.row(begin_))),
      half_(data_.p),
      model_(data_.p),
      completions_(workers_, completion(data_, std::min(block_rows, data_.n))) {
  // As many blocks in flight as stay small in memory, whatever the number of threads.
  constexpr size_t most_elements = size_t{1} << 22;
  const size_t wave = std::clamp<size_t>(most_elements / half_.values.size(), 1, 64);
  parts_.resize(std::min(wave, blocks_), part{square<double>(data_.p), {}, true});
}

void likelihood::run_block(size_t block, size_t worker, part& result) {
  const ptrdiff_t first = begin_ + static_cast<ptrdiff_t>(block) * block_rows;
  result.half.clear();
  result.determinants = {};
  result.regular = completions_[worker].expect(model_, first, std::min(first + block_rows, data_.n),
                                               result.half, result.determinants);
}

bool likelihood::expect(const square<double>& theta, square<double>& sums, double& log_likelihood) {
  if (!model_.set(theta)) return false;
  half_.clear();
  double determinants = 0;
  for (size_t first = 0; first < blocks_; first += parts_.size()) {
    const size_t count = std::min(parts_.size(), blocks_ - first);
    pooled::for_each_item(threading_, std::min(workers_, count), count,
                          [&](size_t k, size_t worker) { run_block(first + k, worker, parts_[k]); });
    for (size_t k = 0; k < count; ++k) {
      if (!parts_[k].regular) return false;
      determinants += parts_[k].determinants.value();
      for (size_t i = 0; i < half_.values.size(); ++i) half_.values[i] += parts_[k].half.values[i];
    }
  }
  complete_sums(observed_, half_, sums);
  const double observed_values = rows_ * static_cast<double>(p()) - holes_;
  log_likelihood =
      -0.5 * (observed_values * std::log(2 * std::numbers::pi) + rows_ * model_.log_determinant() +
              determinants + trace_of_product(model_, sums, theta) - holes_);
  return std::isfinite(log_likelihood);
}

}  // namespace tmk::stats::missing
