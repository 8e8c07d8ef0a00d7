// SPDX-License-Identifier: Apache-2.0
// z^w = e^(w ln z) on the wide tiers, with z in polar form:
//   ln z = ln|z| + i (q right angles + angle),   q = -2..2,   |angle| <= an eighth of a turn
//   z^w = e^E (cos T + i sin T),   E = re(w ln z),   T = im(w ln z) = re(w) q right angles + spin
// Right angles are counted apart, so that powers are real or imaginary where they should be: re(w) q is
// exact. HA in double has ln z, the products with w and E as pairs, to some 2^-64. Singles, and EP, are
// computed in one word of double precision. The fast lane serves results that are normal numbers and |w ln z|
// up to a limit; a patch by registers finishes zeros, NaNs, z^0 and z of any size.
#include <cmath>

#include "vector/complex_logarithm/modulus.hpp"
#include "vector/complex_logarithm/pow_data.hpp"
#include "vector/inverse_trigonometric/angle_of_vector.hpp"
#include "vector/logarithm/log_of_pair.hpp"
#include "vector/power/short_power.hpp"
#include "vector/toolbox/near.hpp"

TMK_TIER_OPEN
namespace {

using complex_doubles = complex_value<double>;
using in_radians = angles<double, angle_unit::radians>;

// The steps of the formula with numbers that are pairs.
struct in_pairs {
  using number = batch_pair<double>;
  static constexpr auto& sine = complex_pow_data::sine;
  static constexpr auto& cosine = complex_pow_data::cosine;
  static constexpr double limit = 0x1p10;  // of |w ln z|

  static number times(const number& x, const f64& y) { return multiply_loose(x, y); }
  static number plus(const number& x, const number& y) {
    const auto sum = two_sum(x.high, y.high);
    return {sum.high, sum.low + (x.low + y.low)};
  }
  static number halved(const number& x) { return {x.high * f64(0.5), x.low * f64(0.5)}; }
  static number signed_by(const f64& sign, const number& x) { return {x.high ^ sign, x.low ^ sign}; }
  static number choose(const lane_mask<double>& which, const number& x, const number& y) {
    return {xsimd::select(which, x.high, y.high), xsimd::select(which, x.low, y.low)};
  }
  static f64 high(const number& x) { return x.high; }
  static f64 low(const number& x) { return x.low; }
  static number of(const f64& x) { return {x, f64(0)}; }
  static number eighth_turn() { return {f64(in_radians::right / 2), f64(in_radians::right_low / 2)}; }
  // count right angles, 1 or 2 or none, and no more than half of one.
  static number right_angles_and(const f64& count, const number& angle) {
    const auto sum = fast_two_sum(count * f64(in_radians::right), angle.high);
    return {sum.high, multiply_add(count, f64(in_radians::right_low), sum.low + angle.low)};
  }
  template <class... Value>
  static number log_of_squares(const f64& larger, const f64& smaller, const Value&... exponent) {
    const auto square = sum_of_squares(larger, smaller);
    const number log = pair_log(square.high, exponent...);
    return {log.high, multiply_add(square.low, near_reciprocal(square.high), log.low)};
  }
  // arctan(n / d), by the cells of the real function.
  static number arctangent(const f64& n, const f64& d) {
    const arctangent_in_cells<double, angle_unit::radians> cell(n, d, f64(0));
    const auto divisor = add_product(d, cell.c, n);
    const f64 numerator = negative_multiply_add(cell.c, d, n);
    const f64 reciprocal = near_reciprocal(divisor.high);
    f64 t = numerator * reciprocal;
    t = multiply_add(negative_multiply_add(t, divisor.high, numerator), reciprocal, t);
    const f64 lost = negative_multiply_add(t, divisor.low, negative_multiply_add(t, divisor.high, numerator));
    const auto sum = fast_two_sum(lane_table<double, 8>(in_radians::arctan)[cell.k], t);
    const f64 z = t * t, error = lane_table<double, 8>(in_radians::arctan_error).leading(cell.k);
    const f64 rest = sum.low + multiply_add(lost, reciprocal, error);
    return {sum.high, multiply_add(t * z, polynomial(z, complex_pow_data::arctangent), rest)};
  }
  // The sum of spin and a part of a right angle.
  static number turned(const number& spin, const f64& part) {
    const auto product = two_prod(part, f64(in_radians::right)), sum = two_sum(spin.high, product.high);
    return {sum.high, sum.low + (product.low + spin.low)};
  }
  static batch_pair<double> normalized(const f64& high, const f64& low) { return fast_two_sum(high, low); }
  // e^x u
  static complex_doubles exponential_times(const number& x, const complex_doubles& u) {
    const auto [power, growth] = pair_exp_in_two(x);
    const f64 length = multiply_add(power, growth, power);
    const f64 lost = multiply_add(power, growth, power - length);
    const auto times = [&](const f64& part) {
      return multiply_add(length, part, lost * part) |
             sign_of(part);  // of a zero the sum might lose the sign
    };
    return {times(u.re), times(u.im)};
  }
};

// And with numbers of one word.
struct in_one_word {
  using number = f64;
  static constexpr auto& sine = complex_pow_data::short_sine;
  static constexpr auto& cosine = complex_pow_data::short_cosine;
  static constexpr double limit = 0x1p15;

