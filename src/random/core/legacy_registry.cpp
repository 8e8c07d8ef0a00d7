// SPDX-License-Identifier: Apache-2.0
// The registry's table of legacy numbers. C++ fills an array by a loop at compile time only inside a
// structure; hence the assembler name, which callers know as an array.
#include "random/core/rows.hpp"

namespace tmk {

struct legacy_table {
  VtsBrngProperties row[512];
};

static constexpr legacy_table legacy_rows() {
  legacy_table table = {{tmk::row::MCG31M1, tmk::row::R250, tmk::row::MRG32K3A, tmk::row::MCG59}};
  for (int32_t set = 0; set < 273; ++set) table.row[4 + set] = tmk::row::WH;
  table.row[277] = tmk::row::Sobol;
  table.row[278] = tmk::row::Niederr;
  return table;
}

}  // namespace tmk

extern tmk::legacy_table legacy_registry asm("__RegBrngs") __attribute__((visibility("default")));
constinit tmk::legacy_table legacy_registry = tmk::legacy_rows();
