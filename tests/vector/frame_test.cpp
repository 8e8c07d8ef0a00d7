// SPDX-License-Identifier: Apache-2.0
// Records, entry points and tiers: which kernel answers which name.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "platform/controls.hpp"
#include "platform/cpu.h"
#include "tmk/abi/vtm.h"
#include "vector/registry/shapes.h"

namespace {

struct function_row {
  std::string name, slots, wide_slots, stage;
  VtmDispatchRecord* record;
  const VtmCostRecord* cost;
};

const function_row functions[] = {
#define TMK_FUNCTION(letter, stem, shape, slots, wide, stage) \
  {#letter #stem,                                             \
   #slots,                                                    \
   #wide,                                                     \
   #stage,                                                    \
   &tmk_vtm_kernel_##letter##stem##_ttab,                     \
   &tmk_vtm_kernel_##letter##stem##_ctab},
#include "vector/registry/functions.def"
};

class each_tier : public testing::TestWithParam<int32_t> {
 protected:
  void SetUp() override {
    if (tmk_select_tier(GetParam()) != GetParam())
      GTEST_SKIP() << "this processor, build or TMK_TIER has no " << tmk_tier_name(GetParam());
  }
  void TearDown() override { tmk_select_tier(TMK_TIER_WIDEST); }
};
INSTANTIATE_TEST_SUITE_P(tiers, each_tier, testing::Values(TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4),
                         [](const auto& info) { return tmk_tier_name(info.param); });

TEST_P(each_tier, slots_are_shared_as_the_list_says) {
  EXPECT_EQ(std::size(functions), 232u);
  for (const function_row& f : functions) {
    const auto& k = f.record->kernel;
    const bool wide = GetParam() != TMK_TIER_W7;
    const bool own = f.stage == "vectorized" || (wide && f.stage == "wide");
    const std::string& slots = wide ? f.wide_slots : f.slots;
    for (int i = 0; i < 3; ++i) {
      ASSERT_NE(k[i], nullptr) << f.name;
      for (int j = 0; j < i; ++j) {
        EXPECT_EQ(k[i] == k[j], !own || slots[i] == slots[j])
            << f.name << " slots " << j << " and " << i << (wide ? " (wide)" : "");
      }
    }
  }
}

// The kernel that ran is the tier's: no two tiers share one of a vectorized function.
TEST(tiers, each_brings_its_own_kernels) {
  std::set<VtmKernel> kernels;
  size_t expected = 0;
  for (const int32_t tier : {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4}) {
    if (tmk_select_tier(tier) != tier) continue;
    EXPECT_EQ(tmk_current_tier(), tier);
    kernels.insert(tmk_vtm_kernel_sExp_ttab.kernel[TMK_SLOT_HA]);
    kernels.insert(tmk_vtm_kernel_dLn_ttab.kernel[TMK_SLOT_EP]);
    expected += 2;
    EXPECT_EQ(kernels.size(), expected) << tmk_tier_name(tier);
  }
  tmk_select_tier(TMK_TIER_WIDEST);
}

TEST(tiers, selection_obeys_the_processor_the_cap_and_itself) {
  const char* const old = std::getenv("TMK_TIER");
  const std::string restore = old == nullptr ? "" : old;
  setenv("TMK_TIER", "W7", 1);
  EXPECT_EQ(tmk_select_tier(TMK_TIER_WIDEST), TMK_TIER_W7);
  EXPECT_EQ(tmk_select_tier(TMK_TIER_V3), TMK_TIER_UNAVAILABLE);
  EXPECT_EQ(tmk_select_tier(5), TMK_TIER_UNKNOWN);
  EXPECT_EQ(tmk_select_tier(-1), TMK_TIER_UNKNOWN);
  for (const char* malformed : {"V5", "v3", "V3 ", "W7,V3", "a long word that no buffer expects"}) {
    setenv("TMK_TIER", malformed, 1);
    EXPECT_EQ(tmk_select_tier(TMK_TIER_WIDEST), TMK_TIER_BAD_CAP) << malformed;
    EXPECT_EQ(tmk_current_tier(), TMK_TIER_W7);
  }
  unsetenv("TMK_TIER");
  EXPECT_EQ(tmk_select_tier(TMK_TIER_AUTO), TMK_TIER_W7) << "an earlier choice stays";
  const int32_t widest = tmk_select_tier(TMK_TIER_WIDEST);
  for (int32_t tier = widest + 1; tier <= TMK_TIER_V4; ++tier)
    EXPECT_EQ(tmk_select_tier(tier), TMK_TIER_UNAVAILABLE);
  if (!restore.empty()) setenv("TMK_TIER", restore.c_str(), 1);
  tmk_select_tier(TMK_TIER_WIDEST);
}

// Entry points have fixed slots: the mode changes nothing.
TEST(entry_points, run_their_slot_whatever_the_mode) {
  static thread_local std::vector<int> ran;
  const auto spy = [](auto slot) {
    return reinterpret_cast<VtmKernel>(
        +[](int32_t, const float*, float*) { ran.push_back(decltype(slot)::value); });
  };
  const VtmDispatchRecord saved = tmk_vtm_kernel_sSin_ttab;
  tmk_vtm_kernel_sSin_ttab = {{spy(std::integral_constant<int, 0>()), spy(std::integral_constant<int, 1>()),
                               spy(std::integral_constant<int, 2>())}};
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_EP);
  for (const auto entry : {_vtmsSin, _vtmsSin_HA, _vtmsSin_21, _vtmsSin_11}) entry(0, nullptr, nullptr);
  tmk_vtm_kernel_SetMode(mode);
  tmk_vtm_kernel_sSin_ttab = saved;
  EXPECT_EQ(ran, (std::vector<int>{1, 1, 0, 2}));
}

TEST(entry_points, pass_every_shape_on) {
  const tmk_complex16 z[1] = {{3, 4}};
  tmk_complex16 power[1];
  _vtmzPowx(1, z, tmk_complex16{2, 0}, power);
  EXPECT_NEAR(power[0].re, -7, 1e-14);
  EXPECT_NEAR(power[0].im, 24, 1e-14);

  const double a[1] = {2}, b[1] = {4};
  double r[1], s[1];
  _vtmdLinearFrac_50(1, a, b, 3, 1, 5, 8, r);
  EXPECT_EQ(r[0], 0.25);
  _vtmdSinCos(1, a, r, s);
  EXPECT_EQ(r[0], std::sin(2.0));
  EXPECT_EQ(s[0], std::cos(2.0));
  _vtmzAbs(1, z, r);
  EXPECT_EQ(r[0], 5);
  _vtmzCIS(1, a, power);
  EXPECT_EQ(power[0].im, std::sin(2.0));
}

TEST(costs, telling_rows_and_shared_slots) {
  const struct {
    const char* name;
    float cost[3];
  } rows[] = {
      {"sAdd", {1.82f, 1.82f, 1.82f}},          {"sInv", {3.59f, 9.95f, 2.97f}},
      {"sSin", {10.93f, 18.58f, 8.43f}},        {"dSin", {35.90f, 35.90f, 32.00f}},
      {"dExp", {17.45f, 26.45f, 13.02f}},       {"dPow", {78.34f, 85.52f, 78.34f}},
      {"dExpm1", {90.44f, 158.31f, 90.44f}},    {"zDiv", {210.08f, 210.08f, 36.22f}},
      {"cSin", {1343.47f, 1343.47f, 1343.47f}},
  };
  for (const function_row& f : functions) {
    for (const auto& row : rows) {
      if (f.name == row.name) {
        EXPECT_EQ(std::memcmp(f.cost->cost, row.cost, sizeof row.cost), 0) << f.name;
      }
    }
    const bool marker = f.name.find("ack") != std::string::npos;
    for (int i = 0; i < 3; ++i) {
      EXPECT_GT(f.cost->cost[i], 0) << f.name;
      EXPECT_EQ(f.cost->cost[i] == 1111.0f, marker) << f.name;
      for (int j = 0; j < i; ++j) {
        if (f.slots[i] == f.slots[j]) {
          EXPECT_EQ(f.cost->cost[i], f.cost->cost[j]) << f.name;
        }
      }
    }
  }
  EXPECT_EQ(std::bit_cast<uint32_t>(tmk_vtm_kernel_sSin_ctab.cost[TMK_SLOT_HA]), 0x4194A3D7u);
}

uint16_t x87_control() {
  uint16_t control;
  asm volatile("fnstcw %0" : "=m"(control));
  return control;
}

void set_x87_control(uint16_t control) { asm volatile("fldcw %0" : : "m"(control)); }

// The caller's rounding, precision and masks come back; flags that a kernel raised are merged in.
TEST_P(each_tier, controls_come_back_as_found) {
  const uint16_t x87_found = x87_control();
  const uint32_t sse_found = _mm_getcsr();
  const double a[3] = {0, 3, 1};
  double r[3];
  set_x87_control(0x027E);       // 53 bits, invalid unmasked
  _mm_setcsr(0x7F80 & ~0x1000);  // round toward zero, precision unmasked
  _vtmdInv(3, a, r);
  const uint16_t x87_after = x87_control();
  const uint32_t sse_after = _mm_getcsr();
  set_x87_control(x87_found);
  _mm_setcsr(sse_found);
  EXPECT_EQ(r[1], 1.0 / 3.0) << "round to nearest inside";
  EXPECT_EQ(x87_after & 0x0F00, 0x0200);
  EXPECT_EQ(sse_after & 0xFFC0, 0x6F80u);
  EXPECT_NE(sse_after & 0x20, 0u) << "precision flag merged";
}

TEST_P(each_tier, denormal_field_flushes) {
  const float a[8] = {0x1p-140f, 0x1p-140f, 1, 1, 1, 1, 1, 1};
  float r[8];
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_FLUSHED);
  _vtmsExp(8, a, r);
  EXPECT_EQ(r[0], 1.0f);
  _vtmsInv_11(8, a, r);
  EXPECT_TRUE(std::isinf(r[0])) << "1 / 2^-140 by the x87 unit, which knows no flush";
  tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | mode);
}

}  // namespace
