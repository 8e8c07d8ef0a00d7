// SPDX-License-Identifier: Apache-2.0
// The threads of one call.
#pragma once

#include <tmk/abi/threading.h>

#include <cstddef>
#include <functional>

namespace tmk::detail {

// How many of the threads that a caller requests can be of use. More would only cut the work finer.
int usable_threads(int threads);

// The table of run slots for a call of the C interface: as many threads as this thread's parallel_scope
// allows.
const ThreadingService* call_threads();

// How many threads pay for a call of n elements, at most `threads`.
int part_count(std::size_t n, float cost_per_element, int threads);

// The first element of part k of `parts`. Parts begin on cache lines of the result, so that no two threads
// write to the same line.
std::size_t part_begin(const std::byte* result, std::size_t width, std::size_t n, int parts, int k);

// Runs part(k) for every k, with the caller's floating-point environment; exception flags that the parts
// raise are raised in the caller. `part` must not throw.
void run_parts(int parts, const std::function<void(int)>& part);

}  // namespace tmk::detail
