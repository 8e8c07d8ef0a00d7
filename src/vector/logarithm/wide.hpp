// SPDX-License-Identifier: Apache-2.0
// Logarithms on the wide tiers, in any base.
//   x = 2^k m with m in [2/3, 4/3), and r one of 4 reciprocals held in registers, so short that f = m r - 1
//   is exact: log x = k log 2 - log r + log(1 + f),   log(1 + f) = c f + f^2 q(f),   |f| <= 1/8
// k log 2 - log r is exact in its high part. Around x = 1 it is zero, and only the polynomial remains.
#pragma once

#include "vector/logarithm/log_rare.hpp"
#include "vector/logarithm/wide_data.hpp"
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

enum class log_base { e, two, ten };

template <class Real, log_base Base>
struct log_constants;

#define TMK_LOG_CONSTANTS(type, base, stem)                               \
  template <>                                                             \
  struct log_constants<type, log_base::base> {                            \
    static constexpr auto& high = wide_log_data::type##_##stem##_high;    \
    static constexpr auto& low = wide_log_data::type##_##stem##_low;      \
    static constexpr auto& two = wide_log_data::type##_##stem##_two;      \
    static constexpr auto& scale = wide_log_data::type##_##stem##_scale;  \
    static constexpr auto& ha = wide_log_data::type##_##stem##_ha;        \
    static constexpr auto& la = wide_log_data::type##_##stem##_la;        \
    static constexpr auto& ep = wide_log_data::type##_##stem##_ep;        \
    static constexpr auto& reciprocal = wide_log_data::type##_reciprocal; \
  };
TMK_LOG_CONSTANTS(float, e, ln)
TMK_LOG_CONSTANTS(float, two, log2)
TMK_LOG_CONSTANTS(float, ten, log10)
TMK_LOG_CONSTANTS(double, e, ln)
TMK_LOG_CONSTANTS(double, two, log2)
TMK_LOG_CONSTANTS(double, ten, log10)
#undef TMK_LOG_CONSTANTS

// x = 2^k m; `position` counts in units of x's last place from the lower end of m's range, the exponent
// shifted to stay positive. Its leading fraction bits number the cell of m.
template <class Real>
struct log_argument {
  using bits = typename format<Real>::bits;
  batch<Real> k, m;
  batch<bits> position;
};

// Positive normal x.
template <class Real>
log_argument<Real> split_for_log(const batch<Real>& x) {
  using bits = typename format<Real>::bits;
  constexpr int fraction = format<Real>::fraction_bits;
  constexpr bits lower_end = to_bits(Real(65.0 / 96));
  log_argument<Real> s;
  s.position = bits_as<bits>(x) - batch<bits>(static_cast<bits>(lower_end - format<Real>::sign));
  s.m = bits_as<Real>((s.position & batch<bits>((bits{1} << fraction) - 1)) + batch<bits>(lower_end));
  // The exponent goes into the fraction of a power of two whose unit is 1.
  constexpr Real shifter = fraction == 23 ? Real(0x1p23) : Real(0x1p52);
  constexpr Real zero = shifter + Real(1 << (sizeof(Real) * 8 - fraction - 1));
  s.k = bits_as<Real>((s.position >> fraction) | batch<bits>(to_bits(shifter))) - batch<Real>(zero);
  return s;
}

// The sums high + low of a table, for levels that need no second part.
template <class Real>
struct rounded_table {
  Real entries[4];
  constexpr rounded_table(const Real (&high)[4], const Real (&low)[4]) : entries{} {
    for (int i = 0; i < 4; ++i) entries[i] = high[i] + low[i];
  }
};

// high + low + log(1 + f) with little more than the rounding of the last addition: f and f^2 join the sum
// with what their roundings lose, f^3 is all that is rounded more than once.
template <class Real, log_base Base>
batch<Real> sum_of_log(const batch<Real>& high, const batch<Real>& low, const batch<Real>& f) {
  using value = batch<Real>;
  using constants = log_constants<Real, Base>;
  const value half(Real(-0.5));
  value head = f, tail = low;
  if constexpr (Base != log_base::e) {
    const value c(constants::scale[0]);
    head = f * c;
    const value head_low = xsimd::fma(f, value(constants::scale[1]), xsimd::fms(f, c, head));
    tail += xsimd::fma(head_low * half, f, head_low);
  }
  const value sum = high + head;
  const value lost = (head - (sum - high)) + tail;
  const value h = head * half;
  const value sum_of_two = xsimd::fma(h, f, sum);
  const value f2 = f * f;
  return sum_of_two +
         xsimd::fma(f2 * f, polynomial(f, constants::ha), xsimd::fma(h, f, sum - sum_of_two) + lost);
}

