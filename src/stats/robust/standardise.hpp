// SPDX-License-Identifier: Apache-2.0
// A copy of the caller's data in units that make estimates independent of theirs: each variable less its
// median, divided by its MAD.
#pragma once

#include <cstddef>
#include <vector>

#include "stats/robust/scan.hpp"

namespace tmk::stats::robust {

struct standardised {
  size_t n, p;
  std::vector<double> x;  // variable by variable
  std::vector<double> centre, scale;

  TmkSSData data() const { return column_data(x.data(), n, p); }
  // Location and covariance in the caller's units; the covariance by rows.
  void undo(const estimate& e, double* location, double* covariance) const;
};

// The first variable whose MAD is 0, not finite, or of which a value is not finite; p if there is none.
size_t standardise(const TmkSSData& data, standardised& copy, const ThreadingService* threading);

}  // namespace tmk::stats::robust
