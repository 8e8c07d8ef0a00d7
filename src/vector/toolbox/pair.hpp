// SPDX-License-Identifier: Apache-2.0
// Arithmetic of pairs: values as unevaluated sums high + low, |low| <= ulp(high) / 2, from one source on
// every tier. Bounds are relative errors with u = 2^-24 or 2^-53, terms in u^3 left out, where neither an
// operation nor an exact residual overflows or underflows; special values are the caller's. Sources:
//   [D]  T. J. Dekker, A floating-point technique for extending the available precision, 1971
//   [J]  M. Joldes, J.-M. Muller, V. Popescu, Tight and rigorous error bounds for basic building blocks of
//        double-word arithmetic, 2017
//   [L]  V. Lefevre, N. Louvet, J.-M. Muller, J. Picot, L. Rideau, Accurate calculation of Euclidean norms
//   using
//        double-word arithmetic, 2023
#pragma once

#include "simd/batch.hpp"

TMK_TIER_OPEN

template <class Real>
using batch_pair = value_pair<batch<Real>>;

// x rounded to 12 bits of 24, or to 26 of 53, and the rest, which has no more: products of such parts are
// exact. For |x| that does not round to infinity.
template <class Real>
batch_pair<Real> split(const batch<Real>& x) {
  using bits = typename format<Real>::bits;
  constexpr bits rest = bits{1} << (format<Real>::precision + 1) / 2;
  const batch<Real> high =
      bits_as<Real>((bits_as<bits>(x) + batch<bits>(rest / 2)) & batch<bits>(static_cast<bits>(-rest)));
  return {high, x - high};
}

// x y = high + low. Exact where |x y| is at least 2^-102 in single and 2^-968 in double, so that the last bit
// of the product is a subnormal number or above. Where subnormals are flushed: 2^-79 and 2^-917, and on the
// baseline no factor below 2^-103 or 2^-970. Without fused operations by split parts [D].
template <class Real>
batch_pair<Real> two_prod(const batch<Real>& x, const batch<Real>& y) {
  const batch<Real> product = x * y;
  if constexpr (is_baseline) {
    const auto a = split(x), b = split(y);
    return {product, ((a.high * b.high - product) + a.high * b.low + a.low * b.high) + a.low * b.low};
  } else {
    return {product, multiply_subtract(x, y, product)};
  }
}

// z - x y where that is a number of the format, as it is for a nearest quotient x = z / y and for a nearest
// root x = y = sqrt(z). The range is two_prod's.
template <class Real>
batch<Real> residual(const batch<Real>& z, const batch<Real>& x, const batch<Real>& y) {
  if constexpr (is_baseline) {
    const auto product = two_prod(x, y);
    return (z - product.high) - product.low;
  } else {
    return negative_multiply_add(x, y, z);
  }
}

// z + x y for |x y| <= |z|: u^2.
template <class Real>
batch_pair<Real> add_product(const batch<Real>& z, const batch<Real>& x, const batch<Real>& y) {
  if constexpr (is_baseline) {
    const auto product = two_prod(x, y);
    const auto sum = fast_two_sum(z, product.high);
    return {sum.high, sum.low + product.low};
  } else {
    const batch<Real> sum = multiply_add(x, y, z);
    return {sum, multiply_add(x, y, z - sum)};  // the difference is exact
  }
}

// 2 u^2 [J, algorithm 4].
template <class Real>
batch_pair<Real> add(const batch_pair<Real>& x, const batch<Real>& y) {
  const auto sum = two_sum(x.high, y);
  return fast_two_sum(sum.high, x.low + sum.low);
}

// 3 u^2, whatever the signs [J, algorithm 6].
template <class Real>
batch_pair<Real> add(const batch_pair<Real>& x, const batch_pair<Real>& y) {
  const auto high = two_sum(x.high, y.high), low = two_sum(x.low, y.low);
  const auto sum = fast_two_sum(high.high, high.low + low.high);
  return fast_two_sum(sum.high, low.low + sum.low);
}

// 2 u^2 with fused operations, 3 u^2 without [J, algorithms 9 and 8].
template <class Real>
batch_pair<Real> multiply(const batch_pair<Real>& x, const batch<Real>& y) {
  const auto product = two_prod(x.high, y);
  return fast_two_sum(product.high, multiply_add(x.low, y, product.low));
}

// 6 u^2 with fused operations, 7 u^2 without [J, algorithms 11 and 10].
template <class Real>
batch_pair<Real> multiply(const batch_pair<Real>& x, const batch_pair<Real>& y) {
  const auto product = two_prod(x.high, y.high);
  const batch<Real> cross = multiply_add(x.low, y.high, x.high * y.low);
  return fast_two_sum(product.high, product.low + cross);
}

// u^2 / 2: the quotient, and its exact residual divided in turn.
template <class Real>
batch_pair<Real> divide(const batch<Real>& x, const batch<Real>& y) {
  const batch<Real> quotient = x / y;
  return {quotient, residual(x, quotient, y) / y};
}

// 3 u^2 [J, algorithm 15].
template <class Real>
batch_pair<Real> divide(const batch_pair<Real>& x, const batch<Real>& y) {
  const batch<Real> quotient = x.high / y;
  return fast_two_sum(quotient, (residual(x.high, quotient, y) + x.low) / y);
}

// 15 u^2 [J, algorithm 17]: 3 u^2 of the product, 2 and 3 of the two sums, 3 for dividing by y.high, 3 of
// that division.
template <class Real>
batch_pair<Real> divide(const batch_pair<Real>& x, const batch_pair<Real>& y) {
  const batch<Real> quotient = x.high / y.high;
  const auto product = multiply(y, quotient);
  const batch<Real> rest = (x.high - product.high) + (x.low - product.low);
  return fast_two_sum(quotient, rest / y.high);
}

// u^2, for x > 0: one half from the second division, one from its divisor.
template <class Real>
batch_pair<Real> square_root(const batch<Real>& x) {
  const batch<Real> root = xsimd::sqrt(x);
  return {root, residual(x, root, root) / (root + root)};
}

// 25/8 u^2 [L], for x > 0.
template <class Real>
batch_pair<Real> square_root(const batch_pair<Real>& x) {
  const batch<Real> root = xsimd::sqrt(x.high);
  return fast_two_sum(root, (residual(x.high, root, root) + x.low) / (root + root));
}

TMK_TIER_CLOSE
