// SPDX-License-Identifier: Apache-2.0
// Arcsines and arccosines, in radians and in half turns.
//   arcsin(x) = x + x^3 p(x^2),                               |x| <= 1/2
//   arcsin(x) = pi/2 - 2 arcsin(s),   s = sqrt((1 - |x|) / 2),  beyond, where s <= 1/2
// (1 - |x|) / 2 is exact. HA adds what the root leaves; the cubic term is below 1/20 of the result, and
// alone is rounded more than once.
#include "vector/inverse_trigonometric/angle.hpp"
#include "vector/toolbox/settled.hpp"

TMK_TIER_OPEN
namespace {

// The acute angle of the unit vector (x, y), x >= 0, to the y axis where it is steep, x <= 1/2, or else to
// the x axis, with the sign Flat: arcsin(head) + residual quotient, arcsin(head) = head + cube p.
template <class Real, level Level, angle_unit Unit, int Flat>
struct acute_angle {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;
  using series = arcsine_series<Real, Unit>;
  lane_mask<Real> steep;
  value head, root_residual, quotient, cube, p;

  explicit acute_angle(const value& size) {
    // In radians the square vanishes where the cubic term is nothing, and products take no subnormal numbers:
    // these may need a hundred times as long. In half turns the caller has no such sines.
    constexpr bool radians = Unit == angle_unit::radians;
    constexpr Real negligible = sizeof(Real) == 4 ? Real(0x1p-20) : Real(0x1p-40);
    const value half(Real(0.5)), limited = radians ? maximum_or_second(value(negligible), size) : size;
    steep = size <= half;
    const value rest = negative_multiply_add(half, limited, half), root = xsimd::sqrt(rest);
    const value square =
        radians ? multiply_subtract(limited, limited, value(negligible * negligible)) : size * size;
    const value z = xsimd::select(steep, square, rest);
    head = xsimd::select(steep, size, root * value(Real(2 * Flat)));
    cube = head * z;
    if constexpr (Level == level::ha) {
      root_residual = residual(rest, root, root);
      // The arcsine's slope over the sine is 1 to 1.05.
      constexpr Real factor = Real(1.05 * Flat) * constants::unit;
      quotient = rough_quotient<factor>(root);
      p = leading_term_last ? z * polynomial<1>(z, series::ha) : polynomial(z, series::ha);
    } else if constexpr (Level == level::la) {
      p = polynomial(z, series::la);
    } else {
      p = polynomial(z, series::ep);
    }
  }

  value if_flat(const value& y) const { return xsimd::select(steep, value(Real(0)), y); }
  // y and what the head lacks of a flat angle.
  value plus_lost(const value& y) const {
    if constexpr (Level != level::ha) return y;
    return multiply_add(root_residual, quotient, y);
  }

  // Without the leading term p is rounded less.
  static constexpr bool leading_term_last = Level == level::ha && !is_baseline;
  value tail(const value& rest) const {
    const value sum = multiply_add(cube, p, rest);
    return leading_term_last ? multiply_add(cube, value(series::ha[0]), sum) : sum;
  }

  // turn + rest + this angle, where `turn` consists of right angles and `rest` is small.
  value turned(const value& turn, const value& rest) const {
    if constexpr (Level == level::ep && Unit == angle_unit::radians)
      return multiply_add(cube, p, turn + head);
    if constexpr (Level == level::ep)
      return multiply_add(cube, p, multiply_add(head, value(constants::unit), turn));
    if constexpr (Level == level::la && Unit == angle_unit::radians) return turn + (head + tail(rest));
    const auto sum = sum_in_unit<Unit>(turn, head);
    return sum.high + tail(sum.low + rest);
  }
};

template <class Real>
struct defined_to_one : description<Real> {
  static std::optional<int32_t> shortcut(const Real* a, Real* r) {
    return std::abs(*a) > 1 ? std::optional(undefined(r)) : std::nullopt;
  }
};

template <class Real, level Level, angle_unit Unit>
struct arcsine : defined_to_one<Real> {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;

