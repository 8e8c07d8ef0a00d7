// SPDX-License-Identifier: Apache-2.0
// 2^(k/N) for an integral k in every lane, from the rows of powers_data.hpp: k = N n + j, 2^(k/N) = 2^n
// 2^(j/N). k comes as the bits of a float or double to which a shifter has been added, whose low bits it
// fills.
#pragma once

#include <algorithm>
#include <type_traits>

#include "simd/batch.hpp"
#include "vector/exponential/powers_data.hpp"

TMK_TIER_OPEN
namespace {

// x = k step + r with an integral k, as the bits of a shifted number. The step is high + low, k high exact.
template <class Real>
struct steps_and_rest {
  batch<std::conditional_t<sizeof(Real) == 4, int32_t, int64_t>> k;
  batch<Real> rest;
};
template <class Real>
steps_and_rest<Real> reduce(const batch<Real>& x, Real inverse_step, Real high, Real low, Real shifter) {
  const batch<Real> shifted = x * batch<Real>(inverse_step) + batch<Real>(shifter);
  const batch<Real> k = shifted - batch<Real>(shifter);
  return {bits_as<std::conditional_t<sizeof(Real) == 4, int32_t, int64_t>>(shifted),
          (x - k * batch<Real>(high)) - k * batch<Real>(low)};
}

// 2^(j/N). High: a float in [1, 2); low: what it lacks, relative to it.
template <int LogN>
value_pair<f32> fraction_power(const i32& k) {
  const auto [fraction, correction] = lookup(single_powers, (k & i32((1 << LogN) - 1)) << (7 - LogN));
  return {bits_as<float>(bits_as<int32_t>(fraction) | i32(format<float>::bias << 23)), correction};
}

// 2^(j/N) as the sum of two doubles.
template <int LogN>
value_pair<f64> fraction_power(const i64& k) {
  return lookup(double_powers, (k & i64((1 << LogN) - 1)) << (7 - LogN));
}

// y 2^n for a y near [1, 2): an exact step of the exponent field, taken last, so that no partial result is
// subnormal. `raise` is added to n, for results that take a second scaling.
template <int LogN>
f32 scale_power(const f32& y, const i32& k, int raise) {
  return bits_as<float>(bits_as<int32_t>(y) + ((k & i32(-1 << LogN)) << (23 - LogN)) + i32(raise << 23));
}

template <int LogN>
f64 scale_power(const f64& y, const i64& k, int raise) {
  const i64 step = (k & i64(-1 << LogN)) << (52 - LogN);
  return bits_as<double>(bits_as<int64_t>(y) + step + i64(int64_t{raise} << 52));
}

// 2^t rounded to single, by way of double, for -1022 < t < 1023. The cubic leaves 2^-38.
inline float narrow_power(double t) {
  constexpr double shifter = 0x1.8p+45;
  const double shifted = t + shifter;
  const double r = (t - (shifted - shifter)) * 0x1.62e42fefa39efp-1;
  const uint64_t k = to_bits(shifted);
  const double p = r * (1.0 + r * (0.5 + r * 0x1.5555555555555p-3));
  const double power = double_powers[k & 0x7F].high * (1.0 + p);
  return static_cast<float>(power * from_bits<double>(((k >> 7) + format<double>::bias) << 52));
}

// The error of a level must not carry the last finite results to infinity.
template <class Real>
Real clamped_to_finite(Real y) {
  return std::min(y, from_bits<Real>(format<Real>::infinity - 1));
}

// Results at the ends of the format, for exp_rare.hpp: the kernel's formula with n moved inside, and an exact
// way back; single subnormals by way of double, with the function as 2^(x log2_base).
template <class Kernel>
double power_at_end(double x) {
  return x < 0 ? Kernel::fast(f64(x), 64).get(0) * 0x1p-64
               : clamped_to_finite(Kernel::fast(f64(x), -1).get(0) * 2.0);
}

template <class Kernel>
float single_power_at_end(float x, double log2_base) {
  return x < 0 ? narrow_power(x * log2_base) : clamped_to_finite(Kernel::fast(f32(x), -1).get(0) * 2.0f);
}

}  // namespace
TMK_TIER_CLOSE