  static f64 times(const f64& x, const f64& y) { return x * y; }
  static f64 plus(const f64& x, const f64& y) { return x + y; }
  static f64 halved(const f64& x) { return x * f64(0.5); }
  static f64 signed_by(const f64& sign, const f64& x) { return x ^ sign; }
  static f64 choose(const lane_mask<double>& which, const f64& x, const f64& y) {
    return xsimd::select(which, x, y);
  }
  static f64 high(const f64& x) { return x; }
  static f64 low(const f64&) { return f64(0); }
  static f64 of(const f64& x) { return x; }
  static f64 eighth_turn() { return f64(in_radians::right / 2); }
  static f64 right_angles_and(const f64& count, const f64& angle) {
    return multiply_add(count, f64(in_radians::right), angle);
  }
  template <class... Value>
  static f64 log_of_squares(const f64& larger, const f64& smaller, const Value&... exponent) {
    const auto square = sum_of_squares(larger, smaller);
    return log_of_pair<level::la>(square.high, square.low, exponent...);
  }
  static f64 arctangent(const f64& n, const f64& d) {
    return arctangent_in_cells<double, angle_unit::radians>(n, d, f64(0)).la();
  }
  static f64 turned(const f64& spin, const f64& part) {
    return multiply_add(part, f64(in_radians::right), spin);
  }
  static batch_pair<double> normalized(const f64& high, const f64& low) { return {high + low, f64(0)}; }
  static complex_doubles exponential_times(const f64& x, const complex_doubles& u) {
    const f64 length = short_exp2(x * f64(0x1.71547652b82fep0));
    return {length * u.re, length * u.im};
  }
};

// e^(i T) of T = turns right angles + spin.
template <class Arithmetic>
complex_doubles direction(const f64& turns, const typename Arithmetic::number& spin) {
  const f64 shifter(0x1.8p52), zero(0), one(1), right(in_radians::right);
  const f64 whole_turns = (turns + shifter) - shifter, part = turns - whole_turns;
  const auto sum = Arithmetic::turned(spin, part);
  const f64 count = multiply_add(Arithmetic::high(sum), f64(0x1.45f306dc9c883p-1), shifter) - shifter;
  // The sum less `count` right angles is exact but for what the right angle lacks.
  const auto angle =
      Arithmetic::normalized(negative_multiply_add(count, right, Arithmetic::high(sum)),
                             multiply_add(part - count, f64(in_radians::right_low), Arithmetic::low(sum)));
  const f64 r = xsimd::select(angle.high == zero, sign_of(Arithmetic::high(spin)), angle.high), z = r * r;
  const f64 half(-0.5), near_one = multiply_add(z, half, one);
  const f64 near_one_low = multiply_add(z, half, one - near_one);
  const f64 sine = (multiply_add(r * z, polynomial(z, Arithmetic::sine), angle.low) + r) | sign_of(r);
  const f64 cosine = multiply_add(z * z, polynomial(z, Arithmetic::cosine),
                                  negative_multiply_add(r, angle.low, near_one_low)) +
                     near_one;
  // Bit 0 of the quadrant says that they change places; 1, of it and of the next one, which are negative.
  const u64 quadrant = bits_as<uint64_t>(whole_turns + count + shifter);
  const auto is_odd = mask_as<double>((quadrant & u64(1)) != u64(0));
  const auto sign_of_bit_1 = [](const u64& q) { return bits_as<double>((q & u64(2)) << 62); };
  return {xsimd::select(is_odd, sine, cosine) ^ sign_of_bit_1(quadrant + u64(1)),
          xsimd::select(is_odd, cosine, sine) ^ sign_of_bit_1(quadrant)};
}

// z^w, or (z 2^(exponent / 2))^w, before its last step.
template <class Arithmetic>
struct polar_power {
  typename Arithmetic::number growth;  // E
  complex_doubles unit;                // e^(i T)
  lane_mask<double> served;            // z is in range, w is not 0, the errors of E and T are small

