// SPDX-License-Identifier: Apache-2.0
#include "api/call/refuse.hpp"

#include <tmk/abi/vtm.h>

#include <charconv>
#include <cmath>
#include <cstdint>

namespace tmk::detail {

namespace {

template <class Real>
std::string text_of(Real value) {
  char text[32];
  return std::isnan(value) ? "nan" : std::string(text, std::to_chars(text, std::end(text), value).ptr);
}

}  // namespace

std::string number(double value) { return text_of(value); }
std::string number(float value) { return text_of(value); }

std::string place(const char* array, std::size_t i) {
  return std::string(array) + '[' + std::to_string(i) + ']';
}

void refuse(const char* function, std::string argument, std::string value, const std::string& complaint) {
  throw error(VTM_STATUS_BADARG, function, std::move(argument), std::move(value), complaint);
}

void refuse_value(const char* function, std::string argument, const std::string& value,
                  const std::string& want) {
  refuse(function, std::move(argument), value, "is " + value + ", want " + want);
}

void check_size(const char* function, const operand& o, std::size_t want) {
  if (o.values.size != want) [[unlikely]]
    refuse(function, o.name, std::to_string(o.values.size),
           "has size " + std::to_string(o.values.size) + ", want " + std::to_string(want));
}

void check_data(const char* function, const operand& o) {
  if (o.values.data == nullptr && o.values.size != 0) [[unlikely]]
    refuse(function, o.name, "null", "is null, want " + std::to_string(o.values.size) + " elements");
}

void check_overlap(const char* function, const operand& result, const operand& other, bool in_place) {
  const auto r = reinterpret_cast<std::uintptr_t>(result.values.data);
  const auto x = reinterpret_cast<std::uintptr_t>(other.values.data);
  if (r == x && in_place) return;
  const bool apart = r + result.values.size * result.width <= x || x + other.values.size * other.width <= r;
  if (apart) [[likely]]
    return;
  const auto distance = static_cast<std::intptr_t>(r - x);
  const std::string value = "begins " + std::to_string(distance) + " bytes from " + other.name;
  refuse(function, result.name, value, value + " and overlaps it");
}

}  // namespace tmk::detail
