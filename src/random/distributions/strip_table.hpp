// SPDX-License-Identifier: Apache-2.0
// Variates of a law with any number of values by rejection from strips of equal area, two uniforms to a
// candidate, at a cost that does not grow with the variance (after J. H. Ahrens, Computing 54 (1995)).
//
// Strip i lies between cut[i] and cut[i + 1], real numbers measured from the mode, and is as high as makes
// its area that of all: at least f there. Its first uniform u gives the strip and a point in it, whose
// integral part is the candidate; the second, v, the height of the point. Below the least f of the strip,
// which is a sure part of its height, the candidate is accepted at once, as most are. The sure part, in units
// of 2^-16, is the lowest 16 bits of cut[i], a number as good as any other nearby.
//
// On either side, the outermost strip may be a tail without end. Its hat falls like a geometric series,
//   height e^(-rate x) at the distance x from its cut, with height / rate at most the area,
// where the quotients f(k + 1) / f(k) from there on are e^-rate or less.
#pragma once

#include <cstdint>

#include "random/distributions/unimodal_law.hpp"
#include "tmk/abi/vts.h"

namespace tmk::rng {

constexpr int sure_bits = 16;

struct strip_tail {
  double rate, height;  // height 0: there is none
};

// All of it but the cuts; `low` and `high` are measured from the mode as they are.
struct alignas(8) strip_frame {
  log_ratio log_f;
  double mode, low, high, area;
  strip_tail below, above;
  int32_t count, unused;
};

template <int Most>
struct alignas(8) strip_table {
  strip_frame frame;
  double cuts[Most + 1];
};

// At most `most` strips.
void fill_strip_table(const unimodal_law& law, int32_t most, strip_frame& frame, double* cuts);

// `count` candidates, at most a block: the accepted go to r in their order. How many, or a negative status.
int32_t candidates_of_strips(VtsStreamHandle stream, int32_t count, int32_t* r, const strip_frame& frame,
                             const double* cuts);

}  // namespace tmk::rng
