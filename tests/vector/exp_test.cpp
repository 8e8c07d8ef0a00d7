// SPDX-License-Identifier: Apache-2.0
// The exponential family in every slot of the selected tier: special values and limits of the cases, bit for
// bit, with their reports. Tests of all functions judge the accuracy between them.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

namespace {

using tmk::format;
using tmk::to_bits;

template <class Real>
struct function {
  const char* name;
  const VtmDispatchRecord* record;
  Real lowest, highest;  // arguments of normal results
};

enum { exp, exp2, exp10, expm1 };
#define FUNCTION(letter, stem, lowest, highest) \
  { #letter #stem, &tmk_vtm_kernel_##letter##stem##_ttab, lowest, highest }
template <class Real>
const function<Real> functions[4] = {};
template <>
const function<float> functions<float>[] = {
    FUNCTION(s, Exp, -0x1.5d589ep+6f, 0x1.62e42ep+6f),
    FUNCTION(s, Exp2, -126.0f, 0x1.fffffep+6f),
    FUNCTION(s, Exp10, -0x1.2f703p+5f, 0x1.344134p+5f),
    FUNCTION(s, Expm1, -104.0f, 0x1.62e42ep+6f),
};
template <>
const function<double> functions<double>[] = {
    FUNCTION(d, Exp, -0x1.6232bdd7abcd2p+9, 0x1.62e42fefa39efp+9),
    FUNCTION(d, Exp2, -1022.0, 0x1.fffffffffffffp+9),
    FUNCTION(d, Exp10, -0x1.33a7146f72a41p+8, 0x1.34413509f79fep+8),
    FUNCTION(d, Expm1, -750.0, 0x1.62e42fefa39efp+9),
};
constexpr int slots = 3;

template <class Real>
void call(const function<Real>& f, int slot, int32_t n, const Real* a, Real* r) {
  reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(f.record->kernel[slot])(n, a, r);
}

struct report {
  int32_t index, code;
  bool operator==(const report&) const = default;
};
std::vector<report> reports;

int32_t note(VtmErrorContext* context) {
  reports.push_back({context->index, context->code});
  return 1;
}
template <class Real>
class exponential : public testing::Test {
 protected:
  exponential() {
    EXPECT_GE(tmk_select_tier(TMK_TIER_WIDEST), 0);
    tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_CALLBACK);
    tmk_vtm_kernel_SetErrorCallBack(note);
    reports.clear();
  }
  ~exponential() override {
    tmk_vtm_kernel_ClearErrorCallBack();
    tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_DEFAULT);
  }

  struct row {
    int which;
    Real x, want;
    int32_t status;
  };
  // Each argument among ordinary ones, so that it meets a whole group, and alone.
  static void expect(const row& row) {
    const auto& f = functions<Real>[row.which];
    for (int slot = 0; slot < slots; ++slot)
      for (const int n : {1, 40}) {
        std::vector<Real> a(static_cast<size_t>(n), Real(0.625)), r(a.size());
        const int place = n / 2;
        a[static_cast<size_t>(place)] = row.x;
        reports.clear();
        call(f, slot, n, a.data(), r.data());
        EXPECT_EQ(to_bits(r[static_cast<size_t>(place)]), to_bits(row.want))
            << f.name << " slot " << slot << " of " << row.x << " gave " << r[static_cast<size_t>(place)];
        const auto want = row.status ? std::vector<report>{{place, row.status}} : std::vector<report>{};
        EXPECT_TRUE(reports == want) << f.name << " slot " << slot << " of " << row.x;
      }
  }
};
using precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(exponential, precisions);