  static value of_positive(const value& x) {
    const acute_angle<Real, Level, Unit, -1> angle(x);
    const value turn = angle.if_flat(value(constants::right_high));
    return angle.turned(turn, angle.if_flat(angle.plus_lost(value(constants::right_low))));
  }
  static value fast(const value& x) {
    if constexpr (Unit == angle_unit::radians) return of_positive(xsimd::abs(x)) | sign_of(x);
    return odd_contraction(x, value(least_in_half_turns<Real>), of_positive);
  }
  static constexpr bool may_vanish = Unit == angle_unit::half_turns;
  static lane_mask<Real> flagged(const value& x, const value&) {
    const auto inside = xsimd::abs(x) <= value(Real(1));
    return may_vanish ? (!inside) | is_tiny(x) : !inside;
  }
  static lane_mask<Real> patch(const value& x, value& y) {
    settle<may_vanish>(x, y);
    return xsimd::abs(x) > value(Real(1));
  }
};

template <class Real, level Level, angle_unit Unit>
struct arccosine : defined_to_one<Real> {
  using value = batch<Real>;
  using constants = angles<Real, Unit>;

  static value fast(const value& x) {
    // What is nothing next to a right angle.
    const value least(sizeof(Real) == 4 ? Real(0x1p-30) : Real(0x1p-60)), size = xsimd::abs(x);
    const acute_angle<Real, Level, Unit, 1> angle(
        Unit == angle_unit::half_turns ? maximum_or_second(least, size) : size);
    const value j = right_angles(angle.steep, x), lost = angle.if_flat(angle.plus_lost(value(Real(0))));
    const value turn = j * value(constants::right_high);
    if constexpr (constants::right_low == 0) return xsimd::abs(angle.turned(turn, lost));
    return xsimd::abs(angle.turned(turn, multiply_add(j, value(constants::right_low), lost)));
  }
  static lane_mask<Real> flagged(const value& x, const value&) { return !(xsimd::abs(x) <= value(Real(1))); }
};

template <class Real, level Level>
using arcsine_in_radians = arcsine<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using arcsine_in_half_turns = arcsine<Real, Level, angle_unit::half_turns>;
template <class Real, level Level>
using arccosine_in_radians = arccosine<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using arccosine_in_half_turns = arccosine<Real, Level, angle_unit::half_turns>;

}  // namespace
TMK_TIER_CLOSE

