// SPDX-License-Identifier: Apache-2.0
// Sites or limits as callers give them, and their cut into shares for the threads.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>

#include "fitting/evaluation/evaluation_kernels.hpp"
#include "fitting/parallel_for.hpp"
#include "tmk/abi/df.h"

namespace tmk::fitting {

// All of them, or with DF_SITES_UNIFORM the first and the last alone.
template <class Real>
struct site_source {
  const Real* given;
  bool uniform;
  Real first, step;

  site_source(const Real* sites, int64_t hint, int64_t n)
      : given(sites), uniform((hint & DF_SITES_UNIFORM) != 0), first(0), step(0) {
    if (!uniform || n < 1) return;
    first = sites[0];
    if (n > 1) step = (sites[1] - sites[0]) / static_cast<Real>(n - 1);
  }
  // Those from `begin` on, in place or made in `room`.
  const Real* block(int64_t begin, int count, Real* room) const {
    if (!uniform) return given + begin;
    for (int i = 0; i < count; ++i) room[i] = static_cast<Real>(begin + i) * step + first;
    return room;
  }
};

// Runs share(begin, end), which returns a status, over the parts of 0 ... n, one a thread. `work` is what all
// of them cost, in evaluations: small work stays in the calling thread.
template <class Share>
int32_t run_shares(int64_t n, int64_t work, const ThreadingService* threading, const Share& share) {
  constexpr int64_t least_part = 32, least_work = 2048;
  if (work < least_work || n <= least_part) return share(0, n);
  const int64_t parts = std::min<int64_t>(threading->MaxThreads(), (n + least_part - 1) / least_part);
  if (parts < 2) return share(0, n);
  const int64_t length = (n + parts - 1) / parts;
  std::atomic<int32_t> worst{DF_STATUS_OK};
  auto part = [&](int32_t item, int32_t) {
    const int64_t begin = std::min(item * length, n);
    const int32_t status = share(begin, std::min(begin + length, n));
    if (status < 0) worst.store(status, std::memory_order_relaxed);
  };
  parallel_for(threading, static_cast<ptrdiff_t>(parts), static_cast<ptrdiff_t>(parts), part);
  return worst;
}

}  // namespace tmk::fitting
