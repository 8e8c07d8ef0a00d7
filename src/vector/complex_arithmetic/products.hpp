// SPDX-License-Identifier: Apache-2.0
// a c + b d to the last place, whatever cancels: both products and their sum are exact as high and low parts,
// and only the sum of the three low parts is rounded. Where the products cancel but for their last bits, that
// sum has no more bits than the format. (C.-P. Jeannerod, N. Louvet, J.-M. Muller, Further analysis of
// Kahan's algorithm for the accurate computation of 2 x 2 determinants, 2013, leave out the rounding of the
// sum, and are wrong by up to 1.5 ulp.)
#pragma once

#include "vector/toolbox/pair.hpp"
#include "vector/walk/elements.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
complex_value<Real> conjugate_of(const complex_value<Real>& z) {
  return {z.re, z.im ^ batch<Real>(Real(-0.0))};
}

// high - minus_low: so that a negative zero, whose low part is +0, keeps its sign.
template <class Real>
struct lowered {
  batch<Real> high, minus_low;
  batch<Real> rounded() const { return high - minus_low; }
};

// For products that neither overflow nor leave pair.hpp's range for two_prod.
template <class Real>
lowered<Real> sum_of_products(const batch<Real>& a, const batch<Real>& c, const batch<Real>& b,
                              const batch<Real>& d) {
  const batch<Real> p = a * c, q = b * d, rest = residual(p, a, c) + residual(q, b, d);
  const auto swapped = xsimd::abs(p) < xsimd::abs(q);
  const batch<Real> larger = xsimd::select(swapped, q, p), smaller = xsimd::select(swapped, p, q);
  const batch<Real> sum = larger + smaller;
  return {sum, ((sum - larger) - smaller) + rest};
}

template <class Real>
struct complex_lowered {
  lowered<Real> re, im;
};
template <class Real>
complex_lowered<Real> paired_product(const complex_value<Real>& x, const complex_value<Real>& y) {
  const batch<Real> minus_im = y.im ^ batch<Real>(Real(-0.0));
  return {sum_of_products(x.re, y.re, x.im, minus_im), sum_of_products(x.re, y.im, x.im, y.re)};
}

// |z|^2 as a pair.
template <class Real>
batch_pair<Real> paired_norm(const complex_value<Real>& z) {
  const batch<Real> a = xsimd::abs(z.re), b = xsimd::abs(z.im);
  const batch<Real> larger = maximum_or_second(a, b), smaller = minimum_or_second(b, a);
  const auto square = two_prod(larger, larger), s = add_product(square.high, smaller, smaller);
  return {s.high, s.low + square.low};
}

}  // namespace
TMK_TIER_CLOSE
