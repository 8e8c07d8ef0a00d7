// SPDX-License-Identifier: Apache-2.0
// The gamma function and the logarithm of its magnitude. Singles at all levels, and doubles at EP, take the
// short formula in double precision; doubles else that in pairs. Zeros, poles and what is out of range need a
// status: they are rare elements, as are arguments next to the negative zeros of ln |gamma(x)|.
#include <cmath>

#include "vector/gamma/paired_gamma.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

extern "C" {
int32_t tmk_vtm_reference_sTGamma(const float*, float*);
int32_t tmk_vtm_reference_dTGamma(const double*, double*);
}

TMK_TIER_OPEN
namespace {

inline int32_t reference_gamma(const float* a, float* r) { return tmk_vtm_reference_sTGamma(a, r); }
inline int32_t reference_gamma(const double* a, double* r) { return tmk_vtm_reference_dTGamma(a, r); }

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
  // What vanishes or overflows for its size alone; an integer has a pole.
  static int32_t rare(const Real* a, Real* r) {
    const Real x = *a, whole = std::floor(x);
    if (x < vanished && whole != x) {
      *r = std::fmod(whole, Real(2)) == 0 ? Real(0) : Real(-0.0);
      return VTM_STATUS_UNDERFLOW;
    }
    if (x > infinite && std::isfinite(x)) {
      *r = std::numeric_limits<Real>::infinity();
      return VTM_STATUS_OVERFLOW;
    }
    return reference_gamma(a, r);
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
};

template <class Real, level Level>
struct log_gamma : description<Real> {
  using value = batch<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr int group = 2 * lanes<Real>;
  // The sums' errors are too much for smaller logarithms, but next to 1 and 2.
  static constexpr Real near_zero = single || Level == level::ep ? Real(0x1p-10) : Real(0x1p-7);

  static value fast(const value& x) {
    if constexpr (single)
      return in_double([](const f64& v) { return short_log_gamma(v); }, x);
    else if constexpr (Level == level::ep)
      return short_log_gamma(x);
    else
      return paired_log_gamma(x);
  }
  // Halves of a turn are not told apart from 2^51 on.
  static lane_mask<Real> flagged(const value& x, const value& y) {
    const auto exposed =
        (x < value(Real(0))) & ((xsimd::abs(y) < value(near_zero)) | (x < value(Real(-0x1p51))));
    return not_normal(x) | not_finite(y) | exposed;
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, TGamma, unary, HHH, gamma_function)
TMK_KERNELS(d, TGamma, unary, HHE, gamma_function)
TMK_KERNELS(s, LGamma, unary, HHH, log_gamma)
TMK_KERNELS(d, LGamma, unary, HHE, log_gamma)
