// SPDX-License-Identifier: Apache-2.0
// The largest errors of a kernel, by a search that climbs: many samples, then rounds of neighbours of the
// worst.
#pragma once

#include <string>

#include "measure.hpp"

namespace tmk::accuracy {

struct effort {
  std::int64_t
      samples;     // judged by the function's filter, before the climb; pairs of singles ten times as many
  int worst;       // arguments of each kernel that a round begins with
  int neighbours;  // of each of them, within 2^-8 of it, nearer ones more often
  int rounds;
};
inline constexpr effort thorough{10'000'000, 256, 1024, 6};
inline constexpr effort brief{std::int64_t{1} << 20, 32, 256, 6};

// Raises the worst errors of the measurement's kernels to what the search finds. Functions that the oracle
// has to judge argument by argument take a small part of the effort; powers with one exponent for all
// elements and linear fractions are not climbed.
void climb(measurement& m, const effort& effort, std::uint64_t seed, int threads);

// Judges the arguments of the function that a file lists, one line each: the name and the arguments (a, or a
// and b; complex numbers as two), in any form that strtod reads. Lines that begin with # are comments.
// Returns false, having said why on stderr, for a file that cannot be read or a line that is no such thing.
bool judge_listed(measurement& m, const std::string& path);

}  // namespace tmk::accuracy
