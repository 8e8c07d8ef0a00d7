// SPDX-License-Identifier: Apache-2.0
// The logarithm family in every slot of the selected tier: special values bit for bit, reports, thresholds.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"

namespace {

using tmk::format;

template <class Real>
using bits_of = typename format<Real>::bits;

template <class Real>
struct function {
  const char* name;
  const VtmDispatchRecord* record;
  long double (*exact)(long double);
};

#define FUNCTION(letter, stem, exact) \
  { #letter #stem, &tmk_vtm_kernel_##letter##stem##_ttab, exact }
#define FUNCTIONS(letter)                                                                                   \
  {                                                                                                         \
    FUNCTION(letter, Ln, std::log), FUNCTION(letter, Log10, std::log10), FUNCTION(letter, Log2, std::log2), \
        FUNCTION(letter, Log1p, std::log1p), FUNCTION(letter, Logb, std::logb)                              \
  }

template <class Real>
const function<Real> functions[5] = {};
template <>
const function<float> functions<float>[5] = FUNCTIONS(s);
template <>
const function<double> functions<double>[5] = FUNCTIONS(d);
enum { ln, log10, log2, log1p, logb };

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
void call(const function<Real>& f, int slot, int32_t n, const Real* a, Real* r) {
  reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(f.record->kernel[slot])(n, a, r);
}

template <class Real>
std::vector<Real> call(const function<Real>& f, int slot, const std::vector<Real>& a) {
  std::vector<Real> r(a.size());
  call(f, slot, static_cast<int32_t>(a.size()), a.data(), r.data());
  return r;
}

template <class Real>
bits_of<Real> bits_at(const std::vector<Real>& v, size_t i) {
  bits_of<Real> b;
  std::memcpy(&b, &v[i], sizeof b);
  return b;
}

// A special value has its answer at every place of an array whose other elements stay as they were.
template <class Real>
void expect_special(const function<Real>& f, bits_of<Real> x, bits_of<Real> want, int32_t status) {
  constexpr size_t n = 21;
  for (int slot = 0; slot < 3; ++slot) {
    const std::vector<Real> ordinary(n, Real(1.625));
    const auto clean = call(f, slot, ordinary);
    for (size_t place = 0; place < n; ++place) {
      auto a = ordinary;
      std::memcpy(&a[place], &x, sizeof x);
      reports.clear();
      const auto r = call(f, slot, a);
      const auto want_reports =
          status ? std::vector<report>{{static_cast<int32_t>(place), status}} : std::vector<report>{};
      ASSERT_TRUE(reports == want_reports) << f.name << " slot " << slot << " of bits " << std::hex << x;
      for (size_t i = 0; i < n; ++i)
        ASSERT_EQ(bits_at(r, i), i == place ? want : bits_at(clean, i))
            << f.name << " slot " << slot << " of bits " << std::hex << x << " at " << place;
    }
  }
}

template <class Real>
class logarithm : public testing::Test {
 protected:
  logarithm() {
    EXPECT_GE(tmk_select_tier(TMK_TIER_WIDEST), 0);
    tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_CALLBACK);
    tmk_vtm_kernel_SetErrorCallBack(note);
    reports.clear();
  }
  ~logarithm() override {
    tmk_vtm_kernel_ClearErrorCallBack();
    tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT | VTM_ERRMODE_DEFAULT);
  }
};
using precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(logarithm, precisions);

TYPED_TEST(logarithm, special_values) {
  using bits = bits_of<TypeParam>;
  using f = format<TypeParam>;
  constexpr bits inf = f::infinity, nan = f::quiet_nan, sign = f::sign, none = 0;
  constexpr bits signalling = inf | 5, smallest = 1;
  constexpr bits one = tmk::to_bits(TypeParam(1)), half = tmk::to_bits(TypeParam(0.5));
  const bits lowest_exponent = tmk::to_bits(TypeParam(2 - f::precision - f::bias));
  const struct {
    int first, last;  // the functions that the row holds for
    bits x, want;
    int32_t status;
  } rows[] = {
      {ln, log2, 0, sign | inf, VTM_STATUS_SINGULARITY},
      {ln, log2, sign, sign | inf, VTM_STATUS_SINGULARITY},
      {ln, log2, sign | one, sign | nan, VTM_STATUS_DOMAIN},
      {ln, log2, sign | smallest, sign | nan, VTM_STATUS_DOMAIN},
      {ln, log2, sign | inf, sign | nan, VTM_STATUS_DOMAIN},
      {ln, log2, inf, inf, 0},
      {ln, log1p, signalling, nan | 5, 0},
      {ln, log1p, sign | signalling, sign | nan | 5, 0},
      {ln, log2, one, none, 0},
      {log2, log2, smallest, lowest_exponent, 0},
      {log2, log2, half, sign | one, 0},
      {log1p, log1p, 0, 0, 0},
      {log1p, log1p, sign, sign, 0},
      {log1p, log1p, smallest, smallest, 0},
      {log1p, log1p, sign | smallest, sign | smallest, 0},
      {log1p, log1p, sign | one, sign | inf, VTM_STATUS_SINGULARITY},
      {log1p, log1p, sign | (one + 1), sign | nan, VTM_STATUS_DOMAIN},
      {log1p, log1p, sign | inf, sign | nan, VTM_STATUS_DOMAIN},
      {log1p, log1p, inf, inf, 0},
      {logb, logb, 0, sign | inf, VTM_STATUS_SINGULARITY},
      {logb, logb, sign, sign | inf, VTM_STATUS_SINGULARITY},
      {logb, logb, sign | inf, inf, 0},
      {logb, logb, inf, inf, 0},
      {logb, logb, signalling, nan | 5, 0},
      {logb, logb, smallest, lowest_exponent, 0},
      {logb, logb, sign | smallest, lowest_exponent, 0},
      {logb, logb, sign | (one - 1), sign | one, 0},
      {logb, logb, inf - 1, tmk::to_bits(TypeParam(f::bias)), 0},
  };
  for (const auto& row : rows)
    for (int i = row.first; i <= row.last; ++i)
      expect_special(functions<TypeParam>[i], row.x, row.want, row.status);
}

