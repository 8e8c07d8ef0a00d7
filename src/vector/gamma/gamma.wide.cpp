// SPDX-License-Identifier: Apache-2.0
// The gamma function and the logarithm of its magnitude. Singles at all levels, and doubles at EP, take the
// short formula in double precision; doubles else that in pairs. Zeros, poles and what is out of range need a
// status: they are rare elements, as are arguments next to the negative zeros of ln |gamma(x)|.
#include <cmath>

#include "vector/gamma/paired_gamma.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/toolbox/scaled_back.hpp"
#include "vector/walk/kernel.hpp"

extern "C" {
int32_t tmk_vtm_reference_sTGamma(const float*, float*);
int32_t tmk_vtm_reference_dTGamma(const double*, double*);
int32_t tmk_vtm_reference_sLGamma(const float*, float*);
int32_t tmk_vtm_reference_dLGamma(const double*, double*);
}

TMK_TIER_OPEN
namespace {

inline int32_t reference_gamma(const float* a, float* r) { return tmk_vtm_reference_sTGamma(a, r); }
inline int32_t reference_gamma(const double* a, double* r) { return tmk_vtm_reference_dTGamma(a, r); }
inline int32_t reference_log_gamma(const float* a, float* r) { return tmk_vtm_reference_sLGamma(a, r); }
inline int32_t reference_log_gamma(const double* a, double* r) { return tmk_vtm_reference_dLGamma(a, r); }

template <class Real>
bool is_subnormal(Real x) {
  using bits = typename format<Real>::bits;
  const bits magnitude = to_bits(x) & ~format<Real>::sign;
  return magnitude != 0 && magnitude < to_bits(std::numeric_limits<Real>::min());
}

// Maximum errors in ulp, by tmk-accuracy TGamma --samples 60000 --search brief:
//   single (V3): 0.5014 at 0x1.05f87p-124: got 0x1.f454ccp+123, want 0x1.f454caffp+123
//   single (V4): 0.5261 at 0x1.8f91a8p+3: got 0x1.f8d5aep+26, want 0x1.f8d5acf3p+26
//   double LA, HA: 0.5913 at -0x1.35c80be77e69p+6: got 0x1.f20c521746b8dp-378, want 0x1.f20c521746b8c69p-378
//   double EP: 33.4 bits (V3), 29.2 bits (V4)
template <class Real, level Level>
struct gamma_function : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4, short_form = single || Level == level::ep;
  static constexpr int group = 2 * lanes<Real>;
  // Results are 0 below `vanished` and infinite above `infinite`; fast() serves magnitudes up to `last`.
  static constexpr Real vanished = single ? Real(-44) : Real(-186), infinite = single ? Real(36) : Real(172);
  static constexpr double last = single ? 45 : short_form ? 171.5 : 200;
  // Below this gamma(x) is 1 / x; pairs of doubles lose their second parts.
  static constexpr Real tiny = single ? std::numeric_limits<Real>::min() : Real(0x1p-900);

  static value fast(const value& x) {
    if constexpr (single)
      return in_double([](const f64& v) { return of(v); }, x);
    else
      return of(x);
  }
  static lane_mask<Real> flagged(const value& x, const value& y) {
    return not_normal(y) | magnitude_outside<Real, to_bits(tiny), to_bits(Real(last))>(x);
  }
  static lane_mask<Real> patch(const value& x, value& y) {
    const auto nan = xsimd::isnan(x);
    const value magnitude = xsimd::abs(x);
    if constexpr (!single) y = xsimd::select(magnitude < value(tiny), value(Real(1)) / x, y);
    const auto rest = not_normal(y) | (magnitude >= value(Real(last))) | (single ? below_normal(x) : nan);
    y = xsimd::select(nan, x + x, y);
    return rest & !nan;
  }
  static int32_t rare(const Real* a, Real* r) {
    using limits = std::numeric_limits<Real>;
    const Real x = *a, whole = std::floor(x);
    const auto answer = [&](Real y, int32_t status) {
      *r = y;
      return status;
    };
    // Subnormal numbers may compare equal to zero.
    if (is_subnormal(x)) return reference_gamma(a, r);
    if (x == 0) return answer(1 / x, VTM_STATUS_SINGULARITY);
    if (x < 0 && whole == x) return answer(limits::quiet_NaN(), VTM_STATUS_DOMAIN);
    if (x > infinite) return answer(limits::infinity(), std::isinf(x) ? VTM_STATUS_OK : VTM_STATUS_OVERFLOW);
    if (x < vanished)
      return answer(std::fmod(whole, Real(2)) == 0 ? Real(0) : Real(-0.0), VTM_STATUS_UNDERFLOW);
    const Real y = extreme(x), magnitude = std::fabs(y);
    return answer(y, std::isinf(y)               ? VTM_STATUS_OVERFLOW
                     : magnitude < limits::min() ? VTM_STATUS_UNDERFLOW
                                                 : VTM_STATUS_OK);
  }