// What a longer m has below its first word: one word, or two.
template <class Real>
batch<Real> scaled_words(const batch<Real>& c, const batch<Real>& scale) {
  return c * scale;
}
template <class Real>
value_pair<batch<Real>> scaled_words(const value_pair<batch<Real>>& c, const batch<Real>& scale) {
  return {c.high * scale, c.low * scale};
}
// (f + c r) as a sum of two.
template <class Real>
value_pair<batch<Real>> add_words(const batch<Real>& f, const batch<Real>& c, const batch<Real>& r) {
  return fast_two_sum(f, c * r);
}
template <class Real>
value_pair<batch<Real>> add_words(const batch<Real>& f, const value_pair<batch<Real>>& c,
                                  const batch<Real>& r) {
  const auto sum = add_words(f, c.high, r);
  return {sum.high, xsimd::fma(c.low, r, sum.low)};
}

// log((m + m_low) 2^k); m_low, if given, is below half a unit of m's last place.
template <class Real, log_base Base, level Level, class... Words>
batch<Real> log_of(const log_argument<Real>& x, const Words&... m_low) {
  using value = batch<Real>;
  using constants = log_constants<Real, Base>;
  const auto cell = table_index<Real, 4, format<Real>::fraction_bits - 2>(x.position);
  const lane_table<Real, 4> reciprocal(constants::reciprocal);
  const value r = reciprocal.short_entry(cell);
  const value f = xsimd::fms(x.m, r, value(Real(1)));
  if constexpr (Level == level::ha || sizeof...(m_low) != 0) {
    const lane_table<Real, 4> high_table(constants::high), low_table(constants::low);
    const value high = xsimd::fma(x.k, value(constants::two[0]), high_table.short_entry(cell));
    const value low = xsimd::fma(x.k, value(constants::two[1]), low_table[cell]);
    if constexpr (sizeof...(m_low) == 0) {
      return sum_of_log<Real, Base>(high, low, f);
    } else if constexpr (Level != level::ha) {
      const value g = xsimd::fma((m_low, ...), r, f),
                  p = xsimd::fma(g * g, polynomial(g, constants::la), low);
      return high + (Base == log_base::e ? g + p : xsimd::fma(g, value(constants::scale[0]), p));
    } else {
      const auto [f_high, f_low] = add_words(f, (m_low, ...), r);
      value g_low = xsimd::fnma(f_low, f_high, f_low);
      if constexpr (Base != log_base::e) g_low = g_low * value(constants::scale[0]);
      return sum_of_log<Real, Base>(high, low + g_low, f_high);
    }
  } else {
    static constexpr rounded_table<Real> table(constants::high, constants::low);
    const lane_table<Real, 4> logarithm(table.entries);
    // In single, what log 2 lacks in its last place would count |k| times.
    constexpr Real two_low = sizeof(Real) == 4 && Level == level::la ? constants::two[1] : Real(0);
    const value high =
        xsimd::fma(x.k, value(constants::two[0] + (constants::two[1] - two_low)), logarithm[cell]);
    const value f2 = f * f;
    const value q = Level == level::la ? polynomial(f, constants::la) : polynomial(f, constants::ep);
    const value y =
        Base == log_base::e ? xsimd::fma(f2, q, f) : xsimd::fma(f, value(constants::scale[0]), f2 * q);
    return high + (two_low == 0 ? y : xsimd::fma(x.k, value(two_low), y));
  }
}

// The kernels of one logarithm.
template <class Real, log_base Base, level Level>
struct wide_log : description<Real> {
  using value = batch<Real>;

  static value fast(const value& x) { return log_of<Real, Base, Level>(split_for_log(x)); }
  static lane_mask<Real> flagged(const value& x, const value&) { return not_positive_normal(x); }
  static int32_t rare(const Real* a, Real* r) {
    return log_rare(a, r, [](Real x, Real exponent) {
      auto argument = split_for_log(value(x));
      argument.k += value(exponent);
      return log_of<Real, Base, Level>(argument).get(0);
    });
  }
};

template <class Real, level Level>
using wide_ln = wide_log<Real, log_base::e, Level>;
template <class Real, level Level>
using wide_log2 = wide_log<Real, log_base::two, Level>;
template <class Real, level Level>
using wide_log10 = wide_log<Real, log_base::ten, Level>;

}  // namespace
TMK_TIER_CLOSE
