// SPDX-License-Identifier: Apache-2.0
// What the two families of quadratic splines share: functions in groups, a group to a thread.
#pragma once

#include "fitting/construction/constructor.hpp"

namespace tmk::fitting {

constexpr ptrdiff_t quadratic_group = 4;           // functions
constexpr ptrdiff_t least_parallel_values = 4096;  // below which threads do not pay

template <class Real>
using quadratic_variant = int32_t(const task<Real>&, const ThreadingService*);

template <class Real>
ptrdiff_t quadratic_threads(const task<Real>& t, const ThreadingService* service) {
  if (points(t) < least_parallel_values / functions(t)) return 1;
  const ptrdiff_t groups = (functions(t) + quadratic_group - 1) / quadratic_group;
  return std::clamp<ptrdiff_t>(service->MaxThreads(), 1, groups);
}

// work(function, end, thread) for each group.
template <class Real, class Work>
void for_quadratic_groups(const task<Real>& t, const ThreadingService* service, ptrdiff_t threads,
                          const Work& work) {
  const ptrdiff_t groups = (functions(t) + quadratic_group - 1) / quadratic_group;
  auto item = [&](int32_t group, int32_t thread) {
    const ptrdiff_t first = group * quadratic_group;
    work(first, std::min(first + quadratic_group, functions(t)), thread);
  };
  parallel_for(service, groups, threads, item);
}

// The variant for knots between the points; null where the task's boundary conditions have none.
template <class Real>
quadratic_variant<Real>* subbotin_variant(const task<Real>& t);

}  // namespace tmk::fitting
