// SPDX-License-Identifier: Apache-2.0
// Inv, Sqrt and InvSqrt in every slot of the selected tier: special values bit for bit with their reports,
// and each level at the powers of two, whatever the thread does with subnormals.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

namespace {

using tmk::format;

enum { inv, sqrt, inv_sqrt };

template <class Real>
struct function {
  const char* name;
  const VtmDispatchRecord* record;
  long double (*exact)(long double);
  long double ha_ulp;  // on the baseline; the wide tiers stay below 0.55
};

#define FUNCTIONS(letter, sqrt_ulp, inv_sqrt_ulp)                                                      \
  {                                                                                                    \
    {#letter "Inv", &tmk_vtm_kernel_##letter##Inv_ttab, [](long double x) { return 1 / x; }, 0.5001L}, \
        {#letter "Sqrt", &tmk_vtm_kernel_##letter##Sqrt_ttab, std::sqrt, sqrt_ulp}, {                  \
#letter "InvSqrt", &tmk_vtm_kernel_##letter##InvSqrt_ttab,                                       \
          [](long double x) { return 1 / std::sqrt(x); }, inv_sqrt_ulp                                 \
    }                                                                                                  \
  }
template <class Real>
const function<Real> functions[3] = {};
template <>
const function<float> functions<float>[3] = FUNCTIONS(s, 0.89L, 0.98L);
template <>
const function<double> functions<double>[3] = FUNCTIONS(d, 0.501L, 0.51L);

template <class Real>
std::vector<Real> call(const function<Real>& f, int slot, const std::vector<Real>& a) {
  std::vector<Real> r(a.size());
  reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(f.record->kernel[slot])(
      static_cast<int32_t>(a.size()), a.data(), r.data());
  return r;
}

template <class Real>
class reciprocal : public testing::Test {
 protected:
  reciprocal() : mode_(tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_IGNORE)) {
    tmk_select_tier(TMK_TIER_WIDEST);
  }
  ~reciprocal() override { tmk_vtm_kernel_SetMode(mode_); }

 private:
  uint32_t mode_;
};
using reals = testing::Types<float, double>;
TYPED_TEST_SUITE(reciprocal, reals, );

TYPED_TEST(reciprocal, special_values) {
  using Real = TypeParam;
  using bits = typename format<Real>::bits;
  constexpr bits sign = format<Real>::sign, infinity = format<Real>::infinity, nan = format<Real>::quiet_nan;
  constexpr bits signalling = infinity | 1;
  struct {
    bits argument, result[3];
    int32_t status[3];
  } const rows[] = {
      {0, {infinity, 0, infinity}, {2, 0, 2}},
      {sign, {sign | infinity, sign, sign | infinity}, {2, 0, 2}},
      {sign | 1, {sign | infinity, sign | nan, sign | nan}, {0, 1, 1}},
      {infinity, {0, infinity, 0}, {0, 0, 0}},
      {sign | infinity, {sign, sign | nan, sign | nan}, {0, 1, 1}},
      {nan | 5, {nan | 5, nan | 5, nan | 5}, {0, 0, 0}},
      {signalling, {signalling | nan, signalling | nan, signalling | nan}, {0, 0, 0}},
  };
  for (const auto& row : rows)
    for (const int which : {inv, sqrt, inv_sqrt})
      for (int slot = 0; slot < 3; ++slot) {
        const auto& f = functions<Real>[which];
        tmk_vtm_kernel_ClearErrStatus();
        const auto r = call(f, slot, {tmk::from_bits<Real>(row.argument)});
        EXPECT_EQ(tmk::to_bits(r[0]), row.result[which])
            << f.name << " slot " << slot << " of bits " << std::hex << row.argument;
        EXPECT_EQ(tmk_vtm_kernel_GetErrStatus(), row.status[which])
            << f.name << " slot " << slot << " of bits " << std::hex << row.argument;
      }
}

template <class Real>
void expect_levels(const std::vector<Real>& a) {
  using limits = std::numeric_limits<Real>;
  constexpr bool is_single = sizeof(Real) == 4;
  const bool is_baseline = tmk_current_tier() == TMK_TIER_W7;
  for (const auto& f : functions<Real>)
    for (const auto denormals : {VTM_DENORMALS_KEPT, VTM_DENORMALS_FLUSHED}) {
      tmk_vtm_kernel_SetMode(denormals);
      const long double relative[] = {is_single ? 0x1p-21L : 0x1p-50L, 1, is_single ? 0x1p-11L : 0x1p-26L};
      for (int slot = 0; slot < 3; ++slot) {
        const auto r = call(f, slot, a);
        for (size_t i = 0; i < a.size(); ++i) {
          const long double want = f.exact(a[i]);
          // The baseline passes the estimate on here, which the processor may flush to 0.
          if (is_baseline && is_single && &f == &functions<Real>[inv] && slot != 1 && a[i] == Real(0x1p126))
            continue;
          if (want < limits::min() || want > limits::max()) continue;
          // A thread that flushes loses subnormals, also those that the baseline's formulas pass through.
          const Real magnitude = std::max(a[i], 1 / a[i]);
          if (denormals == VTM_DENORMALS_FLUSHED && is_baseline && a[i] >= limits::min() &&
              magnitude > limits::max() * Real(0x1p-60))
            continue;
          const long double error = std::fabs(r[i] - want);
          const long double ulp = std::ldexp(1.0L, std::ilogb(want) + 1 - format<Real>::precision);
          EXPECT_LE(error, relative[slot] * want) << f.name << " slot " << slot << " at " << a[i];
          if (slot == 1) {
            EXPECT_LE(error, (is_baseline ? f.ha_ulp : 0.55L) * ulp) << f.name << " at " << a[i];
          }
        }
      }
    }
}

TYPED_TEST(reciprocal, powers_of_two) {
  using Real = TypeParam;
  std::vector<Real> a;
  for (Real x = std::numeric_limits<Real>::denorm_min(); x <= std::numeric_limits<Real>::max(); x *= 2)
    a.push_back(x);
  expect_levels(a);
}

}  // namespace
