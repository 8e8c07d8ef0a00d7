// SPDX-License-Identifier: Apache-2.0
// All 2^32 arguments of a single-precision function of one argument, in minutes.
#pragma once

#include "measure.hpp"

namespace tmk::accuracy {

// Measures every listed kernel. Returns false for a function that is not of this kind or has only its
// reference kernel alone, and, having said so on stderr, where the double-precision filter (see the source)
// failed its check.
bool measure_exhaustively(measurement& m, int threads);

}  // namespace tmk::accuracy
