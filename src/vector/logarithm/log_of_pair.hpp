// SPDX-License-Identifier: Apache-2.0
// log((u + c) 2^exponent) for a positive normal u and a c within half a unit of its last place, or a few: c
// goes into the reduced argument, where it is as good as a longer u. c may itself have two words, and the
// exponent, an integer, be left out.
#pragma once

#include "platform/tier.hpp"

#if TMK_TIER_NUMBER(TMK_TIER) == 0
#include "vector/logarithm/log1p_data.hpp"
#include "vector/logarithm/log_reduction.hpp"
#else
#include "vector/logarithm/wide.hpp"
#endif

TMK_TIER_OPEN
namespace {

#if TMK_TIER_NUMBER(TMK_TIER) == 0
// c / u goes into t of the table's identity in log_reduction.hpp.
inline f64 first_word(const f64& c) { return c; }
inline f64 first_word(const value_pair<f64>& c) { return c.high; }
inline f64 with_second_word(const f64& x, const f64&, const f64&) { return x; }
inline f64 with_second_word(const f64& x, const value_pair<f64>& c, const f64& scale) {
  return x + c.low * scale;
}

template <level Level, class Words, class... Value>
f64 log_of_pair(const f64& u, const Words& c, const Value&... more) {
  const auto [reciprocal, log_high, log_low] = row_256(u, log_256_data::ln);
  const f64 k = (exponent(u, 0) + ... + more);
  // 2^-k, or 0 where k is 1023: c is below 2^-1000 u there.
  const u64 scale = u64(0x7FE0000000000000) - (bits_as<uint64_t>(u) & u64(0x7FF0000000000000));
  const auto [th, tl] = split_product(mantissa(u), reciprocal);
  const f64 correction = (first_word(c) * bits_as<double>(scale)) * reciprocal;
  const f64 t = th + (tl + correction);
  const f64 p = with_second_word((t * t) * polynomial(t, log1p_data::double_polynomial), c,
                                 bits_as<double>(scale) * reciprocal);
  const f64 low = k * f64(log_256_data::ln2.low) + log_low;
  if constexpr (Level == level::la) return ((k * f64(log_256_data::ln2.high) + log_high) + t) + (low + p);
  return sum_of_three((k * f64(log_256_data::ln2.high) + log_high) + th, tl, correction + (low + p));
}

// The same of a u without a second part, to what single can see.
inline f64 log_for_single(const f64& u) {
  const auto [reciprocal, log_high, log_low] = row_256(u, log_256_data::ln);
  const f64 t = mantissa(u) * reciprocal - f64(1.0);
  const f64 p = (t * t) * polynomial(t, log1p_data::single_polynomial);
  return (exponent(u, 0) * f64(log_256_data::ln2.high) + log_high) + (t + p);
}
#else
// u = 2^k m: log((m + 2^-k c) 2^k), for k < bias. In base 10 and 2 too.
template <level Level, log_base Base = log_base::e, class Real, class Words, class... Value>
batch<Real> log_of_pair(const batch<Real>& u, const Words& c, const Value&... more) {
  using bits = typename format<Real>::bits;
  log_argument<Real> argument = split_for_log(u);
  const batch<Real> scale =
      bits_as<Real>(bits_as<bits>(argument.m) - bits_as<bits>(u) + batch<bits>(to_bits(Real(1))));
  argument.k = (argument.k + ... + more);
  return log_of<Real, Base, Level>(argument, scaled_words(c, scale));
}
#endif

}  // namespace
TMK_TIER_CLOSE