  template <class... Value>
  polar_power(const complex_doubles& z, const complex_doubles& w, const Value&... exponent) {
    using number = typename Arithmetic::number;
    using range = vector_range<double>;
    const f64 zero(0), height = xsimd::abs(z.im), width = xsimd::abs(z.re);
    // Of a NaN and a number, one of these is the NaN.
    const f64 smaller = minimum_or_second(width, height), larger = maximum_or_second(height, width);
    const auto steep = height > width;

    const number log = Arithmetic::halved(Arithmetic::log_of_squares(larger, smaller, exponent...));
    const f64 quarters = xsimd::abs(right_angles(steep, z.re)) | sign_of(z.im);
    // At the axes and at the diagonals the angle changes its sign; there it is exact.
    const f64 sign = sign_of(z.re ^ z.im) ^ xsimd::select(steep, f64(-0.0), zero);
    const number acute = Arithmetic::choose(smaller == larger, Arithmetic::eighth_turn(),
                                            Arithmetic::arctangent(smaller, larger));
    const number angle = Arithmetic::signed_by(sign, acute);
    const number argument = Arithmetic::right_angles_and(quarters, angle);

    // A product with zero is to leave the sign of the other.
    const number of_imaginary =
        Arithmetic::choose(w.im == zero, Arithmetic::of(f64(-0.0)), Arithmetic::times(log, w.im));
    const number spin = Arithmetic::plus(Arithmetic::times(angle, w.re), of_imaginary);
    growth = Arithmetic::plus(Arithmetic::times(log, w.re), Arithmetic::times(argument, -w.im));
    unit = direction<Arithmetic>(w.re * quarters, spin);

    // Among subnormal numbers products lose bits, and quotients may vanish.
    const f64 part = xsimd::min(xsimd::abs(unit.re), xsimd::abs(unit.im));
    const auto is_zero = (part == zero) & ((smaller == zero) | (smaller >= f64(0x1p-400)));
    const auto keeps_bits = is_zero | (part >= f64(0x1p-900));
    const f64 exponents = xsimd::abs(w.re) + xsimd::abs(w.im);
    const f64 logs = xsimd::abs(Arithmetic::high(log)) + xsimd::abs(Arithmetic::high(argument));
    served = (exponents * logs < f64(Arithmetic::limit)) & keeps_bits & (exponents > zero) &
             (exponents < f64(0x1p48)) &  // what the logarithm loses next to z = 1 is below 2^-105
             (larger >= f64(range::least)) & (larger < f64(range::end));
  }
};

// The power for E from `least` to `greatest`; NaN where the fast lane does not serve.
template <class Arithmetic, class... Value>
complex_doubles power_of(double least, double greatest, const Value&... arguments) {
  const polar_power<Arithmetic> power(arguments...);
  const complex_doubles y = Arithmetic::exponential_times(power.growth, power.unit);
  const f64 e = Arithmetic::high(power.growth), nan(std::numeric_limits<double>::quiet_NaN());
  const auto served = power.served & (e > f64(least)) & (e < f64(greatest));
  return {xsimd::select(served, y.re, nan), xsimd::select(served, y.im, nan)};
}

// The exponents E of results that are certain to be normal numbers.
template <class Real>
constexpr double least_exponent = sizeof(Real) == 4 ? -86.9 : -708.0;
template <class Real>
constexpr double greatest_exponent = sizeof(Real) == 4 ? 88.7 : 708.0;

template <class Real, level Level>
struct complex_power : description<Real> {
  using value = batch<Real>;
  using complex = complex_value<Real>;
  using number = std::conditional_t<sizeof(Real) == 4, tmk_complex8, tmk_complex16>;
  using arithmetic = std::conditional_t<sizeof(Real) == 4 || Level == level::ep, in_one_word, in_pairs>;
  static constexpr auto sse = sse_control::exact;  // comparisons with zero are to mean zero
  static constexpr int group = (sizeof(Real) == 4 ? 1 : 2) * lanes<Real>;