TYPED_TEST(exponential, special_values) {
  using Real = TypeParam;
  using limits = std::numeric_limits<Real>;
  const auto signalling = tmk::from_bits<Real>(format<Real>::infinity | 5);
  const auto quieted = tmk::from_bits<Real>(format<Real>::quiet_nan | 5);
  for (int which = exp; which <= expm1; ++which) {
    const Real at_zero = which == expm1 ? 0 : 1, at_minus_infinity = which == expm1 ? -1 : 0;
    this->expect({which, signalling, quieted, 0});
    this->expect({which, limits::infinity(), limits::infinity(), 0});
    this->expect({which, -limits::infinity(), at_minus_infinity, 0});
    this->expect({which, limits::max(), limits::infinity(), VTM_STATUS_OVERFLOW});
    this->expect({which, Real(0), at_zero, 0});
    this->expect({which, Real(-0.0), which == expm1 ? Real(-0.0) : Real(1), 0});
    if (which != expm1) this->expect({which, -limits::max(), Real(0), VTM_STATUS_UNDERFLOW});
  }
  for (const Real tiny : {limits::denorm_min(), -limits::min(), 3 * limits::denorm_min()}) {
    this->expect({exp, tiny, Real(1), 0});
    this->expect({expm1, tiny, tiny, 0});
  }
  this->expect({expm1, -limits::max(), Real(-1), 0});
  this->expect({expm1, Real(-40), Real(-1), 0});
  for (const int n : {-126, -60, -1, 1, 60, 127}) this->expect({exp2, Real(n), std::ldexp(Real(1), n), 0});
}

// On either side of every limit: where infinity begins, where reports of underflow begin and zero does.
TYPED_TEST(exponential, limits_of_the_cases) {
  using Real = TypeParam;
  using limits = std::numeric_limits<Real>;
  constexpr bool is_single = sizeof(Real) == 4;
  constexpr Real least = limits::denorm_min();
  for (const auto& f : functions<Real>) {
    const int which = static_cast<int>(&f - functions<Real>);
    this->expect({which, std::nextafter(f.highest, limits::max()), limits::infinity(), VTM_STATUS_OVERFLOW});
  }
  const Real exp_zero = is_single ? Real(-0x1.9d1da2p+6) : Real(-0x1.74910d52d3052p+9);
  const Real exp2_zero = is_single ? Real(-150) : Real(-1075);
  const Real exp10_zero = is_single ? Real(-0x1.693c6cp+5) : Real(-0x1.439b746e36b53p+8);
  const struct {
    int which;
    Real zero;
  } rows[] = {{exp, exp_zero}, {exp2, exp2_zero}, {exp10, exp10_zero}};
  for (const auto& row : rows) {
    this->expect({row.which, row.zero, Real(0), VTM_STATUS_UNDERFLOW});
    this->expect({row.which, std::nextafter(row.zero, Real(0)), least, VTM_STATUS_UNDERFLOW});
  }
  this->expect({exp2, Real(is_single ? -149 : -1074), least, VTM_STATUS_UNDERFLOW});
  this->expect({exp2, Real(is_single ? -127 : -1023), limits::min() / 2, VTM_STATUS_UNDERFLOW});

  // The last subnormal results report, the first normal ones do not.
  for (int which = exp; which <= exp10; ++which) {
    const auto& f = functions<Real>[which];
    for (int slot = 0; slot < slots; ++slot) {
      const Real a[] = {std::nextafter(f.lowest, -limits::max()), f.lowest};
      Real r[2];
      reports.clear();
      call(f, slot, 2, a, r);
      EXPECT_TRUE((reports == std::vector<report>{{0, VTM_STATUS_UNDERFLOW}})) << f.name << " slot " << slot;
    }
  }
}

// Singles take subnormal results from one formula at every level of the baseline.
TEST(exponential_baseline, single_subnormals_are_those_of_every_level) {
  const int32_t tier = tmk_current_tier();
  ASSERT_EQ(tmk_select_tier(TMK_TIER_W7), TMK_TIER_W7);
  tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_IGNORE);
  for (float x = -87.5f; x > -103.0f; x -= 0.37f)
    for (int slot = 0; slot < slots; ++slot) {
      float r;
      call(functions<float>[exp], slot, 1, &x, &r);
      EXPECT_EQ(to_bits(r), to_bits(static_cast<float>(expl(x)))) << x << " slot " << slot;
    }
  tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_DEFAULT);
  tmk_select_tier(tier);
}

}  // namespace
