// SPDX-License-Identifier: Apache-2.0
// x - q y with q the integer part of x / y (Fmod), or the integer nearest to it (Remainder): both exact.
//
// Where t = x / y, rounded, is below 2^precision, q is the integer nearest to t, give or take one: x - q y is
// a number of the format, and one fused operation gives it. A larger t, by the reciprocal of y, is wrong by
// 1.5 ulp at most. Rounded to two bits less than the format has it is an even integer, and x - t y is a
// number of the format again, smaller by nearly that many bits, and of the same remainder.
//
// The baseline, without a fused operation, works in double precision with quotients of 26 bits and with y in
// two parts of 27 and 26 bits: products are exact, and so are the differences.
#include "vector/arithmetic/exact.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
struct reduction {
  using value = batch<Real>;
  using mask = lane_mask<Real>;
  using bits = typename format<Real>::bits;
  static constexpr bool single = sizeof(Real) == 4;

  // Quotients below this are a step away from their remainder.
  static constexpr Real limit = is_baseline ? Real(0x1p26) : 2 / std::numeric_limits<Real>::epsilon();
  // A quotient may pass the largest number by this, twice.
  static constexpr Real stride = single ? Real(0x1p90) : Real(0x1p600);
  // A divisor below the first has subnormal neighbours, one above the second a subnormal reciprocal.
  static constexpr Real small = single ? Real(0x1p-60) : Real(0x1p-500);
  static constexpr Real large = single ? Real(0x1p100) : Real(0x1p900);

  static value leading(const value& x, int dropped) {
    return bits_as<Real>(bits_as<bits>(x) & batch<bits>(~bits{0} << dropped));
  }
  static value cut(const value& t) {
    if constexpr (is_baseline)
      return leading(t, 27);
    else
      return leading(bits_as<Real>(bits_as<bits>(t) + batch<bits>(bits{2})), 2);
  }
  // x - q y
  static value rest_of(const value& x, const value& q, const value& y) {
    if constexpr (is_baseline) {
      const value high = leading(y, 26);
      return (x - q * high) - q * (y - high);
    } else {
      return negative_multiply_add(q, y, x);
    }
  }
  // For |x| < limit y: what is left has about half the size of y at most.
  static value nearest(const value& x, const value& y) {
    const value t = x / y;
    if constexpr (is_baseline) {
      const value shifter(Real(0x1.8p52));
      return rest_of(x, (t + shifter) - shifter, y);
    } else {
      return rest_of(x, round_as_set(t), y);
    }
  }
  // x less multiples of y until it is below `end`, which is at least y.
  static value reduce(value x, const value& y, const value& end) {
    // On the baseline a little less, so that no product q y passes x, which may be the largest number.
    const value inverse = value(is_baseline ? Real(1 - 0x1p-50) : Real(1)) / y;
    for (;;) {
      const mask far = xsimd::abs(x) >= end;
      if (lane_bits<Real>(far) == 0) return x;
      x = xsimd::select(far, rest_of(x, cut(x * inverse), y), x);
    }
  }
  // A function of any finite x >= 0, y > 0 from finish(x', y), |x'| < limit y.
  template <class Finish>
  static value any_quotient(value x, value y, const Finish& finish) {
    const value infinity(std::numeric_limits<Real>::infinity()), one(Real(1));
    const value y1 = y * value(stride), y2 = y1 * value(stride);
    for (const value& multiple : {y2, y1}) {
      const value divisor = xsimd::select(multiple < value(large), multiple, infinity);
      x = reduce(x, divisor, divisor);
    }
    // Both in the middle of the range; on the baseline, so that no product passes the largest number.
    const mask below = y < value(small), above = (y > value(large)) & (xsimd::abs(x) > value(large));
    value scale = xsimd::select(below, value(1 / small), one), back = xsimd::select(below, value(small), one);
    if constexpr (is_baseline) {
      scale = xsimd::select(above, value(small), scale);
      back = xsimd::select(above, value(1 / small), back);
    }
    y = y * scale;
    return finish(reduce(x * scale, y, y * value(limit)), y) * back;
  }
};

// `settled` turns what nearest() leaves of |x| to the function's value of |x| and |y|.
template <class Real, class Function>
struct remainder_of_division : exact<Real> {
  using value = batch<Real>;
  static constexpr bool widened = is_baseline && sizeof(Real) == 4;
  static constexpr auto limit =
      static_cast<Real>(reduction<std::conditional_t<widened, double, Real>>::limit);
  // Arithmetic on subnormal numbers may take a hundred times as long: fast() sees none.
  static constexpr Real least = sizeof(Real) == 4 ? Real(0x1p-100) : Real(0x1p-960);

  template <class Value>
  using reduction_of = reduction<typename Value::value_type>;

  template <class Formula>
  static value apply(const Formula& formula, const value& x, const value& y) {
    if constexpr (widened)
      return in_double(formula, x, y);
    else
      return formula(x, y);
  }
  static value with_turned_sign(const value& r, const value& x) { return r ^ (x & value(Real(-0.0))); }

  static constexpr auto finish = []<class Value>(const Value& x, const Value& y) {
    return Function::settled(reduction_of<Value>::nearest(x, y), y);
  };

  static value fast(const value& x, const value& y) {
    const value a = xsimd::abs(x), b = xsimd::abs(y), bottom(least);
    const value r = apply(finish, maximum_or_second(bottom, a), maximum_or_second(bottom, b));
    return xsimd::select(a < bottom, x, with_turned_sign(r, x));
  }
  // Infinite y leave a NaN; on the baseline, products past the largest number one or an infinity.
  static lane_mask<Real> flagged(const value& x, const value& y, const value& r) {
    const value b = xsimd::abs(y);
    const auto near =
        (b >= value(2 * least)) & (xsimd::abs(x) < value(limit) * maximum_or_second(value(least), b));
    return (!near) | not_finite(r);
  }
  // All that has a value: any quotient, infinite y, NaN.
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    const value a = xsimd::abs(x), b = xsimd::abs(y), infinity(std::numeric_limits<Real>::infinity());
    const auto numbers = (a < infinity) & (b > value(Real(0))), divided = numbers & (b < infinity);
    const auto formula = []<class Value>(const Value& u, const Value& v) {
      return reduction_of<Value>::any_quotient(u, v, finish);
    };
    const value rest =
        apply(formula, xsimd::select(divided, a, value(Real(0))), xsimd::select(divided, b, value(Real(1))));
    r = xsimd::select(divided, with_turned_sign(rest, x), xsimd::select(numbers, x, r));
    pack result{r};
    const auto nan = answer_nans(pack{x, y}, result);
    r = result.first;
    return !(numbers | nan);
  }
};

struct to_zero {
  template <class Value>
  static Value settled(const Value& r, const Value& y) {
    return xsimd::select(r < Value(0), r + y, r);
  }
};

// The rounded quotient may have been a half, and r larger than y / 2.
struct to_nearest {
  template <class Value>
  static Value settled(const Value& r, const Value& y) {
    const Value magnitude = xsimd::abs(r);
    return xsimd::select(magnitude > y - magnitude, r - (y | (r ^ magnitude)), r);
  }
};

template <class Real>
using truncated_remainder = remainder_of_division<Real, to_zero>;
template <class Real>
using nearest_remainder = remainder_of_division<Real, to_nearest>;

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Fmod, binary, HHH, truncated_remainder)
TMK_REAL_KERNELS(Remainder, binary, HHH, nearest_remainder)
