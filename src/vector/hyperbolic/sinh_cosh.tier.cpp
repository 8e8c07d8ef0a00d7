// SPDX-License-Identifier: Apache-2.0
// Hyperbolic sine and cosine: the sums of even_and_odd.hpp.
#include "vector/hyperbolic/even_and_odd.hpp"
#include "vector/toolbox/odd.hpp"
#include "vector/toolbox/settled.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, bool Odd>
struct hyperbolic : description<Real> {
  using value = batch<Real>;
  static lane_mask<Real> flagged(const value& x, const value&) {
    return !(xsimd::abs(x) < value(hyperbolic_end<Real>));
  }
  static std::optional<int32_t> shortcut(const Real* a, Real* r) {
    const Real sign = Odd ? *a : Real(1);
    if (std::isinf(*a)) return infinite(sign, VTM_STATUS_OK, r);
    if (std::abs(*a) > hyperbolic_end<Real> + 1) return infinite(sign, VTM_STATUS_OVERFLOW, r);
    return std::nullopt;
  }
};

// Maximum errors in ulp (W7), by tmk-accuracy Sinh --search thorough:
//   single LA: 1.549 at 0x1.fe530ap+2: got 0x1.6afd94p+10, want 0x1.6afd90e7p+10
//   single HA: 0.5070 at -0x1.5478a8p+6: got -0x1.bd6f3p+121, want -0x1.bd6f2efcp+121
//   single EP: 2402 at 0x1.e43e2cp-2: got 0x1.f69144p-2, want 0x1.f67e7fa2p-2
//   double LA, EP: 1.962 at 0x1.260b63e8b0192p+4: got 0x1.6d7365a66475ep+25, want 0x1.6d7365a66475c0ap+25
//   double HA: 0.5768 at 0x1.11c4e1479b8p-3: got 0x1.1295cb8eeb8cp-3, want 0x1.1295cb8eeb8bf6cp-3
// Maximum errors in ulp (V3, V4), by tmk-accuracy Sinh --search thorough:
//   single LA: 1.525 at 0x1.fe4ee2p+2: got 0x1.6ae602p+10, want 0x1.6ae5fef3p+10
//   single HA: 0.5039 at 0x1.709dd2p-5: got 0x1.70bdacp-5, want 0x1.70bdaafep-5
//   single EP: 2402 at 0x1.e3d08cp-2: got 0x1.f6172ap-2, want 0x1.f60465a5p-2
//   double LA, EP: 1.934 at -0x1.25ff2614db017p+4: got -0x1.6c5c35c6ccdcep+25, want -0x1.6c5c35c6ccdcc11p+25
//   double HA: 0.5764 at -0x1.122073c6fbf41p-3: got -0x1.12f23017fa8a4p-3, want -0x1.12f23017fa8a36cp-3
template <class Real, level Level>
struct hyperbolic_sine : hyperbolic<Real, true> {
  using value = batch<Real>;
  static value fast(const value& x) {
    return odd_function(x, [](const value& magnitude) {
      const hyperbolic_argument<Real, Level> arg(magnitude);
      if constexpr (Level == level::ha) {
        const auto sum = sinh_pair(arg);
        return sum.high + sum.low;
      } else {
        return sinh_in_one(arg);
      }
    });
  }
};

// Maximum errors in ulp (W7), by tmk-accuracy Cosh --search thorough:
//   single LA: 1.841 at 0x1.004336p+3: got 0x1.77b08p+10, want 0x1.77b083afp+10
//   single HA: 0.5909 at -0x1.f2db04p+0: got 0x1.ca5954p+1, want 0x1.ca5952d1p+1
//   single EP: 1766 at 0x1.2a0386p+0: got 0x1.c202ccp+0, want 0x1.c1f500a8p+0
//   double LA, HA, EP: 0.6183 at 0x1.11d891038ae46p+4: got 0x1.9da624b2bbfb6p+23, want
//   0x1.9da624b2bbfb562p+23
// Maximum errors in ulp (V3, V4), by tmk-accuracy Cosh --search thorough:
//   single LA: 1.884 at 0x1.001998p+3: got 0x1.75c924p+10, want 0x1.75c927c4p+10
//   single HA: 0.5615 at -0x1.dcf46ap+0: got 0x1.a6546p+1, want 0x1.a654612p+1
//   single EP: 1766 at 0x1.2a3a2cp+0: got 0x1.c251d4p+0, want 0x1.c24408b4p+0
//   double LA, EP: 1.682 at 0x1.25eb932badd4fp+4: got 0x1.6a9f86f848dcap+25, want 0x1.6a9f86f848dcbafp+25
//   double HA: 0.5890 at 0x1.11d857add3ff2p+4: got 0x1.9da05a753df9p+23, want 0x1.9da05a753df8f69p+23
template <class Real, level Level>
struct hyperbolic_cosine : hyperbolic<Real, false> {
  using value = batch<Real>;
  static value fast(const value& x) {
    const hyperbolic_argument<Real, Level> arg(maximum_or_second(value(tiny<Real>), xsimd::abs(x)));
    if constexpr (Level == level::ha) {
      const auto sum = cosh_pair(arg);
      return sum.high + sum.low;
    } else {
      return cosh_in_one(arg);
    }
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Sinh, unary, LHE, hyperbolic_sine)
TMK_KERNELS(d, Sinh, unary, LHL, hyperbolic_sine)
TMK_KERNELS(s, Cosh, unary, LHE, hyperbolic_cosine)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_KERNELS(d, Cosh, unary, HHH, hyperbolic_cosine)
#else
TMK_KERNELS(d, Cosh, unary, LHL, hyperbolic_cosine)
#endif
