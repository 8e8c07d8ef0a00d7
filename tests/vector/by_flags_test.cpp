// SPDX-License-Identifier: Apache-2.0
// Sums and products of middling arrays, whose elements are not tested one by one: a special element anywhere
// has the bits and the status that it has alone, in place too, whatever flags were raised before.
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "tmk/abi/vtm.h"

namespace {

std::vector<std::pair<int, int>> reports;  // index, status
int32_t note(VtmErrorContext* context) {
  reports.emplace_back(context->index, context->code);
  return 1;
}

struct function {
  const char* name;
  const VtmDispatchRecord* record;
  int arguments, parts;  // of an element
};

class by_flags : public testing::TestWithParam<function> {
 protected:
  by_flags() : mode_(tmk_vtm_kernel_SetMode(VTM_HA | VTM_DENORMALS_KEPT | VTM_ERRMODE_CALLBACK)) {
    tmk_select_tier(TMK_TIER_WIDEST);
    tmk_vtm_kernel_SetErrorCallBack(note);
  }
  ~by_flags() override {
    tmk_vtm_kernel_ClearErrorCallBack();
    tmk_vtm_kernel_SetMode(mode_);
  }

  template <class Real>
  static void call(int n, const Real* a, const Real* b, Real* r) {
    const VtmKernel f = GetParam().record->kernel[1];
    reports.clear();
    if (GetParam().arguments == 1)
      reinterpret_cast<void (*)(int32_t, const void*, void*)>(f)(n, a, r);
    else
      reinterpret_cast<void (*)(int32_t, const void*, const void*, void*)>(f)(n, a, b, r);
  }

  template <class Real>
  static void check() {
    using limits = std::numeric_limits<Real>;
    // The payloads are upper bits, so that singles have them, too.
    const Real quiet = static_cast<Real>(std::nan("0x4000000000000")),
               other = static_cast<Real>(-std::nan("0x2000000000000")), infinity = limits::infinity(),
               large = limits::max(), tiny = limits::min();
    const std::pair<Real, Real> special[] = {
        {1, 1},
        {quiet, other},
        {other, quiet},
        {limits::signaling_NaN(), 1},
        {1, quiet},
        {infinity, infinity},
        {infinity, -infinity},
        {infinity, 0},
        {infinity, 1},
        {large, large},
        {large, -large},
        {tiny, Real(0.5)},
        {tiny, Real(0.3)},
        {tiny, tiny},
        {3 * limits::denorm_min(), Real(0.5)},
        {0, -1},
    };
    for (const auto& [x, y] : special)
      for (const int n : {128, 1000, 8192})
        for (const int place : {0, n / 2, n - 1})
          for (const bool in_place : {false, true})
            for (const unsigned flags : {0u, 0x3Fu}) {
              const int parts = GetParam().parts;
              std::vector<Real> a(n * parts, Real(1.5)), b(n * parts, Real(0.75)), r(n * parts),
                  x1(parts, Real(1.5)), y1(parts, Real(0.75)), r1(parts);
              a[place * parts] = x1[0] = x;
              b[place * parts] = y1[0] = y;
              call(1, x1.data(), y1.data(), r1.data());
              auto wanted = reports;
              for (auto& report : wanted) report.first = place;
              _mm_setcsr((_mm_getcsr() & ~0x3Fu) | flags);
              call(n, a.data(), b.data(), in_place ? a.data() : r.data());
              const std::vector<Real>& found = in_place ? a : r;
              SCOPED_TRACE(testing::Message() << x << ", " << y << " at " << place << " of " << n
                                              << (in_place ? ", in place" : ""));
              EXPECT_EQ(reports, wanted);
              EXPECT_EQ(std::memcmp(&found[place * parts], r1.data(), parts * sizeof(Real)), 0);
              EXPECT_EQ(_mm_getcsr() & flags, flags) << "flags of the caller are lost";
            }
  }

 private:
  uint32_t mode_;
};

TEST_P(by_flags, special_elements) {
  const char letter = GetParam().name[0];
  letter == 's' || letter == 'c' ? check<float>() : check<double>();
}

#define ROW(name, arguments, parts) \
  function { #name, &tmk_vtm_kernel_##name##_ttab, arguments, parts }
INSTANTIATE_TEST_SUITE_P(all, by_flags,
                         testing::Values(ROW(sAdd, 2, 1), ROW(dAdd, 2, 1), ROW(sSub, 2, 1), ROW(dSub, 2, 1),
                                         ROW(sMul, 2, 1), ROW(dMul, 2, 1), ROW(sSqr, 1, 1), ROW(dSqr, 1, 1),
                                         ROW(cAdd, 2, 2), ROW(zAdd, 2, 2), ROW(cSub, 2, 2), ROW(zSub, 2, 2)),
                         [](const auto& info) { return info.param.name; });

}  // namespace
