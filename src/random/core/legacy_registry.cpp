// SPDX-License-Identifier: Apache-2.0
// The registry's table of legacy numbers. C++ fills an array by a loop at compile time only inside a
// structure; the assembler name makes it the array that callers know.
#include "random/core/records.hpp"

namespace tmk::rng {

struct legacy_table {
  VtsBrngProperties row[512];
};

static constexpr legacy_table legacy_rows() {
  legacy_table table = {{records::MCG31M1, records::R250, records::MRG32K3A, records::MCG59}};
  for (int32_t set = 0; set < 273; ++set) table.row[4 + set] = records::WH;
  table.row[277] = records::Sobol;
  table.row[278] = records::Niederr;
  return table;
}

}  // namespace tmk::rng

extern tmk::rng::legacy_table legacy_registry asm("__RegBrngs") __attribute__((visibility("default")));
constinit tmk::rng::legacy_table legacy_registry = tmk::rng::legacy_rows();
