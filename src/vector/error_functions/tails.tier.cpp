// SPDX-License-Identifier: Apache-2.0
// The complementary error function and the normal distribution, from their tails: for y >= 0
//   erfc(y) = exp(-y^2) w(y),        erfc(-y) = 2 - erfc(y)
//   cdfnorm(-y) = exp(-y^2/2) w(y),  cdfnorm(y) = 1 - cdfnorm(-y)
// with the w of each by cells. y^2 is in two words, the exponential by eighths of a power of two.
#include <algorithm>
#include <cmath>

#include "vector/error_functions/tails_data.hpp"
#include "vector/exponential/eighth_powers.hpp"
#include "vector/hyperbolic/series_data.hpp"
#include "vector/toolbox/cells.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/scaled_back.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

enum class tail { erfc, normal };

// scale: cells are numbered by y scale + 2. usual_end: beyond, results may be subnormal.
template <class Real, tail Tail>
struct tail_constants;
#define TMK_TAIL(Real, kind, first_entry, last_usual)                                        \
  template <>                                                                                \
  struct tail_constants<Real, tail::kind> {                                                  \
    static constexpr const auto& cells = tails_data::Real##_##kind;                          \
    static constexpr const auto& ep = tails_data::Real##_##kind##_ep;                        \
    static constexpr const auto& quotient = tails_data::Real##_##kind##_quotient;            \
    static constexpr Real first = first_entry, second = tails_data::Real##_##kind##_second,  \
                          slope = tails_data::Real##_##kind##_slope,                         \
                          offset = tails_data::Real##_##kind##_offset;                       \
    static constexpr Real scale = tails_data::Real##_##kind##_scale, usual_end = last_usual; \
  };
TMK_TAIL(float, erfc, 0.875f, 9.19f)
TMK_TAIL(float, normal, 1.25f, 12.9f)
TMK_TAIL(double, erfc, 0.875, 26.5)
TMK_TAIL(double, normal, 1.25, 37.5)
#undef TMK_TAIL

// Where products have residuals, results are computed so many times as large: these are normal numbers, too.
template <class Real, level Level>
constexpr Real enlarged = Level != level::ha  ? Real(1)
                          : sizeof(Real) == 4 ? Real(0x1p64)
                                              : Real(0x1p128);
template <class Real, level Level>
constexpr lowered_eighth_powers<Real> enlarged_powers(enlarged<Real, Level>);

// exp(-(z.high + z.low)) enlarged = power (1 + r + curved).
template <class Real, level Level>
struct falling_exponential {
  using value = batch<Real>;
  using series = exp_series<Real, exp_base::e>;
  static constexpr int steps = Level == level::ep ? 1 : 8;
  value power, r, curved;

  explicit falling_exponential(const batch_pair<Real>& z) {
    using data = hyperbolic_data::series<Real>;
    const value shifted =
        negative_multiply_add(z.high, value(Real(0x1.71547652b82fep0 * steps)), value(shifter<Real>));
    const value k = value(shifter<Real>) - shifted;
    r = multiply_subtract(k, value(data::log2_high / steps), z.high);
    if constexpr (Level == level::ep) {
      power = raise_exponent<0>(value(Real(1)), shifted);
      r = multiply_add(k, value(data::log2_low), r);
      curved = (r * r) * polynomial(r, series::ep);
    } else {
      const auto j = table_index<Real, 8, 0>(bits_as<typename format<Real>::bits>(shifted));
      const lane_table<Real, 8> powers(enlarged_powers<Real, Level>.entry),
          corrections(eighth_powers<Real>::correction);
      power = raise_exponent<3>(powers[j], shifted);
      const value low = multiply_subtract(k, value(data::log2_low / steps), z.low), reduced = r + low;
      curved = multiply_add(reduced * reduced, polynomial(reduced, series::ha), low + corrections.leading(j));
    }
  }
};

