// SPDX-License-Identifier: Apache-2.0
// Exponentials on the wide tiers, to the bases e, 2 and 10.
//   b^x = 2^(k/8) b^r,   x = k step + r with an integral k,   step = log_b(2) / 8,   |r| <= step / 2
// The eight powers 2^(j/8) are held in registers. x - k step needs fewer bits than a significand holds: the
// fused operation gives it exactly, and what `step` itself lacks comes as a second part.
#pragma once

#include <type_traits>

#include "vector/exponential/eighth_powers.hpp"
#include "vector/exponential/exp_rare.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// x = k step + r: power is 2^(k/8), nearest; r is exact for the step as rounded, `reduced` nearest for the
// true step.
template <class Real>
struct reduced_argument {
  batch<Real> k, power, r, reduced;
  typename lane_table<Real, 8>::index j;
};

template <exp_base Base, class Real>
reduced_argument<Real> reduce(const batch<Real>& x) {
  using value = batch<Real>;
  using constants = exp_series<Real, Base>;
  const lane_table<Real, 8> powers(lowered_powers<Real>.entry);
  const value shifted = xsimd::fma(x, value(constants::rate), value(shifter<Real>));
  const value k = shifted - value(shifter<Real>);
  const auto j = table_index<Real, 8, 0>(bits_as<typename format<Real>::bits>(shifted));
  const value r = xsimd::fnma(k, value(constants::step), x);
  const value reduced = constants::step_low == 0 ? r : xsimd::fnma(k, value(constants::step_low), r);
  return {k, raise_exponent<3>(powers[j], shifted), r, reduced, j};
}

// What rounding took from power, relative to it.
template <class Real>
batch<Real> power_correction(const reduced_argument<Real>& x) {
  return lane_table<Real, 8>(eighth_powers<Real>::correction).leading(x.j);
}

// b^x / power - 1 - slope r, which is far below r: with what rounding took from the table's entry and from
// slope. From the exact r when Compensated, else from the reduced one.
template <exp_base Base, bool Compensated, class Real, size_t Size>
batch<Real> beyond_linear(const reduced_argument<Real>& x, const Real (&coefficients)[Size]) {
  using value = batch<Real>;
  using constants = exp_series<Real, Base>;
  value low = power_correction(x);
  if constexpr (Compensated && constants::step_low != 0)
    low = xsimd::fnma(x.k, value(constants::step_low * constants::slope), low);
  if constexpr (constants::slope_low != 0) low = xsimd::fma(x.r, value(constants::slope_low), low);
  return xsimd::fma(x.reduced * x.reduced, polynomial(x.reduced, coefficients), low);
}

// b^x to half a unit and a little. In single precision the rounding of the reduced argument would be too
// much.
template <exp_base Base, class Real>
batch<Real> exponential(const batch<Real>& x) {
  using constants = exp_series<Real, Base>;
  constexpr bool compensated = sizeof(Real) == 4;
  const auto arg = reduce<Base>(x);
  const batch<Real> rest = beyond_linear<Base, compensated>(arg, constants::ha);
  const batch<Real> r = compensated ? arg.r : arg.reduced;
  const batch<Real> growth =
      Base == exp_base::e ? r + rest : xsimd::fma(r, batch<Real>(constants::slope), rest);
  return xsimd::fma(arg.power, growth, arg.power);
}

// 2^n (1 + r + r^2 q(r)), x = n log(2) + r, without a table: e^x to half the bits.
template <class Real, size_t Size>
batch<Real> exponential_without_table(const batch<Real>& x, const Real (&coefficients)[Size]) {
  using value = batch<Real>;
  using constants = exp_series<Real, exp_base::e>;
  const value shifted = xsimd::fma(x, value(constants::rate / 8), value(shifter<Real>));
  const value k = shifted - value(shifter<Real>);
  const value r = xsimd::fnma(k, value(constants::step * 8), x);
  return raise_exponent<0>(xsimd::fma(r * r, polynomial(r, coefficients), r + value(Real(1))), shifted);
}

// e^x below HA: the table without corrections at LA, no table at EP.
template <level Level, class Real>
batch<Real> exponential_in_one(const batch<Real>& x) {
  using constants = exp_series<Real, exp_base::e>;
  if constexpr (Level == level::ep) {
    return exponential_without_table(x, constants::ep);
  } else {
    const auto arg = reduce<exp_base::e>(x);
    const batch<Real>& r = arg.reduced;
    batch<Real> q;
    if constexpr (sizeof(Real) == 4)
      q = polynomial(r, constants::la);
    else
      q = polynomial(r, constants::ha);
    return xsimd::fma(arg.power, xsimd::fma(r * r, q, r), arg.power);
  }
}

// b^x where the exponent is at the format's ends, or past them: the power is brought back by a power of two,
// and the wider type takes the last steps, with one rounding to the result.
template <exp_base Base, class Real>
Real extreme_exponential(Real x) {
  using wider = std::conditional_t<sizeof(Real) == 4, double, long double>;
  using bits = typename format<Real>::bits;
  using constants = exp_series<Real, Base>;
  const auto arg = reduce<Base>(batch<Real>(x));
  const Real rest = beyond_linear<Base, true>(arg, constants::ha).get(0);

  constexpr bits distance = bits{format<Real>::bias / 2} << format<Real>::fraction_bits;
  constexpr wider factor = from_bits<Real>(to_bits(Real(1)) + distance);
  const bits power = to_bits(Real(arg.power.get(0)));
  const wider near = from_bits<Real>(x < 0 ? power + distance : power - distance);
  const wider y = near + near * (wider(constants::slope) * arg.r.get(0) + rest);
  return static_cast<Real>(x < 0 ? y / factor : y * factor);
}

// Where an exponential of magnitude_bits(x) >= Bound leaves the fast formula.
template <class Real>
lane_mask<Real> magnitude_from(const batch<Real>& x, integer<Real> bound) {
  using bits = integer<Real>;
  const batch<bits> magnitude = bits_as<bits>(x) & batch<bits>(std::numeric_limits<bits>::max());
  return mask_as<Real>(magnitude > batch<bits>(bound - 1));
}

}  // namespace
TMK_TIER_CLOSE
