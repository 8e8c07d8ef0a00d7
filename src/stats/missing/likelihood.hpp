// SPDX-License-Identifier: Apache-2.0
// The expectation step over all observations that have a value, and the likelihood that comes with it. With S
// the sums of products of the completed rows about the mean, residual covariances included,
//   -2 log L = N log 2 pi + sum over rows of (log det covariance + log det K_mm) + trace(K S) - holes
// where N counts observed values and K is the inverse of the covariance.
#pragma once

#include "stats/missing/precision.hpp"
#include "stats/missing/standardised.hpp"
#include "tmk/abi/threading.h"

namespace tmk::stats::missing {

constexpr ptrdiff_t block_rows = 2048;  // what a thread takes at a time; sums are joined in the blocks' order

class likelihood {
 public:
  likelihood(const standardised_data& data, const ThreadingService* threading);

  // Expected sums of products under theta, and the log likelihood of theta in standardised units. False where
  // theta's covariance is not positive definite.
  bool expect(const square<double>& theta, square<double>& sums, double& log_likelihood);

  const square<double>& observed() const { return observed_; }
  ptrdiff_t p() const { return data_.p; }

 private:
  struct part {
    square<double> half;
    log_product determinants;
    bool regular;
  };
  void run_block(size_t block, size_t worker, part& result);

  const data_rows<double>& data_;
  const ThreadingService* threading_;
  ptrdiff_t begin_;
  double rows_, holes_;  // of observations with a value
  size_t blocks_, workers_;
  square<double> observed_, half_;
  precision_model model_;
  std::vector<completion> completions_;  // one for each worker
  std::vector<part> parts_;
};

}  // namespace tmk::stats::missing
