// SPDX-License-Identifier: Apache-2.0
// Deterministic starts for a robust covariance: six rough scatter matrices, each giving axes along which the
// data are measured anew (M. Hubert, P. Rousseeuw, T. Verdonck, A deterministic algorithm for robust location
// and scatter, 2012).
#pragma once

#include <vector>

#include "stats/robust/scan.hpp"

namespace tmk::stats::robust {

// Squared distances, n for each start, of standardised data variable by variable.
std::vector<std::vector<double>> start_distances(const std::vector<double>& given, size_t n, size_t p,
                                                 const ThreadingService* threading);

}  // namespace tmk::stats::robust
