// SPDX-License-Identifier: Apache-2.0
// Uniforms that are never an end of their interval, for laws with a pole there.
//   singles   one element: (x + 1/2) / m for elements 0 to m - 1, of which rounding keeps 24 bits
//   doubles   two elements where one has no more than 32 bits, the lower digit y first:
//             (x + (y + 1/2) / m) / m, of which rounding keeps 53 bits
// The least is 2^-54 of the interval from its lower end, the greatest the number before the upper one.
#pragma once

#include <cstdint>

#include "tmk/abi/vts.h"

namespace tmk::rng {

int32_t draw_open(VtsStreamHandle stream, int32_t n, double* r, double a, double b);
int32_t draw_open(VtsStreamHandle stream, int32_t n, float* r, float a, float b);

// Integers from low to high of `count` candidates, a pair of elements or one uniform each: returns
// how many of them have a value, or a negative status.
int32_t integer_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, int32_t low, int32_t high);
// Units of random bits, the upper ones first: of a generator with words of 32 bits one word, or two with the
// lower first; of any other as many of the upper bits as an open uniform double has, and the middle of what
// is below them. The elements that they take are those of as many open uniforms.
int32_t draw_units(VtsStreamHandle stream, int32_t n, uint64_t* r);
int32_t draw_units(VtsStreamHandle stream, int32_t n, uint32_t* r);

// Whether each element is a coordinate of a point, which no law may pass over.
bool gives_points(VtsStreamHandle stream);

}  // namespace tmk::rng
