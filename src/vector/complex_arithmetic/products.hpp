// SPDX-License-Identifier: Apache-2.0
// a c + b d to the last place, whatever cancels.
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
  // With a low part below the last place of the high one, which cancellation leaves alone.
  lowered normalized() const {
    const batch<Real> sum = rounded();
    return {sum, minus_low - (high - sum)};
  }
};

// Both products and their sum are exact as high and low parts, of which only the sum of the three low ones is
// rounded, to half an ulp of it. That is less than half an ulp of the result even where most of the high part
// cancels; where all of it does, the low parts of both products have one sum that the format holds. For
// products that neither overflow nor leave pair.hpp's range for two_prod.
template <class Real>
lowered<Real> sum_of_products(const batch<Real>& a, const batch<Real>& c, const batch<Real>& b,
                              const batch<Real>& d) {
  const batch<Real> p = a * c, q = b * d, sum = p + q, part = sum - p;
  return {sum, (((sum - part) - p) + (part - q)) + (residual(p, a, c) + residual(q, b, d))};
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