  template <class... Value>
  static complex_doubles of_doubles(const complex_doubles& z, const complex_doubles& w,
                                    const Value&... exponent) {
    return power_of<arithmetic>(least_exponent<Real>, greatest_exponent<Real>, z, w, exponent...);
  }
  static complex fast(const complex& z, const complex& w) {
    if constexpr (sizeof(Real) == 8) {
      return of_doubles(z, w);
    } else {
      const widened x = widen(z.re), y = widen(z.im), u = widen(w.re), v = widen(w.im);
      const auto low = of_doubles({x.low, y.low}, {u.low, v.low});
      const auto high = of_doubles({x.high, y.high}, {u.high, v.high});
      return {narrow({low.re, high.re}), narrow({low.im, high.im})};
    }
  }
  static lane_mask<Real> flagged(const complex&, const complex&, const complex& r) {
    return xsimd::isnan(r.re);
  }

  static lane_mask<Real> patch(const complex& z, const complex& w, complex& r) {
    const value zero(Real(0)), infinity(std::numeric_limits<Real>::infinity());
    const value sizes = xsimd::abs(z.re) + xsimd::abs(z.im), exponents = xsimd::abs(w.re) + xsimd::abs(w.im);
    const auto infinite = (xsimd::abs(z.re) == infinity) | (xsimd::abs(z.im) == infinity);
    const auto nan = xsimd::isnan(sizes) & !infinite & (exponents > zero) & (exponents < infinity);
    const auto vanishes = (sizes == zero) & (w.re > zero) & (exponents < infinity);
    const auto is_one = exponents == zero;
    if constexpr (sizeof(Real) == 8) {
      const auto lacks = xsimd::isnan(r.re) & !(infinite | nan | vanishes | is_one);
      if (lane_bits<Real>(lacks) != 0) {
        const scaled_vector<double> scaled(z.im, z.re);
        const auto moved = of_doubles({scaled.x, scaled.y}, w, scaled.log2_of_scale * value(-2));
        r = {xsimd::select(lacks, moved.re, r.re), xsimd::select(lacks, moved.im, r.im)};
      }
    }
    r.re = xsimd::select(is_one, value(Real(1)), xsimd::select(vanishes, zero, r.re));
    r.im = xsimd::select(is_one | vanishes, zero, r.im);
    const auto rare = xsimd::isnan(r.re) & !nan;
    r.re = xsimd::select(nan, sizes, r.re);
    r.im = xsimd::select(nan, sizes, r.im);
    return rare;
  }

