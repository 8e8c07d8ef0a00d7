// SPDX-License-Identifier: Apache-2.0
// Remainders, which are exact, against extended precision where quotients are long, halves, or of subnormal
// numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "platform/fp.hpp"
#include "tmk/abi/vtm.h"
#include "vector/reference/real/real.hpp"

namespace {

template <class Real>
class pairs {
 public:
  std::vector<Real> a, b;

  void add(Real x, Real y) {
    if (!std::isfinite(x) || !std::isfinite(y) || y == 0) return;
    a.push_back(x);
    b.push_back(y);
  }
  Real any() {
    for (;;)
      if (const Real x = tmk::from_bits<Real>(static_cast<bits>(random_())); std::isfinite(x)) return x;
  }
  Real subnormal() {
    constexpr bits fraction = (bits{1} << tmk::format<Real>::fraction_bits) - 1;
    return tmk::from_bits<Real>((static_cast<bits>(random_()) & fraction) >>
                                random_() % tmk::format<Real>::fraction_bits);
  }
  Real between(int low, int high) {
    return static_cast<Real>(low + static_cast<int>(random_() % (high - low)));
  }

 private:
  using bits = typename tmk::format<Real>::bits;
  std::mt19937_64 random_{17};
};

template <class Real>
pairs<Real> hard_pairs() {
  pairs<Real> p;
  constexpr Real largest = std::numeric_limits<Real>::max();
  for (int i = 0; i < 3000; ++i) {
    p.add(p.any(), p.any());
    p.add(p.any(), p.subnormal());
    p.add(p.subnormal() * p.between(1, 99), p.subnormal());
    p.add(largest, p.any());
    p.add(largest - largest * p.between(0, 4) * std::numeric_limits<Real>::epsilon(),
          largest / p.between(1, 9));
    const Real y = p.any(), half = y * (p.between(0, 99999) + Real(0.5));
    p.add(half, y);
    p.add(std::nextafter(half, Real(0)), y);
    p.add(std::ldexp(y, static_cast<int>(p.between(20, 60))) + y, y);
  }
  return p;
}

template <class Real>
void expect_exact(const VtmDispatchRecord& record, int (*reference)(Real, Real, Real&)) {
  const auto p = hard_pairs<Real>();
  std::vector<Real> r(p.a.size());
  const auto n = static_cast<int32_t>(r.size());
  reinterpret_cast<void (*)(int32_t, const Real*, const Real*, Real*)>(record.kernel[TMK_SLOT_HA])(
      n, p.a.data(), p.b.data(), r.data());
  for (size_t i = 0; i < r.size(); ++i) {
    Real want;
    reference(p.a[i], p.b[i], want);
    ASSERT_EQ(tmk::to_bits(r[i]), tmk::to_bits(want)) << std::hexfloat << p.a[i] << " by " << p.b[i];
  }
}

TEST(remainders, are_exact_for_hard_pairs) {
  for (const int32_t tier : {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4}) {
    if (tmk_select_tier(tier) != tier) continue;
    SCOPED_TRACE(tmk_tier_name(tier));
    expect_exact<float>(tmk_vtm_kernel_sFmod_ttab, tmk::reference::Fmod);
    expect_exact<double>(tmk_vtm_kernel_dFmod_ttab, tmk::reference::Fmod);
    expect_exact<float>(tmk_vtm_kernel_sRemainder_ttab, tmk::reference::Remainder);
    expect_exact<double>(tmk_vtm_kernel_dRemainder_ttab, tmk::reference::Remainder);
  }
  tmk_select_tier(TMK_TIER_WIDEST);
}

}  // namespace
