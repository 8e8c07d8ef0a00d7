// SPDX-License-Identifier: Apache-2.0
// Angles in each unit as a number k of steps, N of them to a half turn, and the rest in radians:
//   angle = (k pi) / N + rest,   |rest| <= pi / (2 N) and a little
// k is integral, or an integer less 1/2 where a half step is asked for. Every type of angle has
//   nearest<N, Half>()       the steps; the lowest bits of `bits` are those of k, rounded up
//   rest<N>(k, offset)            less a small offset, in two numbers
//   rest_in_one<N>(k[, offset])   in one number
// Steps are powers of two, so that pi / N has the parts of pi. k times a part and what it leaves of x are
// exact where products are fused; without fused products the parts are so short that the product is.
#pragma once

#include <limits>

#include "vector/toolbox/pair.hpp"
#include "vector/trigonometric/trigonometric_data.hpp"

TMK_TIER_OPEN
namespace {

enum class angle_unit { radians, half_turns, degrees };

template <class Real>
struct step_number {
  batch<typename format<Real>::bits> bits;
  batch<Real> number;
};

// x rounded to an integer is in the low bits of x + rounding_shift.
template <class Real>
constexpr Real rounding_shift = Real(1.5) / std::numeric_limits<Real>::epsilon();

template <bool Half, class Real>
step_number<Real> nearest_step(const batch<Real>& x, Real rate) {
  const batch<Real> shift(rounding_shift<Real>);
  const batch<Real> shifted = Half ? multiply_add(x, batch<Real>(rate), batch<Real>(Real(0.5))) + shift
                                   : multiply_add(x, batch<Real>(rate), shift);
  const batch<Real> number = shifted - shift;
  return {bits_as<typename format<Real>::bits>(shifted), Half ? number - batch<Real>(Real(0.5)) : number};
}

template <class Real>
constexpr const auto& pi_parts() {
  using namespace trigonometric_data;
  if constexpr (sizeof(Real) == 4 && is_baseline)
    return float_pi_exact;
  else if constexpr (sizeof(Real) == 4)
    return float_pi;
  else if constexpr (is_baseline)
    return double_pi_exact;
  else
    return double_pi;
}

// The values of singles, in double precision, have two parts of pi.
template <class Real, bool OfSingles = false>
struct radians {
  static constexpr bool has_zeros = false;       // of sine and cosine, other than the sine of 0
  static constexpr bool has_tiny_rests = false;  // x itself apart, which is not to be tiny
  batch<Real> x;

  template <int N, bool Half = false>
  step_number<Real> nearest() const {
    return nearest_step<Half>(x, Real(N * 0x1.45f306dc9c883p-2));
  }
  template <int N>
  batch<Real> rest_in_one(const batch<Real>& k) const {
    constexpr const auto& parts = pi_parts<Real>();
    const batch<Real> r = less_part<N>(x, k, parts[0]);
    if constexpr (OfSingles) return less_part<N>(r, k, parts[1] + parts[2]);
    const batch<Real> s = less_part<N>(r, k, parts[1]);
    if constexpr (!is_baseline) return less_part<N>(s, k, parts[2]);
    const auto [high, low] = fast_two_sum(s, -(k * batch<Real>(parts[2] / N)));
    return high + (low - k * batch<Real>(parts[3] / N));
  }
  // The offset comes with the smaller parts, so that one rounding counts.
  template <int N>
  batch<Real> rest_in_one(const batch<Real>& k, const batch<Real>& offset) const {
    constexpr const auto& parts = pi_parts<Real>();
    const batch<Real> r = less_part<N>(x, k, parts[0]), second(parts[1] / N), third(parts[2] / N);
    if constexpr (OfSingles) {
      return less_part<N>(r - offset, k, parts[1] + parts[2]);
    } else if constexpr (is_baseline) {
      const auto more = fast_two_sum(r, -(k * second));
      const auto most = fast_two_sum(more.high, more.low - k * third);
      return most.high + (most.low - multiply_add(k, batch<Real>(parts[3] / N), offset));
    } else {
      const batch<Real> taken = multiply_add(k, second, offset),
                        missing = multiply_add(k, second, offset - taken);
      return (r - taken) - multiply_add(k, third, missing);
    }
  }
  // r is a multiple of the last places of what is taken from it, so that Dekker's sum is exact where r is the
  // smaller.
  template <int N>
  batch_pair<Real> rest(const batch<Real>& k, const batch<Real>& offset) const {
    const auto& parts = pi_parts<Real>();
    const batch<Real> second(parts[1] / N), r = negative_multiply_add(k, batch<Real>(parts[0] / N), x);
    const batch<Real> product = k * second;
    auto [high, low] = fast_two_sum(r, -(product + offset));
    if constexpr (!is_baseline) low = low - multiply_subtract(k, second, product);
    low = negative_multiply_add(k, batch<Real>(parts[2] / N), low);
    if constexpr (!is_baseline) return {high, low};
    // Short parts leave much to the later ones.
    const auto sum = two_sum(high, low);
    return {sum.high, sum.low - k * batch<Real>(parts[3] / N)};
  }

