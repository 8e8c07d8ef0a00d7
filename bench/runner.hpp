// SPDX-License-Identifier: Apache-2.0
// Groups of subjects that do the same work, measured together, and what a ratio means in every table: the
// time of the peer divided by that of tmk.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "timing.hpp"

namespace tmk::bench {

enum class subject_kind { ours, peer, copy };  // the copy of an array: what work that waits for memory takes

constexpr int any_tier = -1;

struct subject {
  std::string name;
  std::function<void()> run;
  subject_kind kind = subject_kind::peer;
  int tier = any_tier;  // the instruction set that it is for
  double error = 0;     // in ulp, the largest that was looked for
};

struct group {
  std::string name;
  int64_t count;                                  // elements of one run; 1 where the call itself is timed
  std::function<std::vector<subject>()> prepare;  // their data live as long as the subjects
};

struct measurement {
  std::string name;
  subject_kind kind;
  int tier;
  double nanoseconds;  // per element, the median of the repetitions
  double error;
};

struct measured_group {
  std::string name;
  int64_t count;
  std::vector<measurement> subjects;
};

// Above 1: tmk is faster.
inline double speed_ratio(const measurement& ours, const measurement& peer) {
  return peer.nanoseconds / ours.nanoseconds;
}
std::string ratio_text(double ratio);  // two digits

// The text above the tables of a page. The format has %s for the machine, %d for the count of repetitions and
// %s for the meaning of a ratio.
std::string page_heading(const options& wish, const char* format);

// Prints one measured group.
using group_printer = void (*)(const measured_group& g, const options& wish);

// A row: the times of ours by tier, those of the peers, and how many times faster than each the best of ours
// is.
void print_row(const measured_group& g, const options& wish);

// Measures the groups that the options select and prints each as soon as it is measured. A markdown run
// begins with the heading. Ends the program with status 2 when nothing is selected.
std::vector<measured_group> run_groups(const std::vector<group>& groups, const options& wish,
                                       const std::string& heading, group_printer print = print_row);

// A subject for each tier that the processor has: call() with that tier in force.
std::vector<subject> by_tier(const std::function<void()>& call);

// Ends the program unless the status of a C function is 0.
void expect_success(int32_t status);

}  // namespace tmk::bench
