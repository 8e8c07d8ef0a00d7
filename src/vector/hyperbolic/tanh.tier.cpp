// SPDX-License-Identifier: Apache-2.0
// Hyperbolic tangent. With 2 |x| = k step + r, f = 2^(-k/N) and p = e^r - 1,
//   tanh |x| = (1 - e^(-2|x|)) / (1 + e^(-2|x|)) = ((1 - f) + p) / ((1 + f) + p)
// Around x = 0 1 - f is zero and p alone the numerator. HA has N = 8, keeps both sums in two parts and
// divides what the quotient left once more; the levels below take N = 1, with no table. In single they take
//   p = e^(-r) - 1,  tanh |x| = ((1 - f) - f p) / ((1 + f) + f p)
// whose products are exact, and whose divisor is at most 2, next to which its last place counts least. V4 has
// cells for single.
#include "simd/tables.hpp"
#include "vector/exponential/eighth_powers.hpp"
#include "vector/hyperbolic/series_data.hpp"
#include "vector/hyperbolic/tanh_data.hpp"
#include "vector/toolbox/cells.hpp"
#include "vector/toolbox/near.hpp"
#include "vector/toolbox/odd.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// Maximum errors in ulp (W7), by tmk-accuracy Tanh --search thorough, single LA by random arguments:
//   single LA: 1.990 at 0x1.fab98p-2: got 0x1.d50ca2p-2
//   single HA: 0.5378 at 0x1.7f63ep-6: got 0x1.7f51f8p-6, want 0x1.7f51f6edp-6
//   single EP: 1631 at 0x1.0e72c2p+0: got 0x1.919c1ep-1, want 0x1.918f5f25p-1
//   double LA, EP: 2.000 at 0x1.25e4f87ef6c05p+4: got 0x1p+0, want 0x1.ffffffffffffep-1
//   double HA: 0.5462 at 0x1.7804e03be8a16p-6: got 0x1.77f3fa879531cp-6, want 0x1.77f3fa879531c8cp-6
// Maximum errors in ulp (V3, V4), by tmk-accuracy Tanh --search thorough, single LA by random arguments:
//   single LA (V3): 1.954 at 0x1.09e4c2p-1: got 0x1.e8a13ep-2
//   single LA (V4, all numbers): 1.003 at 0x1.ff6c8p-4: got 0x1.fcc85cp-4, want 0x1.fcc859fep-4
//   single HA (V4, all numbers): 0.5774 at 0x1.6014dcp+0: got 0x1.c2821p-1, want 0x1.c2821128p-1
//   single HA (V3): 0.5378 at 0x1.7f63ep-6: got 0x1.7f51f8p-6, want 0x1.7f51f6edp-6
//   single EP: 1631 at 0x1.0ef834p+0: got 0x1.9202acp-1, want 0x1.91f5ed9bp-1
//   double LA, EP: 2.000 at 0x1.25e4f87ef6c05p+4: got 0x1p+0, want 0x1.ffffffffffffep-1
//   double HA: 0.5448 at 0x1.68b9c86c6b918p-6: got 0x1.68aadd47d96c9p-6, want 0x1.68aadd47d96c98cp-6
template <class Real, level Level>
struct hyperbolic_tangent : description<Real> {
  using value = batch<Real>;
  using data = hyperbolic_data::series<Real>;
  static constexpr bool single = sizeof(Real) == 4;
  static constexpr int steps = Level == level::ha ? 8 : 1;
  static constexpr Real saturated = single ? Real(10) : Real(20);  // 1 from here on