// Maximum errors in ulp (W7), by tmk-accuracy Erfc --search brief:
//   single LA: 1.931 at 0x1.d784c2p+2: got 0x1.f5ce62p-83, want 0x1.f5ce65ddp-83
//   single HA: 0.6532 at 0x1.d47736p+2: got 0x1.fcccf8p-82, want 0x1.fcccf94ep-82
//   single EP: 3345 at 0x1.e05232p+1: got 0x1.df264cp-24, want 0x1.df0c2a63p-24
//   double LA, HA, EP: 0.7965 at 0x1.c73ffee57d0cdp-2: got 0x1.0f1de945275e6p-1, want 0x1.0f1de945275e6ccp-1
// Maximum errors in ulp (V3), by tmk-accuracy Erfc --search brief:
//   single LA: 1.868 at 0x1.000ceap-1: got 0x1.eaeb66p-2, want 0x1.eaeb6243p-2
//   single HA: 0.6247 at 0x1.d788a4p+2: got 0x1.f40a88p-83, want 0x1.f40a894p-83
//   single EP: 3345 at 0x1.e05232p+1: got 0x1.df264cp-24, want 0x1.df0c2a63p-24
//   double LA: 1.992 at 0x1.4c6cf9afd4cf8p+1: got 0x1.f71553d0f11eep-13, want 0x1.f71553d0f11ec02p-13
//   double HA: 0.6990 at 0x1.d073b44ca52e7p-2: got 0x1.0adf948ff7c9ap-1, want 0x1.0adf948ff7c9ab3p-1
//   double EP: 3.2e+07 at 0x1.86c5c3b4bf25cp+4: got 0x1.fffff4ffb3a11p-867, want 0x1.fffff4e0da4fd1bp-867
// Maximum errors in ulp (V4), by tmk-accuracy Erfc --search brief:
//   single LA: 1.868 at 0x1.000ceap-1: got 0x1.eaeb66p-2, want 0x1.eaeb6243p-2
//   single HA: 0.6247 at 0x1.d788a4p+2: got 0x1.f40a88p-83, want 0x1.f40a894p-83
//   single EP: 2269 at 0x1.cb5bbp+2: got 0x1.fe543p-79, want 0x1.fe427578p-79
//   double LA: 1.992 at 0x1.4c6cf9afd4cf8p+1: got 0x1.f71553d0f11eep-13, want 0x1.f71553d0f11ec02p-13
//   double HA: 0.6990 at 0x1.d073b44ca52e7p-2: got 0x1.0adf948ff7c9ap-1, want 0x1.0adf948ff7c9ab3p-1
//   double EP: 4.4e+07 at 0x1.4c969e9e4183p+1: got 0x1.f38e297439f5dp-13, want 0x1.f38e299e0a67951p-13
// Maximum errors in ulp (W7), by tmk-accuracy CdfNorm --search brief:
//   single LA: 1.939 at -0x1.aa273ap+2: got 0x1.e62fc6p-37, want 0x1.e62fc21fp-37
//   single HA: 0.6483 at -0x1.46f89ep+3: got 0x1.fe8798p-81, want 0x1.fe8796b4p-81
//   single EP: 4130 at -0x1.5bde7ep+2: got 0x1.d59fe6p-26, want 0x1.d57fa19p-26
//   double LA: 1.962 at -0x1.887c62289fa4dp+4: got 0x1.fd583c41ae6edp-441, want 0x1.fd583c41ae6eb0ap-441
//   double HA: 0.6779 at -0x1.1df17e7884fe4p+5: got 0x1.ef1bf2d2c89ep-929, want 0x1.ef1bf2d2c89e0aep-929
//   double EP: 3.3e+07 at -0x1.13d6144802cadp+5: got 0x1.ffff6f999d5afp-865, want 0x1.ffff6f79e47fd3ep-865
// Maximum errors in ulp (V3), by tmk-accuracy CdfNorm --search brief:
//   single LA: 1.916 at -0x1.8c5202p+0: got 0x1.f20a58p-5, want 0x1.f20a542bp-5
//   single HA: 0.6208 at -0x1.736aeep+3: got 0x1.ee059cp-103, want 0x1.ee059d3ep-103
//   single EP: 4130 at -0x1.5bdfd2p+2: got 0x1.d56944p-26, want 0x1.d548ff69p-26
//   double LA: 1.934 at -0x1.887e87f3c5187p+4: got 0x1.f6d320bbdc97p-441, want 0x1.f6d320bbdc971efp-441
//   double HA: 0.6741 at -0x1.1df17f3c823bp+5: got 0x1.ef15540352e88p-929, want 0x1.ef15540352e88adp-929
//   double EP: 3.3e+07 at -0x1.13d6144802cadp+5: got 0x1.ffff6f999d5afp-865, want 0x1.ffff6f79e47fd3ep-865
// Maximum errors in ulp (V4), by tmk-accuracy CdfNorm --search brief:
//   single LA: 1.916 at -0x1.8c5202p+0: got 0x1.f20a58p-5, want 0x1.f20a542bp-5
//   single HA: 0.6208 at -0x1.736aeep+3: got 0x1.ee059cp-103, want 0x1.ee059d3ep-103
//   single EP: 2267 at -0x1.44d174p+3: got 0x1.fdda7cp-80, want 0x1.fdc8c662p-80
//   double LA: 1.934 at -0x1.887e87f3c5187p+4: got 0x1.f6d320bbdc97p-441, want 0x1.f6d320bbdc971efp-441
//   double HA: 0.6741 at -0x1.1df17f3c823bp+5: got 0x1.ef15540352e88p-929, want 0x1.ef15540352e88adp-929
//   double EP: 4.4e+07 at -0x1.d65880df68228p+1: got 0x1.f3a2b4b4ca89ap-14, want 0x1.f3a2b4de90d7848p-14
template <class Real, level Level, tail Tail>
struct gaussian_tail : description<Real> {
  using value = batch<Real>;
  using constants = tail_constants<Real, Tail>;
  static constexpr int group = cell_group<Real>;
  static constexpr auto sse = sse_control::exact;  // residuals may be subnormal numbers
  static constexpr bool is_normal = Tail == tail::normal;

