// SPDX-License-Identifier: Apache-2.0
// Times of one function at one size, and how they are told.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace tmk::bench {

enum class subject_kind { kernel, peer, copy };

// Something measured: a kernel (named by its levels) or a peer, in a tier's instruction set.
struct subject {
  subject_kind kind;
  int tier;
  std::string name;
  double nanoseconds;  // per element, median of the repetitions
};

struct group {
  std::string function;
  std::int32_t size;
  bool is_bound_by_memory;  // the goal is the copy of the array
  bool worked;              // has kernels of its own per level and tier
  std::vector<subject> subjects;
};

// The fastest peer in the tier's instruction set; null where there is none.
const subject* best_peer(const group& g, int tier);

// A line per subject; kernels with their time divided by that of the best peer.
void print(std::FILE* out, const group& g);

// docs/performance.md; the date is that of the run.
void print_markdown(std::FILE* out, const std::vector<group>& groups, const std::vector<int>& tiers,
                    const std::string& processor, int repetitions);

}  // namespace tmk::bench
