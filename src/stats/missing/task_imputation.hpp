// SPDX-License-Identifier: Apache-2.0
// Imputation by the statistics task: what the caller asks for, and the two phases of the computation.
#pragma once

#include <limits>

#include "stats/missing/data.hpp"
#include "stats/missing/posterior.hpp"
#include "stats/missing/sweep.hpp"
#include "stats/task.hpp"
#include "tmk/abi/vts.h"

namespace tmk::stats::missing {

// Counts and limits of the task, defaults applied. Null pointers mean what is not wanted.
template <class Real>
struct imputation_request {
  int64_t em_rounds, rounds, imputations;
  Real accuracy;
  const Real* start;
  Real *simulations, *estimates;
  prior_parameters<Real> prior;
};

// The task's matrix of observations by variables.
template <class Real>
struct task_values {
  Real* data;
  ptrdiff_t row_stride, column_stride;
  Real& operator()(ptrdiff_t i, ptrdiff_t j) const { return data[i * row_stride + j * column_stride]; }
};

// Theta from its start to a model that changes less than the accuracy, or that the last round leaves.
template <class Real>
void run_em(const imputation_request<Real>& request, const data_rows<Real>& data,
            const square<Real>& observed, square<Real>& theta);

// The imputations, one after the other from the last theta. Throws `failed`.
template <class Real>
void run_augmentation(imputation_request<Real>& request, const data_rows<Real>& data,
                      const square<Real>& observed, VtsStreamHandle stream, const task_values<Real>& values,
                      square<Real>& theta);

// What a hole adds to the sums of products depends on how it is filled: fill(pattern, block, swept, values)
// turns the expected values, which are there, into what is to be added, and may add to `half` itself.
template <class Real, class Fill>
void fill_holes(const data_rows<Real>& data, const square<Real>& theta, swept_model<Real>& model,
                square<Real>& half, const Fill& fill) {
  const auto& kernels = row_kernels_now<Real>();
  const ptrdiff_t most = std::max<ptrdiff_t>(131072 / data.p, 1);
  std::vector<int32_t> holes(static_cast<size_t>(data.p));
  std::vector<Real> values(static_cast<size_t>(std::min(most, data.n) * data.p));
  half.clear();
  model.begin(theta);
  for (ptrdiff_t pattern = 0; pattern < data.patterns.count(); ++pattern) {
    const ptrdiff_t k = list_missing(data.patterns[pattern], data.p, holes.data());
    if (k == 0) continue;
    const square<Real>& swept = model.at(theta, data.patterns[pattern]);
    const ptrdiff_t end = data.patterns.first[static_cast<size_t>(pattern) + 1];
    for (ptrdiff_t first = data.patterns.first[static_cast<size_t>(pattern)], count; first < end;
         first += count) {
      count = std::min(end - first, most);
      const row_block<Real> block{data.width, count, data.row(first), k, holes.data()};
      kernels.products(block, swept[0], values.data());
      fill(first, block, swept, values.data());
      kernels.accumulate(block, values.data(), half[0]);
    }
  }
}

}  // namespace tmk::stats::missing
