// SPDX-License-Identifier: Apache-2.0
// The bounds of every level, at the arguments where kernels came off worst.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "accuracy/oracle.hpp"
#include "tmk/abi/vtm.h"

namespace {

const std::map<std::string, const VtmDispatchRecord*> records = {
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  {#letter #stem, &tmk_vtm_kernel_##letter##stem##_ttab},
#include "vector/registry/functions.def"
};

// In ulp; beyond HA in bits for the baseline, whose formulas are older than the bound.
struct bounds {
  double ha, la, la_relative, ep_relative;
};
constexpr bounds wide_single{0.55, 2, 0x1p-21, 0x1p-11}, wide_double{0.60, 2, 0x1p-50, 0x1p-26};
constexpr bounds baseline_single{1, HUGE_VAL, 0x1p-21, 0x1p-11},
    baseline_double{1, HUGE_VAL, 0x1p-50, 0x1p-26};

template <class Real>
double call(const VtmDispatchRecord& record, int slot, double x) {
  const auto a = static_cast<Real>(x);
  Real r;
  reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(record.kernel[slot])(1, &a, &r);
  return r;
}

class hard_inputs : public testing::TestWithParam<int32_t> {};
INSTANTIATE_TEST_SUITE_P(tiers, hard_inputs, testing::Values(TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4),
                         [](const auto& info) { return tmk_tier_name(info.param); });

TEST_P(hard_inputs, keep_the_bounds_of_each_level) {
  if (tmk_select_tier(GetParam()) != GetParam())
    GTEST_SKIP() << "this processor, build or TMK_TIER has no " << tmk_tier_name(GetParam());
  const bool baseline = GetParam() == TMK_TIER_W7;
  std::ifstream file(TMK_SOURCE_DIR "/tests/reference/hard_inputs.txt");
  std::string line;
  int lines = 0;
  while (std::getline(file, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    std::string name, argument;
    words >> name >> argument;
    const double x = std::strtod(argument.c_str(), nullptr);
    const bool single = name[0] == 's';
    const auto exact = tmk::accuracy::oracle(name)(x);
    const bounds& b =
        single ? (baseline ? baseline_single : wide_single) : (baseline ? baseline_double : wide_double);
    for (int slot = 0; slot < 3; ++slot) {
      const double got =
          single ? call<float>(*records.at(name), slot, x) : call<double>(*records.at(name), slot, x);
      const double ulp = tmk::accuracy::ulp_error(exact, got),
                   relative = tmk::accuracy::relative_error(exact, got);
      const bool kept = slot == TMK_SLOT_HA   ? ulp <= b.ha
                        : slot == TMK_SLOT_LA ? ulp <= b.la && relative <= b.la_relative
                                              : relative <= b.ep_relative;
      // A subnormal result has fewer bits than the level.
      EXPECT_TRUE(kept || (slot != TMK_SLOT_HA && ulp <= 1))
          << line << " slot " << slot << ": " << ulp << " ulp, relative error " << relative;
    }
    ++lines;
  }
  EXPECT_GE(lines, 25);
  tmk_select_tier(TMK_TIER_WIDEST);
}

}  // namespace
