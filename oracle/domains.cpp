// SPDX-License-Identifier: Apache-2.0
#include "oracle/domains.hpp"

#include <cmath>

namespace tmk::accuracy {
namespace {

constexpr double inf = HUGE_VAL, half_pi = 0x1.921fb54442d18p0;

constexpr domain rows[] = {
#define TMK_DOMAIN(letters, stem, argument, low, high, core_low, core_high, period, ...) \
  {#letters, #stem, argument, {low, high}, {core_low, core_high}, period, {__VA_ARGS__}},
#include "vector/domains.def"
};
constexpr domain any_number{"", "", 0, {-inf, inf}, {-10, 10}};

}  // namespace

const domain& find_domain(char letter, std::string_view stem, int argument) {
  for (const domain& row : rows)
    if (row.stem == stem && row.argument == argument && row.letters.find(letter) != row.letters.npos)
      return row;
  return any_number;
}

}  // namespace tmk::accuracy
