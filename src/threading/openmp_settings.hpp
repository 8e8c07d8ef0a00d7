// SPDX-License-Identifier: Apache-2.0
// What a program says about threads through OpenMP. The library has no need of OpenMP, so that each of these
// serves with and without it in the process.
#pragma once

#include <cstdint>

namespace tmk::openmp {

// omp_get_max_threads(); without OpenMP what OMP_NUM_THREADS asks for, or else the count of processors.
int32_t max_threads();

// omp_get_thread_limit(), or the largest number.
int32_t thread_limit();

// Whether the caller is a member of an OpenMP team.
bool in_parallel();

}  // namespace tmk::openmp
