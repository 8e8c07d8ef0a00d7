// SPDX-License-Identifier: Apache-2.0
// 2^(k/8) for an integral k in every lane, from a table of eight.
#pragma once

#include <limits>
#include <type_traits>

#include "simd/batch.hpp"
#include "vector/exponential/wide_data.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
using integer = std::make_signed_t<typename format<Real>::bits>;

// x rounded to an integer is in the low bits of x + shifter.
template <class Real>
constexpr Real shifter = Real(1.5) / std::numeric_limits<Real>::epsilon();

// Adds n to the exponent of a, where n = k 2^-LogN for LogN fraction bits that a lacks.
template <int LogN, class Real>
batch<Real> raise_exponent(const batch<Real>& a, const batch<Real>& shifted_k) {
  using bits = integer<Real>;
  return bits_as<Real>(bits_as<bits>(a) + (bits_as<bits>(shifted_k) << (format<Real>::fraction_bits - LogN)));
}

// 2^(j/8) times a power of two, less j/8 in the exponent field and below: adding k in eighths to the exponent
// gives 2^(k/8) times that power.
template <class Real>
struct lowered_eighth_powers {
  Real entry[8];
  constexpr explicit lowered_eighth_powers(Real scale) : entry{} {
    for (typename format<Real>::bits j = 0; j < 8; ++j)
      entry[j] = from_bits<Real>(to_bits(scale * eighth_powers<Real>::value[j]) -
                                 (j << (format<Real>::fraction_bits - 3)));
  }
};
template <class Real>
constexpr lowered_eighth_powers<Real> lowered_powers(Real(1));
template <class Real>
constexpr lowered_eighth_powers<Real> lowered_halves(Real(0.5));

}  // namespace
TMK_TIER_CLOSE
