// SPDX-License-Identifier: Apache-2.0
// Large angles, beyond what angle.hpp reduces, in half turns between -2 and 2.
//
// Radians, by M. Payne and R. Hanek (1983): x = X 2^e with an integral X, and whatever 2^e / pi has above 2
// adds whole turns to x / pi. So rows of 2^e / pi mod 2 are held, one for 16 exponents, in parts whose
// products with X are exact sums. A double comes no nearer to a multiple of pi / 2 than 2^-62, a float 2^-34:
// these leave 50 bits of the rest. Degrees: 2^12 is 1 mod 45, so that an integer 2^3 n has the same angle as
// 2^15 n, and any power of 2^12.
#pragma once

#include "simd/rows.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/trigonometric/angle.hpp"

TMK_TIER_OPEN
namespace {

// x less the nearest multiple of 2. The processor rounds to nearest.
template <class Real>
batch<Real> mod_two(const batch<Real>& x) {
  const batch<Real> twos = round_as_set(x * batch<Real>(Real(0.5)));
  return x - (twos + twos);
}

// For |x| >= 2^first_exponent: the number of the row, and X, in lanes of doubles. `Low` is the exponent of
// X's last bit where x is 2^first_exponent.
struct scaled_integer {
  u64 row;
  f64 value;
};
template <int Low>
scaled_integer to_integer(const f64& x) {
  constexpr uint64_t first = format<double>::bias + trigonometric_data::first_exponent;
  constexpr uint64_t step = uint64_t{16} << 52;
  const u64 magnitude = bits_as<uint64_t>(x) & u64(~format<double>::sign);
  const u64 row = (magnitude - u64(first << 52)) >> 56;
  const u64 scale =
      u64(uint64_t{format<double>::bias - trigonometric_data::first_exponent + Low} << 52) - (row << 56);
  static_assert(step == uint64_t{1} << 56);
  return {row, x * bits_as<double>(scale)};
}

// Radians as half turns, for 2^first_exponent <= |x|, finite.
inline half_turn_triple half_turns_in_three(const f64& x) {
  const auto [row, integer] = to_integer<52>(x);
  alignas(64) int32_t rows[lanes<double>];
  store_lower_words(reinterpret_cast<uint32_t*>(rows), row & u64(63));
  f64 part[4];
  load_columns(&trigonometric_data::inverse_pi_rows[0][0], rows, part);
  const auto first = two_prod(integer, part[0]), second = two_prod(integer, part[1]),
             third = two_prod(integer, part[2]);
  // Whole turns are dropped on the way, and nothing else: high + middle + low is exact but for `rest`.
  auto sum = two_sum(mod_two(first.high), mod_two(first.low));
  auto more = two_sum(mod_two(sum.high), mod_two(second.high));
  const auto high = two_sum(mod_two(more.high), third.high);
  const auto middle = two_sum(sum.low, more.low);
  const auto low = two_sum(high.low, second.low);
  const auto joined = two_sum(middle.high, low.high);
  const auto top = two_sum(high.high, joined.high);
  const f64 rest = third.low + integer * part[3];
  return {{top.high, top.low}, joined.low + (low.low + (middle.low + rest))};
}
inline half_turn_pair half_turns_of(const f64& x) {
  const auto turns = half_turns_in_three(x);
  return {turns.high, turns.low + turns.lowest};
}

// The same for the value of a single: the first two products are exact.
inline half_turn_pair half_turns_of_single(const f64& x) {
  using namespace trigonometric_data;
  const auto [row, integer] = to_integer<23>(x);
  const lane_table<double, 8> part0(single_inverse_pi_0), part1(single_inverse_pi_1),
      part2(single_inverse_pi_2);
  const auto at = table_index<double, 8, 0>(row & u64(7));
  const auto sum = two_sum(mod_two(integer * part0[at]), mod_two(integer * part1[at]));
  return {mod_two(sum.high), multiply_add(integer, part2[at], sum.low)};
}

// An exact angle of less than 2^15 degrees, or 2 half turns, that has the sine and cosine of a larger one.
template <class Real>
batch<Real> smaller_angle(const exact_angle<Real, angle_unit::half_turns>& a) {
  return mod_two(a.x);
}
// The exponent is lowered to 3..14, counted from x's last bit. A quotient may be wrong by a few units in its
// last place, which leaves 2^14 degrees.
template <class Real>
batch<Real> smaller_angle(const exact_angle<Real, angle_unit::degrees>& a) {
  using bits = typename format<Real>::bits;
  constexpr int fraction = format<Real>::fraction_bits;
  const batch<bits> magnitude = bits_as<bits>(a.x) & batch<bits>(~format<Real>::sign);
  // The exponent field as a number: the fraction of 2^fraction + field.
  const Real unit = Real(bits{1} << fraction);
  const batch<Real> exponent = bits_as<Real>((magnitude >> fraction) | batch<bits>(to_bits(unit))) -
                               batch<Real>(unit + (format<Real>::bias + fraction + 3));
  const batch<Real> periods =
      round_to_zero(xsimd::max(exponent, batch<Real>(Real(0))) * batch<Real>(Real(1.0 / 12 * (1 + 0x1p-20))));
  const batch<bits> lowered =
      bits_as<bits>(a.x) - (bits_as<bits>(periods * batch<Real>(Real(12)) + batch<Real>(unit)) << fraction);
  const batch<Real> x = bits_as<Real>(lowered), turns = round_as_set(x * batch<Real>(Real(1.0 / 360)));
  return residual(x, turns, batch<Real>(Real(360)));
}

}  // namespace
TMK_TIER_CLOSE