  static value fast(const value& x) {
    const value zero(Real(0));
    const value toward = is_normal ? zero - x : x + zero;  // positive, or +0, where the tail is the result
    const value y = minimum_or_second(value(constants::usual_end), xsimd::abs(x));
    const auto opposite = toward & value(Real(-0.0));
    const value whole =
        xsimd::select(toward < zero, value(Real(is_normal ? 1 : 2) * enlarged<Real, Level>), zero);
    const auto product = tail_of(y);
    if constexpr (Level == level::ha) {
      const auto sum = fast_two_sum(whole, product.high ^ opposite);
      return (sum.high + (sum.low + (product.low ^ opposite))) * value(1 / enlarged<Real, Level>);
    } else {
      return whole + (product.high ^ opposite);
    }
  }

  // The tail from y on, enlarged; in two words for HA.
  static batch_pair<Real> tail_of(const value& y) {
    const value half = is_normal ? y * value(Real(0.5)) : y;
    const auto w = scaled_tail(y);
    if constexpr (Level == level::ha) {
      const falling_exponential<Real, Level> e(two_prod(half, y));
      const auto product = two_prod(e.power, w.high);
      const value low = e.power * w.low;
      return {product.high, multiply_add(product.high + low, e.r + e.curved, product.low + low)};
    } else {
      const falling_exponential<Real, Level> e(Level == level::ep ? batch_pair<Real>{half * y, value(Real(0))}
                                                                  : two_prod(half, y));
      return {w.high * multiply_add(e.power, e.r + e.curved, e.power), value(Real(0))};
    }
  }

  // The w of y.
  static batch_pair<Real> scaled_tail(const value& y) {
    if constexpr (Level == level::ep && this_tier != 2) return {by_quotient(y), value(Real(0))};
    constexpr auto& columns = []() -> auto& {
      if constexpr (Level == level::ep)
        return constants::ep;
      else
        return constants::cells;
    }
    ();
    const value number = multiply_add(y, value(constants::scale), value(Real(2)));
    const cells<columns, format<Real>::fraction_bits - 2> cell(bits_as<typename format<Real>::bits>(number));
    const value t = y - cell.center(), rest = cell.rest(t);
    if constexpr (Level == level::ha) {
      const auto line = add_product(cell.at_center(), cell.slope(), t);
      return {line.high, multiply_add(t, rest, line.low)};
    } else {
      const value slope = Level == level::ep ? multiply_add(rest, t, cell.slope()) : rest + cell.slope();
      return {multiply_add(slope, t, cell.at_center()), value(Real(0))};
    }
  }

  // w as p(v) / (y + first), with p nearly constant and v from 1 / (y + second), to half the bits: where
  // registers hold no tables, half as many instructions.
  static value by_quotient(const value& y) {
    const value first = y + value(constants::first), second = y + value(constants::second);
    const value both = value(Real(1)) / (first * second);
    const value v = multiply_add(both * first, value(constants::slope), value(constants::offset));
    return polynomial(v, constants::quotient) * (both * second);
  }

  static lane_mask<Real> flagged(const value& x, const value&) {
    return !((is_normal ? -x : x) < value(constants::usual_end));
  }
  static lane_mask<Real> patch(const value& x, value& y) {
    const value infinity(std::numeric_limits<Real>::infinity());
    const auto nan = xsimd::isnan(x), infinite = x == (is_normal ? -infinity : infinity);
    y = xsimd::select(nan, x + x, xsimd::select(infinite, value(Real(0)), y));
    return !(nan | infinite);
  }

  // Results that are subnormal numbers, or little more.
  static int32_t rare(const Real* a, Real* r) {
    const double y = std::min(std::fabs(double{*a}), is_normal ? 39.5 : 28.0);
    const auto product = gaussian_tail<double, level::ha, Tail>::tail_of(f64(y));
    if constexpr (sizeof(Real) == 8)
      *r = scaled_back<enlarged<double, level::ha>>(product.high, product.low).get(0);
    else
      *r = static_cast<float>((product.high + product.low).get(0) / enlarged<double, level::ha>);
    return *r < std::numeric_limits<Real>::min() ? VTM_STATUS_UNDERFLOW : VTM_STATUS_OK;
  }
};

template <class Real, level Level>
using complementary_error_function = gaussian_tail<Real, Level, tail::erfc>;
template <class Real, level Level>
using normal_distribution = gaussian_tail<Real, Level, tail::normal>;

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Erfc, unary, LHE, complementary_error_function)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_KERNELS(d, Erfc, unary, HHH, complementary_error_function)
#else
TMK_KERNELS(d, Erfc, unary, LHE, complementary_error_function)
#endif
TMK_REAL_KERNELS(CdfNorm, unary, LHE, normal_distribution)
