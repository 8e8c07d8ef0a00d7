// SPDX-License-Identifier: Apache-2.0
// A callable on the caller's threads.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tmk/abi/threading.h"

namespace tmk::fitting {

// work(item, thread) for each item on at most so many threads.
template <class Work>
void parallel_for(const ThreadingService* service, ptrdiff_t items, ptrdiff_t threads, Work& work) {
  service->ParallelFor(static_cast<int32_t>(items), static_cast<int32_t>(threads), &work,
                       [](int32_t item, int32_t thread, int32_t, void* context) {
                         (*static_cast<Work*>(context))(item, thread);
                       });
}

}  // namespace tmk::fitting
