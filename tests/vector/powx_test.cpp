// SPDX-License-Identifier: Apache-2.0
// Powx with the exponents of other functions: which records it calls, on every tier and level, and that the
// elements to which those functions give other values are powers, at whatever place.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tmk/abi/vtm.h"

namespace {

template <class Real>
struct call_seen {
  int32_t n;
  const Real* a;
  Real* r;
  bool operator==(const call_seen&) const = default;
};
template <class Real>
std::vector<call_seen<Real>> calls;

template <class Real>
void note_call(int32_t n, const Real* a, Real* r) {
  calls<Real>.push_back({n, a, r});
}

template <class Real>
struct known_power {
  Real exponent;
  bool at_ep_alone;
  VtmDispatchRecord* record;
};
#define KNOWN_POWERS(letter)                                                                                \
  {                                                                                                         \
    {-1, false, &tmk_vtm_kernel_##letter##Inv_ttab}, {-0.5, false, &tmk_vtm_kernel_##letter##InvSqrt_ttab}, \
        {0.5, false, &tmk_vtm_kernel_##letter##Sqrt_ttab},                                                  \
        {1.5, false, &tmk_vtm_kernel_##letter##Pow3o2_ttab},                                                \
        {Real(1) / 3, true, &tmk_vtm_kernel_##letter##Cbrt_ttab},                                           \
        {Real(-1) / 3, true, &tmk_vtm_kernel_##letter##InvCbrt_ttab},                                       \
        {Real(2) / 3, true, &tmk_vtm_kernel_##letter##Pow2o3_ttab},                                         \
  }
template <class Real>
std::vector<known_power<Real>> known_powers() {
  if constexpr (sizeof(Real) == 4)
    return KNOWN_POWERS(s);
  else
    return KNOWN_POWERS(d);
}

template <class Real>
void powx(int slot, const std::vector<Real>& a, Real b, std::vector<Real>& r) {
  const auto& record = sizeof(Real) == 4 ? tmk_vtm_kernel_sPowx_ttab : tmk_vtm_kernel_dPowx_ttab;
  reinterpret_cast<void (*)(int32_t, const Real*, Real, Real*)>(record.kernel[slot])(
      static_cast<int32_t>(a.size()), a.data(), b, r.data());
}

struct bad_element {
  int32_t index, code;
  std::string name;
  bool operator==(const bad_element&) const = default;
};
std::vector<bad_element> reports;
int32_t note_report(VtmErrorContext* context) {
  reports.push_back(
      {context->index, context->code, std::string(context->name, static_cast<size_t>(context->name_length))});
  return 0;
}

template <class Real>
class powx_of : public testing::Test {
 protected:
  powx_of() : mode_(tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_CALLBACK)) {
    tmk_vtm_kernel_SetErrorCallBack(note_report);
  }
  ~powx_of() override {
    tmk_vtm_kernel_ClearErrorCallBack();
    if (mode_ != 0) tmk_vtm_kernel_SetMode(mode_);
    tmk_select_tier(TMK_TIER_WIDEST);
  }

  // check(slot) on every tier and for every level.
  template <class Check>
  void everywhere(const Check& check) {
    for (const int32_t tier : {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4})
      if (tmk_select_tier(tier) == tier)
        for (const int slot : {TMK_SLOT_HA, TMK_SLOT_EP, TMK_SLOT_LA}) {
          // A slot that has the kernel of HA has its level, too.
          const auto& record = sizeof(Real) == 4 ? tmk_vtm_kernel_sPowx_ttab : tmk_vtm_kernel_dPowx_ttab;
          const bool as_ha = record.kernel[slot] == record.kernel[TMK_SLOT_HA];
          check(as_ha ? int{TMK_SLOT_HA} : slot);
        }
  }

 private:
  uint32_t mode_;
};
using precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(powx_of, precisions);

TYPED_TEST(powx_of, known_exponents_calls_their_records) {
  using Real = TypeParam;
  const std::vector<Real> a = {1, 2, 3, 5, 8, 13, 21, 34, 55};
  std::vector<Real> r(a.size());
  this->everywhere([&](int slot) {
    for (const auto& k : known_powers<Real>()) {
      const VtmDispatchRecord found = *k.record;
      k.record->kernel[slot] = reinterpret_cast<VtmKernel>(note_call<Real>);
      calls<Real>.clear();
      powx(slot, a, k.exponent, r);
      powx(slot, a, std::nextafter(k.exponent, Real(2)), r);
      *k.record = found;
      if (k.at_ep_alone && slot != TMK_SLOT_EP)
        EXPECT_TRUE(calls<Real>.empty()) << k.exponent << " slot " << slot;
      else
        EXPECT_EQ(calls<Real>, (std::vector<call_seen<Real>>{{9, a.data(), r.data()}})) << k.exponent;
    }
  });
}

// Powers that roots and reciprocals do not give, among elements that are theirs.
TYPED_TEST(powx_of, known_exponents_keeps_the_values_of_powers) {
  using Real = TypeParam;
  using limits = std::numeric_limits<Real>;
  const std::vector<Real> special = {-Real(0),      -limits::infinity(), Real(-8),
                                     Real(0),       limits::infinity(),  limits::denorm_min(),
                                     limits::max(), -limits::max(),      limits::min()};
  this->everywhere([&](int slot) {
    for (const auto& k : known_powers<Real>())
      for (size_t place = 0; place < 40; place += 13) {
        std::vector<Real> a(40, Real(4)), r(a.size()), alone(1);
        for (size_t i = 0; i < special.size(); ++i) a[(place + 3 * i) % a.size()] = special[i];
        reports.clear();
        powx(slot, a, k.exponent, r);
        const auto all_reports = reports;
        std::vector<bad_element> want;
        for (size_t i = 0; i < a.size(); ++i) {
          reports.clear();
          powx(slot, {a[i]}, k.exponent, alone);
          for (bad_element& e : reports) want.push_back({static_cast<int32_t>(i), e.code, e.name});
          const Real power = std::pow(a[i], k.exponent);
          const bool alike = std::isnan(power)
                                 ? std::isnan(r[i])
                                 : std::abs(r[i] - power) <= std::abs(power) * Real(0x1p-10) || r[i] == power;
          EXPECT_TRUE(alike && (power != 0 || std::signbit(r[i]) == std::signbit(power)))
              << a[i] << " to the " << k.exponent << " slot " << slot << " = " << r[i] << ", not " << power;
          EXPECT_TRUE(r[i] == alone[0] || std::isnan(r[i])) << a[i] << " at " << i;
        }
        EXPECT_EQ(all_reports, want) << k.exponent << " slot " << slot;
      }
  });
}

// What the other function reports goes by its name, the rest by that of the power; both count the caller's
// elements.
TYPED_TEST(powx_of, known_exponents_reports_by_the_function_that_computes) {
  using Real = TypeParam;
  const std::string letter = sizeof(Real) == 4 ? "s" : "d";
  const Real tiny = std::numeric_limits<Real>::denorm_min();
  std::vector<Real> r(4);
  this->everywhere([&](int slot) {
    reports.clear();
    powx(slot, {4, -4, -Real(0), 1}, Real(0.5), r);
    powx(slot, {4, tiny, -2, 0}, Real(-1), r);
    EXPECT_EQ(reports, (std::vector<bad_element>{{1, VTM_STATUS_DOMAIN, "v" + letter + "Sqrt"},
                                                 {1, VTM_STATUS_OVERFLOW, "v" + letter + "Powx"},
                                                 {3, VTM_STATUS_SINGULARITY, "v" + letter + "Inv"}}));
  });
}

}  // namespace
