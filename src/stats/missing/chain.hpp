// SPDX-License-Identifier: Apache-2.0
// A chain of data augmentation (M. Tanner and W. Wong, JASA 82, 1987): holes drawn given the model, and the
// model given the completed data under Jeffreys' prior, which is the same in every round. Observations of
// holes alone are left out, since they would only slow the chain down; they are imputed from its last model.
#pragma once

#include "stats/missing/posterior.hpp"
#include "stats/missing/precision.hpp"
#include "stats/missing/standardised.hpp"

namespace tmk::stats::missing {

class chain {
 public:
  // `observed` are the sums of observed products. The stream stays the caller's.
  chain(const standardised_data& data, const square<double>& observed, VtsStreamHandle stream);

  // Both functions throw `failed`.
  void advance(square<double>& theta);
  // All holes, in the caller's units, by observation and then by variable.
  void impute(const square<double>& theta, double* imputed);

 private:
  template <class Keep>
  void draw_holes(const square<double>& theta, ptrdiff_t begin, square<double>* half, const Keep& keep);

  const standardised_data& data_;
  const square<double>& observed_;
  VtsStreamHandle stream_;
  ptrdiff_t begin_;
  completion completion_;
  precision_model model_;
  posterior_step<double> posterior_;
  prior_parameters<double> prior_;
  square<double> half_, sums_;
  std::vector<double> normals_;
};

}  // namespace tmk::stats::missing
