// SPDX-License-Identifier: Apache-2.0
// Checks that every service of the C++ API shares. Each throws tmk::error for an argument that it refuses.
#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <tmk/detail/shapes.hpp>
#include <tmk/error.hpp>
#include <utility>

namespace tmk::detail {

[[noreturn]] void refuse(const char* function, std::string argument, std::string value,
                         const std::string& complaint);

// The complaint "is <value>, want <want>".
[[noreturn]] void refuse_value(const char* function, std::string argument, const std::string& value,
                               const std::string& want);

// Numbers as text: "nan", or the shortest text that reads back as the value.
std::string number(double value);
std::string number(float value);
std::string number(std::integral auto value) { return std::to_string(value); }

// "array[i]"
std::string place(const char* array, std::size_t i);

// Refuses a value outside low to high, and NaN.
template <class Value>
void refuse_unless_in(const char* function, const char* argument, Value value,
                      std::type_identity_t<Value> low, std::type_identity_t<Value> high) {
  if (!(value >= low && value <= high)) [[unlikely]]
    refuse_value(function, argument, number(value), number(low) + " to " + number(high));
}

template <class Value>
void refuse_below(const char* function, const char* argument, Value value, std::type_identity_t<Value> low) {
  if (!(value >= low)) [[unlikely]]
    refuse_value(function, argument, number(value), number(low) + " or more");
}

struct operand {
  const char* name;
  array values;
  std::size_t width;  // bytes of an element
};

void check_size(const char* function, const operand& o, std::size_t want);
// That the pointer is not null, unless there are no elements.
void check_data(const char* function, const operand& o);
// That the operands share no memory. A result may be the argument itself where `in_place` is set.
void check_overlap(const char* function, const operand& result, const operand& other, bool in_place);

}  // namespace tmk::detail
