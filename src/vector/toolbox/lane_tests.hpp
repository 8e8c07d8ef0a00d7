// SPDX-License-Identifier: Apache-2.0
// Lane tests by integer arithmetic on the raw bits.
#pragma once

#include <limits>
#include <type_traits>

#include "simd/batch.hpp"

TMK_TIER_OPEN
namespace {

// What a lane is tested on: all its bits, or their upper 32. The baseline compares no wider integers.
template <class Real>
struct tested {
  static constexpr bool upper_words = is_baseline && sizeof(Real) == 8;
  using bits = std::conditional_t<upper_words, int32_t, std::make_signed_t<typename format<Real>::bits>>;
  static constexpr int dropped = upper_words ? 32 : 0;
  static constexpr bits smallest_normal = bits{1} << (format<Real>::fraction_bits - dropped);
  static constexpr bits lowest = std::numeric_limits<bits>::min(), highest = std::numeric_limits<bits>::max();

  static lane_mask<Real> lanes(const xsimd::batch_bool<bits>& flags) {
    if constexpr (upper_words)
      return mask_of_high_words(flags);
    else
      return mask_as<Real>(flags);
  }
};

// Lanes whose tested bits are not in [First, End), bit patterns of the format. The shift puts these at the
// lower end of the signed range.
template <class Real, auto First, auto End>
lane_mask<Real> outside(const batch<typename tested<Real>::bits>& x) {
  using test = tested<Real>;
  using bits = typename test::bits;
  constexpr bits first = static_cast<bits>(First >> test::dropped),
                 end = static_cast<bits>(End >> test::dropped);
  constexpr bits shift = test::lowest + first;  // the same as first - lowest, wrapped
  constexpr bits last = test::lowest + (end - first - 1);
  return test::lanes(x - batch<bits>(shift) > batch<bits>(last));
}

// Lanes that hold no positive normal number below `End`, a power of two.
template <class Real, auto End = format<Real>::infinity>
lane_mask<Real> not_positive_normal(const batch<Real>& x) {
  constexpr auto smallest = typename format<Real>::bits{1} << format<Real>::fraction_bits;
  return outside<Real, smallest, End>(bits_as<typename tested<Real>::bits>(x));
}

// Lanes whose magnitude has no bits in [First, End).
template <class Real, auto First, auto End>
lane_mask<Real> magnitude_outside(const batch<Real>& x) {
  using bits = typename tested<Real>::bits;
  return outside<Real, First, End>(bits_as<bits>(x) & batch<bits>(tested<Real>::highest));
}

// Lanes that hold a zero or a subnormal number.
template <class Real>
lane_mask<Real> below_normal(const batch<Real>& x) {
  using test = tested<Real>;
  using bits = typename test::bits;
  return test::lanes(batch<bits>(test::smallest_normal) > (bits_as<bits>(x) & batch<bits>(test::highest)));
}

#if TMK_TIER_NUMBER(TMK_TIER) < 2  // V4 has an instruction
// Lanes that hold an infinity, a NaN, a zero or a subnormal number.
template <class Real>
lane_mask<Real> not_normal(const batch<Real>& x) {
  return not_positive_normal(xsimd::abs(x));
}
#endif

}  // namespace
TMK_TIER_CLOSE