 private:
  static f64 of(const f64& x) {
    const f64 magnitude = minimum_or_second(f64(last), xsimd::abs(x));
    if constexpr (short_form) {
      return short_gamma(x, magnitude);
    } else {
      const auto [high, low, scale] = paired_gamma(x, magnitude);
      return (high + low) * scale;
    }
  }
  // Where results leave the normal numbers, or EP's powers of two their range.
  static Real extreme(Real x) {
    if constexpr (single) {
      return static_cast<float>(of(f64(x)).get(0));
    } else {
      const auto [high, low, scale] = paired_gamma(f64(x), f64(std::fabs(x)));
      if (x > 0) return ((high + low) * scale).get(0);
      const f64 sign = xsimd::bitofsign(high);
      return (scaled_back<0x1p400>(high ^ sign, low ^ sign) ^ sign).get(0);
    }
  }
};

// Maximum errors in ulp, by tmk-accuracy LGamma --samples 60000 --search brief:
//   single (V3): 0.5247 at -0x1.3a64b4p+1: got 0x1.4940c4p-10, want 0x1.4940c2f3p-10
//   single (V4): 0.5263 at -0x1.3a6a14p+1: got 0x1.07c558p-10, want 0x1.07c556f3p-10
//   double LA, HA: 0.6533 at -0x1.3b6eabdcecc93p+1: got -0x1.619c5c70c3b61p-7, want -0x1.619c5c70c3b61a7p-7
//   double EP: 28 bits
template <class Real, level Level>
struct log_gamma : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr int group = 2 * lanes<Real>;
  // The sums' errors are too much for smaller logarithms next to negative zeros: these are rare elements.
  static constexpr Real near_zero = single || Level == level::ep ? Real(0x1p-10) : Real(0x1p-7);

  static value fast(const value& x) {
    if constexpr (single)
      return in_double([](const f64& v) { return short_log_gamma(v); }, x);
    else if constexpr (Level == level::ep)
      return short_log_gamma(x);
    else
      return paired_log_gamma(x);
  }
  // Halves of a turn are not distinguished from 2^51 on.
  static lane_mask<Real> flagged(const value& x, const value& y) {
    const auto exposed =
        (x < value(Real(0))) & ((xsimd::abs(y) < value(near_zero)) | (x < value(Real(-0x1p51))));
    return not_normal(x) | not_finite(y) | exposed;
  }
  static int32_t rare(const Real* a, Real* r) {
    const Real x = *a;
    if (is_subnormal(x) || (x != 0 && !std::isinf(x) && (x > 0 || std::floor(x) != x)))
      return reference_log_gamma(a, r);
    *r = std::numeric_limits<Real>::infinity();
    return std::isinf(x) ? VTM_STATUS_OK : VTM_STATUS_SINGULARITY;
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, TGamma, unary, HHH, gamma_function)
TMK_KERNELS(d, TGamma, unary, HHE, gamma_function)
TMK_KERNELS(s, LGamma, unary, HHH, log_gamma)
TMK_KERNELS(d, LGamma, unary, HHE, log_gamma)
