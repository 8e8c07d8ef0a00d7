// SPDX-License-Identifier: Apache-2.0
// The radix sort of sort.cpp for any of the types that it is instantiated for there.
#pragma once

#include <cstdint>

namespace tmk::primitives {

// `scratch` has the same length n, which is not 0. T is double, float or an integer of 32 or 64 bits.
template <class T>
void sort_elements(T* a, T* scratch, int32_t n, bool descending);

}  // namespace tmk::primitives