// Maximum errors in ulp, by tmk-accuracy Asin --search brief --samples 500000:
//   single LA (W7): 1.620 at -0x1.0bc104p-1: got -0x1.19c31p-1, want -0x1.19c3133dp-1
//   single HA (W7): 0.6133 at 0x1.0045d8p-1: got 0x1.0c65ccp-1, want 0x1.0c65cd3ap-1
//   single EP (all tiers): 661 at 0x1.00001p-1: got 0x1.0c1a6p-1, want 0x1.0c1535fcp-1
//   single LA (V3, V4): 1.644 at 0x1.00376cp-1: got 0x1.0c5528p-1, want 0x1.0c5524b6p-1
//   single HA (V3, V4): 0.5796 at -0x1.0048e8p-1: got -0x1.0c6958p-1, want -0x1.0c6956d7p-1
//   double LA, EP (W7): 1.727 at -0x1.0000967cd4b12p-1
//   double HA (W7): 0.6329 at 0x1.0002a41881381p-1: got 0x1.0c18303455c64p-1, want 0x1.0c18303455c635ep-1
//   double LA, EP (V3, V4): 1.722 at 0x1.00039bb7360eep-1
//   double HA (V3, V4): 0.5951 at 0x1.0002a41881354p-1: got 0x1.0c18303455c3p-1, want 0x1.0c18303455c2f68p-1
// Maximum errors in ulp, by tmk-accuracy Acos --search brief --samples 500000:
//   single LA (all tiers): 1.119 at 0x1.3674ecp-1: got 0x1.d6b124p-1, want 0x1.d6b1263dp-1
//   single HA (W7): 0.5903 at 0x1.199dc2p-1: got 0x1.fa0eccp-1, want 0x1.fa0ecad2p-1
//   single EP (all tiers): 613 at 0x1.c15866p-1: got 0x1.ffe29cp-2, want 0x1.ffe765e9p-2
//   single HA (V3, V4): 0.5747 at 0x1.36b00ep-1: got 0x1.d666c4p-1, want 0x1.d666c526p-1
//   double LA, EP (all tiers): 1.177 at 0x1.3905d92e50647p-1
//   double HA (W7): 0.6040 at 0x1.3905d67a9e0b3p-1: got 0x1.d375096b3fc0ep-1, want 0x1.d375096b3fc0e9bp-1
//   double HA (V3, V4): 0.5888 at 0x1.163f894941194p-1: got 0x1.fe148fc2a3fccp-1, want 0x1.fe148fc2a3fcb69p-1
// Maximum errors in ulp, by tmk-accuracy Asinpi --search brief --samples 500000:
//   single LA (W7): 1.827 at 0x1.25f06ap-124: got 0x1.76413ep-126, want 0x1.764141a8p-126
//   single HA (W7): 0.6221 at -0x1.000fb6p-1: got -0x1.556c7p-3, want -0x1.556c6ec1p-3
//   single EP (W7): 845 at 0x1.000076p-1: got 0x1.555c9cp-3, want 0x1.555602d2p-3
//   single LA (V3, V4): 1.285 at 0x1.38c65ep-1: got 0x1.ac6a9p-3, want 0x1.ac6a8d6ep-3
//   single HA (V3, V4): 0.5910 at 0x1.3234c8p-1: got 0x1.a1eadp-3
//   single EP (V3, V4): 844 at 0x1.00001ap-1: got 0x1.555c14p-3, want 0x1.55557b8fp-3
//   double LA (W7): 1.932 at 0x1.4bfe33397001p-1020
//   double HA (W7): 0.6201 at 0x1.000072734418ep-1: got 0x1.5555fd9977b1p-3, want 0x1.5555fd9977b0f61p-3
//   double EP (W7): 5.8e+07 at -0x1.0000000000225p-1: got -0x1.5555558cd8376p-3, want -0x1.555555555587c7bp-3
//   double LA (V3, V4): 1.392 at -0x1.0000012c7e996p-1
//   double HA (V3, V4): 0.5951 at 0x1.433752df261bp-1: got 0x1.bd614a2097ee6p-3, want 0x1.bd614a2097ee698p-3
//   double EP (V3, V4): 5.8e+07 at 0x1.00000000006bap-1
// Maximum errors in ulp, by tmk-accuracy Acospi --search brief --samples 500000:
//   single LA (all tiers): 1.246 at 0x1.82e82ap-1: got 0x1.d186bcp-3, want 0x1.d186b982p-3
//   single HA (W7): 0.5659 at 0x1.6a65fp-1: got 0x1.ff5a3p-3, want 0x1.ff5a3122p-3
//   single EP (all tiers): 599 at 0x1.d90beap-1: got 0x1.ffd8ep-4, want 0x1.ffdd8da9p-4
//   single HA (V3, V4): 0.5689 at 0x1.6a5f18p-1: got 0x1.ff6688p-3, want 0x1.ff6686ddp-3
//   double LA (W7): 1.307 at 0x1.6ed7b3e2ea712p-1: got 0x1.f74a9ecd2bb4ap-3, want 0x1.f74a9ecd2bb4b4ep-3
//   double HA (W7): 0.5718 at 0x1.70038375aecc2p-1: got 0x1.f5267cae28758p-3, want 0x1.f5267cae287576ep-3
//   double EP (all tiers): 4.1e+07 at 0x1.f6297cff9ddb6p-1
//   double LA (V3, V4): 1.306 at 0x1.6efbcd23e1bffp-1: got 0x1.f708b87561caap-3, want 0x1.f708b87561cab4ep-3
//   double HA (V3, V4): 0.5626 at 0x1.6f2062138bf0cp-1: got 0x1.f6c5e956c9722p-3, want 0x1.f6c5e956c97217p-3
TMK_KERNELS(s, Asin, unary, LHE, arcsine_in_radians)
TMK_KERNELS(d, Asin, unary, LHL, arcsine_in_radians)
TMK_KERNELS(s, Acos, unary, LHE, arccosine_in_radians)
TMK_KERNELS(d, Acos, unary, LHL, arccosine_in_radians)
TMK_REAL_KERNELS(Asinpi, unary, LHE, arcsine_in_half_turns)
TMK_REAL_KERNELS(Acospi, unary, LHE, arccosine_in_half_turns)