  static value fast(const value& x) {
    return odd_function(x, [](const value& magnitude) {
      if constexpr (single && this_tier == 2) return by_cells(magnitude);
      const value a = minimum_or_second(value(saturated), magnitude), twice = a + a;
      const value shifted =
          negative_multiply_add(a, value(Real(0x1.71547652b82fep1 * steps)), value(shifter<Real>));
      const value k = shifted - value(shifter<Real>);  // negative
      constexpr Real high = data::log2_high / steps, low = data::log2_low / steps;
      if constexpr (Level == level::ha)
        return by_pairs(shifted, multiply_add(k, value(high), twice), k * value(low));
      else if constexpr (single)
        return by_words(shifted, negative_multiply_add(k, value(high), a * value(Real(-2))), k * value(-low));
      else
        return by_words(shifted, multiply_add(k, value(high), twice), k * value(low));
    });
  }

  // The cells grow with x, as tanh flattens.
  static value by_cells(const value& magnitude) {
    const value clamped = minimum_or_second(value(Real(tanh_data::last)), magnitude);
    const cells<tanh_data::float_cells, 21> cell(
        bits_as<typename format<Real>::bits>(clamped + value(Real(tanh_data::shift))));
    const value t = clamped - cell.center(), rest = cell.rest(t);
    if constexpr (Level == level::la) return multiply_add(rest + cell.slope(), t, cell.at_center());
    const auto line = add_product(cell.at_center(), cell.slope(), t);
    return line.high + multiply_add(t, rest, line.low);
  }

  static value by_pairs(const value& shifted, const value& r, const value& r_low) {
    using series = exp_series<Real, exp_base::e>;
    const value one(Real(1));
    const lane_table<Real, 8> powers(lowered_powers<Real>.entry),
        corrections(eighth_powers<Real>::correction);
    const auto j = table_index<Real, 8, 0>(bits_as<typename format<Real>::bits>(shifted));
    const value f = raise_exponent<3>(powers[j], shifted), f_low = f * corrections.leading(j);
    const value reduced = r + r_low;
    const value curved = multiply_add(reduced * reduced, polynomial(reduced, series::minus_one), r_low);
    const auto part = [&](const value& f, const value& f_low) {
      const auto base = fast_two_sum(one, f), sum = fast_two_sum(base.high, r);
      return batch_pair<Real>{sum.high, ((base.low + f_low) + sum.low) + curved};
    };
    const auto above = part(-f, -f_low), below = part(f, f_low);
    const value reciprocal = one / (below.high + below.low);
    const value quotient = (above.high + above.low) * reciprocal;
    const value rest =
        residual(above.high, quotient, below.high) + negative_multiply_add(quotient, below.low, above.low);
    return multiply_add(rest, reciprocal, quotient);
  }

  static value by_words(const value& shifted, const value& r, const value& r_low) {
    const value one(Real(1));
    const value f = raise_exponent<0>(one, shifted);
    const value reduced = r + r_low;
    const value curved = multiply_add(reduced * reduced, polynomial(reduced, data::la_growth), r_low);
    const value growing = r + curved, base = one + f;
    if constexpr (single) {
      return negative_multiply_add(f, growing, one - f) / multiply_add(f, growing, base);
    } else {
      // For small x the divisor is little above 2, where its last place counts most: what it loses goes to
      // the dividend, by a divisor of about 2.2.
      const value divisor = base + growing, above = (one - f) + r, lost = growing - (divisor - base);
      const value tail = negative_multiply_add(lost, above * value(Real(0.45)), curved);
      return minimum_or_second(one, (above + tail) / divisor);
    }
  }
};

// 11 bits are had by a quotient of polynomials.
template <>
struct hyperbolic_tangent<float, level::ep> : description<float> {
  static f32 fast(const f32& x) {
    return odd_function(x, [](const f32& magnitude) {
      const f32 a = minimum_or_second(f32(tanh_data::saturated), magnitude), z = a * a;
      const f32 above = multiply_add(a * z, polynomial(z, tanh_data::p), a);
      const f32 below = multiply_add(z, polynomial(z, tanh_data::q), f32(1.0f));
      return above * near_reciprocal(below);
    });
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Tanh, unary, LHE, hyperbolic_tangent)
TMK_KERNELS(d, Tanh, unary, LHL, hyperbolic_tangent)
