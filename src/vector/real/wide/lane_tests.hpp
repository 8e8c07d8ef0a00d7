// Lane tests of the wide tiers, by integer arithmetic on the raw bits.
#pragma once

#include <limits>
#include <type_traits>

#include "platform/simd.hpp"

TMK_TIER_OPEN
namespace {

// Lanes that hold no positive normal number below `End`, a power of two. The shift puts those numbers at the
// lower end of the signed range.
template <class Real, auto End = format<Real>::infinity>
lane_mask<Real> not_positive_normal(const batch<Real>& x) {
  using bits = std::make_signed_t<typename format<Real>::bits>;
  constexpr bits smallest = bits{1} << format<Real>::fraction_bits;
  constexpr bits lowest = std::numeric_limits<bits>::min();
  constexpr bits shift = lowest + smallest;  // the same as lowest - smallest, wrapped
  constexpr bits last = lowest + (static_cast<bits>(End) - smallest - 1);
  return mask_as<Real>(bits_as<bits>(x) - batch<bits>(shift) > batch<bits>(last));
}

}  // namespace
TMK_TIER_CLOSE