 private:
  template <int N>
  static batch<Real> less_part(const batch<Real>& r, const batch<Real>& k, Real part) {
    return negative_multiply_add(k, batch<Real>(part / N), r);
  }
};

template <class Real, bool Degrees>
constexpr const auto& unit_parts() {
  using namespace trigonometric_data;
  if constexpr (sizeof(Real) == 4 && Degrees)
    return float_degree;
  else if constexpr (sizeof(Real) == 4)
    return float_pi;
  else if constexpr (Degrees)
    return double_degree;
  else
    return double_pi;
}

// x y + z in two parts, for a small z. Where it is larger than the product, the angle is far from the zeros
// of sine and cosine, so that the last bits that are lost do not count.
template <class Real>
batch_pair<Real> product_and(const batch<Real>& x, const batch<Real>& y, const batch<Real>& z) {
  if constexpr (is_baseline) {
    const auto product = two_prod(x, y);
    const auto sum = fast_two_sum(product.high, z);
    return {sum.high, sum.low + product.low};
  } else {
    const batch<Real> sum = multiply_add(x, y, z);
    return {sum, multiply_subtract(x, y, sum) + z};
  }
}

// Half turns and degrees: what is left of x is exact.
template <class Real, angle_unit Unit>
struct exact_angle {
  static constexpr bool has_zeros = true, has_tiny_rests = true, degrees = Unit == angle_unit::degrees;
  static constexpr int half_turn = degrees ? 180 : 1;
  batch<Real> x;

  template <int N, bool Half = false>
  step_number<Real> nearest() const {
    return nearest_step<Half>(x, Real(N / double(half_turn)));
  }
  template <int N>
  batch<Real> rest_in_one(const batch<Real>& k) const {
    return remainder<N>(k) * batch<Real>(unit[0]);
  }
  template <int N>
  batch<Real> rest_in_one(const batch<Real>& k, const batch<Real>& offset) const {
    return multiply_subtract(remainder<N>(k), batch<Real>(unit[0]), offset);
  }
  template <int N>
  batch_pair<Real> rest(const batch<Real>& k, const batch<Real>& offset) const {
    const batch<Real> r = remainder<N>(k);
    return product_and(r, batch<Real>(unit[0]), multiply_subtract(r, batch<Real>(unit[1]), offset));
  }

 private:
  static constexpr const auto& unit = unit_parts<Real, degrees>();
  template <int N>
  batch<Real> remainder(const batch<Real>& k) const {
    return negative_multiply_add(k, batch<Real>(Real(double(half_turn) / N)), x);
  }
};

// high + low half turns; low is small compared with high, or high with a step.
struct half_turn_pair {
  static constexpr bool has_zeros = false, has_tiny_rests = false;
  f64 high, low;

  template <int N, bool Half = false>
  step_number<double> nearest() const {
    return nearest_step<Half>(high, double(N));
  }
  template <int N>
  f64 rest_in_one(const f64& k, const f64& offset = f64(0)) const {
    if constexpr (is_baseline) {
      const auto sum = rest<N>(k, offset);
      return sum.high + sum.low;
    }
    using trigonometric_data::double_pi;
    const f64 turns = high - k * f64(1.0 / N);
    const f64 small =
        multiply_add(turns, f64(double_pi[1]), multiply_subtract(low, f64(double_pi[0]), offset));
    return multiply_add(turns, f64(double_pi[0]), small);
  }
  template <int N>
  batch_pair<double> rest(const f64& k, const f64& offset) const {
    return in_radians(two_sum(high - k * f64(1.0 / N), low), offset);
  }

 protected:
  static batch_pair<double> in_radians(const batch_pair<double>& turns, const f64& offset) {
    using trigonometric_data::double_pi;
    const f64 small =
        multiply_add(turns.high, f64(double_pi[1]), multiply_subtract(turns.low, f64(double_pi[0]), offset));
    return product_and(turns.high, f64(double_pi[0]), small);
  }
};

// high + low + lowest half turns, for a rest in two numbers to all their bits: next to a step of k, where
// high is the step and low the rest, a pair leaves it no second one.
struct half_turn_triple : half_turn_pair {
  f64 lowest;

  template <int N>
  batch_pair<double> rest(const f64& k, const f64& offset) const {
    const auto turns = two_sum(high - k * f64(1.0 / N), low);
    return in_radians({turns.high, turns.low + lowest}, offset);
  }
};

}  // namespace
TMK_TIER_CLOSE