// Where one branch ends and the next begins, on both sides; subnormals; the ends of the format; and all
// distances from the zero of the function.
TYPED_TEST(logarithm, thresholds_hold_their_level) {
  using Real = TypeParam;
  constexpr bool is_single = sizeof(Real) == 4;
  constexpr Real around[] = {Real(0.9921875), Real(1.015625),  Real(1),         Real(2) / 3,
                             Real(4) / 3,     Real(0.5),       Real(2),         Real(0x1.02p0),
                             Real(0x1.fep-1), Real(0x1.008p0), Real(0x1.ff8p-1)};
  constexpr Real around_minus_one[] = {0x1p-25, 0x1p-48, 0x1p-54,    0x1p-20,
                                       0x1p-8,  1,       Real(1e10), Real(0x1p54)};
  const Real smallest_normal = std::numeric_limits<Real>::min(), largest = std::numeric_limits<Real>::max();
  std::vector<Real> positive = {smallest_normal, std::nextafter(smallest_normal, Real(0)), largest,
                                std::numeric_limits<Real>::denorm_min(),
                                3 * std::numeric_limits<Real>::denorm_min()};
  for (const Real x : around)
    for (Real step : {Real(0), Real(4), x}) positive.insert(positive.end(), {std::nextafter(x, step)});
  std::vector<Real> above_minus_one = {largest, smallest_normal, std::nextafter(Real(-1), Real(0)),
                                       Real(-0.5)};
  for (const Real x : around_minus_one)
    for (const Real y : {std::nextafter(x, Real(0)), x, std::nextafter(x, largest)})
      above_minus_one.insert(above_minus_one.end(), {y, x < 1 ? -y : y});

  std::mt19937 random(1);
  std::uniform_real_distribution<double> exponent(1, format<Real>::precision + 4);
  for (int i = 0; i < 2000; ++i) {
    const Real distance = static_cast<Real>(std::exp2(-exponent(random)));
    positive.insert(positive.end(), {1 - distance, 1 + distance});
    above_minus_one.insert(above_minus_one.end(), {-distance, distance});
  }

  // LA: 21 (50) bits, and 2 ulp on the baseline; HA: 3/4 ulp; EP: 11 (26) bits.
  const long double relative[] = {is_single ? 0x1p-21L : 0x1p-50L, 1, is_single ? 0x1p-11L : 0x1p-26L};
  const long double in_ulp[] = {tmk_current_tier() == TMK_TIER_W7 ? 2 : HUGE_VALL, 0.75, HUGE_VALL};
  for (const auto& f : functions<Real>) {
    const auto& inputs = &f == &functions<Real>[log1p] ? above_minus_one : positive;
    for (int slot = 0; slot < 3; ++slot) {
      const auto r = call(f, slot, inputs);
      for (size_t i = 0; i < inputs.size(); ++i) {
        const long double want = f.exact(inputs[i]), error = std::fabs(r[i] - want);
        if (want == 0) {
          EXPECT_EQ(r[i], 0) << f.name << " slot " << slot;
          continue;
        }
        const long double ulp = std::max(std::ldexp(1.0L, std::ilogb(want) + 1 - format<Real>::precision),
                                         static_cast<long double>(std::numeric_limits<Real>::denorm_min()));
        EXPECT_LE(error, in_ulp[slot] * ulp) << f.name << " slot " << slot << " at " << inputs[i];
        EXPECT_LE(error, relative[slot] * std::fabs(want))
            << f.name << " slot " << slot << " at " << inputs[i];
      }
    }
  }
  EXPECT_TRUE(reports.empty());
}

}  // namespace
