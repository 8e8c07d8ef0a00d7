// SPDX-License-Identifier: Apache-2.0
// The error functions and their inverses, which MPFR lacks or is slow at.
#pragma once

#include "oracle/evaluation.hpp"

namespace tmk::accuracy {

int error_complement(evaluation& e);
int normal_cdf(evaluation& e);
int error_function_inverse(evaluation& e);
int complementary_error_inverse(evaluation& e);
int normal_cdf_inverse(evaluation& e);

}  // namespace tmk::accuracy
