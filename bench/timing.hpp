// SPDX-License-Identifier: Apache-2.0
// Times of several subjects in one process, their repetitions shuffled.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tmk::bench {

struct options {
  std::string filter;  // regular expression
  bool markdown = false;
  int repetitions = 9;
};

// The options of the command line; ends the program on a word it does not know. `shape` is an
// example of a group's name for the usage line.
options start(int argc, char** argv, const char* shape);

// Median processor time in seconds of one call of each.
std::vector<double> median_seconds(const std::vector<std::function<void()>>& subjects);

std::string processor_name();

}  // namespace tmk::bench
