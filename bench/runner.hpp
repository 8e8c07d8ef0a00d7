// SPDX-License-Identifier: Apache-2.0
// Groups of subjects that do the same work: ours by tier, and the peers'. One row of a table each.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "timing.hpp"

namespace tmk::bench {

struct subject {
  std::string name;  // ours begin with "tmk": the tier follows, and what distinguishes them
  std::function<void()> run;
};

struct group {
  std::string name;
  int64_t count;                                  // elements of one run; 1 where the call itself is timed
  std::function<std::vector<subject>()> prepare;  // their data live as long as the subjects
};

// Measures the groups that the options name and prints a row for each: nanoseconds per element, and how many
// times faster than a peer the best of ours is. `heading` opens the page of a markdown run, with the
// processor's name and the count of repetitions for its %s and %d. Returns the program's exit status.
int run_groups(const std::vector<group>& groups, const options& wish, const char* heading);

// A subject for each tier that the processor has: call() with that tier in force.
std::vector<subject> by_tier(const std::function<void()>& call);

}  // namespace tmk::bench
