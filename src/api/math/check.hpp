// SPDX-License-Identifier: Apache-2.0
// What a call of vector math must satisfy. Each function throws tmk::error for what it refuses, before
// anything is written.
#pragma once

#include "api/math/function_rows.hpp"

namespace tmk::detail {

// The slot of the dispatch record for a level; the thread's mode decides for accuracy::inherited.
int slot_of(const function_row& f, accuracy level);

// Sizes, null pointers and overlaps.
void check(const function_row& f, const call& c);

}  // namespace tmk::detail
