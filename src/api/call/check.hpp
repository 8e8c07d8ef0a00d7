// SPDX-License-Identifier: Apache-2.0
// What a call must bring. Each function throws tmk::error for what it refuses, before anything is written.
#pragma once

#include <string>

#include "api/math/rows.hpp"

namespace tmk::detail {

// Numbers the dispatch record's slots; the thread's mode decides for accuracy::inherited.
int slot_of(const row& f, accuracy level);

// Sizes, null pointers and overlaps.
void check(const row& f, const call& c);

[[noreturn]] void refuse(const char* function, std::string argument, std::string value,
                         const std::string& complaint);

// "nan", or the shortest text that reads back as the value.
std::string number(double value);
std::string number(float value);

// "array[i]"
std::string place(const char* array, std::size_t i);

struct operand {
  const char* name;
  array values;
  std::size_t width;
};

void check_data(const char* function, const operand& o);

// A result may stand in an argument's place element for element where `in_place` says so, and nowhere else.
void check_overlap(const char* function, const operand& result, const operand& other, bool in_place);

}  // namespace tmk::detail
