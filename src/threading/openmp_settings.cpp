// SPDX-License-Identifier: Apache-2.0
#include "threading/openmp_settings.hpp"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <thread>

#include "tmk/abi/serv.h"

// Weak: null where nothing in the program provides OpenMP.
extern "C" {
[[gnu::weak]] int omp_get_max_threads();
[[gnu::weak]] int omp_get_thread_limit();
[[gnu::weak]] int omp_in_parallel();
}

namespace tmk::openmp {

namespace {

constexpr long most = std::numeric_limits<int32_t>::max();

// The first number of a list such as "4,2".
int32_t threads_without_openmp() {
  char text[32];
  const long asked = tmk_serv_getenv("OMP_NUM_THREADS", text, sizeof text) > 0 ? std::atol(text) : 0;
  const long threads = asked > 0 ? asked : static_cast<long>(std::thread::hardware_concurrency());
  return static_cast<int32_t>(std::clamp(threads, 1L, most));
}

}  // namespace

int32_t max_threads() {
  if (omp_get_max_threads != nullptr) return std::max(omp_get_max_threads(), 1);
  static const int32_t threads = threads_without_openmp();
  return threads;
}

int32_t thread_limit() {
  return omp_get_thread_limit != nullptr ? std::max(omp_get_thread_limit(), 1) : most;
}

bool in_parallel() { return omp_in_parallel != nullptr && omp_in_parallel() != 0; }

}  // namespace tmk::openmp
