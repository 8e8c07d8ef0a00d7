// SPDX-License-Identifier: Apache-2.0
// The settings for threads that a program makes through OpenMP. The library does not require OpenMP: each of
// these functions works with and without it in the process.
#pragma once

#include <cstdint>

namespace tmk::openmp {

// omp_get_max_threads(); without OpenMP the number in OMP_NUM_THREADS, or else the count of processors.
int32_t max_threads();

// omp_get_thread_limit(), or the largest number.
int32_t thread_limit();

// Whether the caller is a member of an OpenMP team.
bool in_parallel();

}  // namespace tmk::openmp