  // Poles, and results far out of range whose signs are certain.
  static std::optional<int32_t> shortcut(const number* z, const number* w, number* r) {
    const double x = z->re, y = z->im, u = w->re, v = w->im;
    if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(u) || !std::isfinite(v)) return {};
    if (x == 0 && y == 0 && u <= 0 && (u != 0 || v != 0)) {
      const Real nan = std::numeric_limits<Real>::quiet_NaN();
      *r = {u < 0 ? std::numeric_limits<Real>::infinity() : nan, nan};
      return u < 0 ? VTM_STATUS_SINGULARITY : VTM_STATUS_DOMAIN;
    }
    const scaled_vector<double> scaled = {f64(y), f64(x)};
    const polar_power<in_pairs> power({scaled.x, scaled.y}, {f64(u), f64(v)}, scaled.log2_of_scale * f64(-2));
    const double e = power.growth.high.get(0), size = e > 0 ? HUGE_VAL : 0;
    const double re = power.unit.re.get(0), im = power.unit.im.get(0);
    const auto is_certain = [](double part) { return part == 0 || std::fabs(part) > 0x1p-40; };
    const bool far_out = std::fabs(e) > 2 * std::fabs(least_exponent<Real>);
    if (!far_out || !power.served.get(0) || !is_certain(re) || !is_certain(im)) return {};
    const auto part = [size](double p) { return static_cast<Real>(std::copysign(p == 0 ? 0 : size, p)); };
    *r = {part(re), part(im)};
    return e > 0 ? VTM_STATUS_OVERFLOW : VTM_STATUS_UNDERFLOW;
  }
};

// The same with one exponent for all elements.
template <class Real, level Level>
struct complex_power_to_scalar : complex_power<Real, Level> {
  using complex = complex_value<Real>;
  using number = typename complex_power<Real, Level>::number;
  using elementwise = complex_power<Real, Level>;

  number exponent;
  explicit complex_power_to_scalar(number b) : exponent(b) {}

  complex w() const { return {batch<Real>(exponent.re), batch<Real>(exponent.im)}; }
  complex fast(const complex& z) const { return elementwise::fast(z, w()); }
  lane_mask<Real> flagged(const complex&, const complex& r) const { return xsimd::isnan(r.re); }
  lane_mask<Real> patch(const complex& z, complex& r) const { return elementwise::patch(z, w(), r); }
  std::optional<int32_t> shortcut(const number* z, number* r) const {
    return elementwise::shortcut(z, &exponent, r);
  }
};

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp of the modulus (V3, V4), by tmk-accuracy Pow --samples 65536 --search brief and Powx:
//   Pow   single: 0.7252 at ((0, -0x1.fb86e4p-2), (0x1.bfc036p+0, 0x1.f5681ep+1))
//         double LA, HA: 1.871 at
//           ((-0x1.d7ebb4f35f29cp-994, 0x1.06fb355913fa1p-535), (-0x1.0000b5530520ep-1, 0x1.47a2p-1054))
//         double EP: 32.4 bits (V3), 29.2 bits (V4)
//   Powx  single: 0.7321 at ((-0x1.ab736p-128, 0x1.e48666p-1), (-0x1p-1, 0))
//         double LA, HA: 1.461 at ((-0x1.30876ca6fef9cp+0, 0x1.16e6edf8b64fcp+0), (-0x1p+0, 0))
//         double EP: 32.3 bits (V3), 29.2 bits (V4)
TMK_KERNELS(c, Pow, binary, HHH, complex_power)
TMK_KERNELS(z, Pow, binary, HHE, complex_power)
TMK_KERNELS(c, Powx, scalar_exponent, HHH, complex_power_to_scalar)
TMK_KERNELS(z, Powx, scalar_exponent, HHE, complex_power_to_scalar)
