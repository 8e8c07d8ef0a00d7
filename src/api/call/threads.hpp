// SPDX-License-Identifier: Apache-2.0
// Parts of one call on several threads.
#pragma once

#include <cstddef>
#include <functional>

#include "api/math/rows.hpp"

namespace tmk::detail {

// How many of the threads that a caller asks for can be of use. More would only cut the work finer.
int usable_threads(int threads);

// How many threads a call of n elements is worth, at most `threads`.
int part_count(std::size_t n, float cost_per_element, int threads);

// Where part k of `parts` begins. Cuts fall on cache lines of the result, so that no two threads write to
// one.
std::size_t part_begin(const std::byte* result, std::size_t width, std::size_t n, int parts, int k);

// Runs part(k) for every k, with the caller's floating-point environment; exception flags that the parts
// raise are raised in the caller. `part` must not throw.
void run_parts(int parts, const std::function<void(int)>& part);

}  // namespace tmk::detail
