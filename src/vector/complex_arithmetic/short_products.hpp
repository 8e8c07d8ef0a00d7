// SPDX-License-Identifier: Apache-2.0
// a c + b d in four operations, within 1 ulp whatever cancels, but for rare lanes that it finds: Kahan's
// algorithm with fused operations (C.-P. Jeannerod, N. Louvet, J.-M. Muller, Further analysis of Kahan's
// algorithm for the accurate computation of 2 x 2 determinants, 2013). With p = b d rounded and p + p' = b d,
//   q = a c + p, r = q + p'
// have one rounding each, so that r is wrong by half an ulp of q and half an ulp of its own. Where p' takes r
// below a power of two that q reaches, the former counts twice, and so it does where r is that power.
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct short_sum {
  batch<Real> before, minus_low;  // r = before - minus_low
  batch<Real> rounded() const { return before - minus_low; }
};

template <class Real>
short_sum<Real> short_sum_of_products(const batch<Real>& a, const batch<Real>& c, const batch<Real>& b,
                                      const batch<Real>& d) {
  const batch<Real> p = b * d;
  return {multiply_add(a, c, p), negative_multiply_add(b, d, p)};
}

// Differs in the exponent where the sum may be wrong by more than 1 ulp. Where nothing was added it is not,
// though that may differ too.
template <class Real>
batch<typename format<Real>::bits> exponent_change(const short_sum<Real>& sum) {
  using bits = typename format<Real>::bits;
  return bits_as<bits>(sum.before) ^ (bits_as<bits>(sum.rounded()) - batch<bits>(bits{1}));
}

}  // namespace
TMK_TIER_CLOSE
