// SPDX-License-Identifier: Apache-2.0
// Products of doubles, HA. On the baseline and for numbers that need scaling both products of a part as a
// pair; on V3 and V4 four fused operations a part.
#pragma once

#include "vector/complex_arithmetic/products.hpp"
#include "vector/complex_arithmetic/rare.hpp"
#include "vector/complex_arithmetic/scaling.hpp"
#include "vector/complex_arithmetic/short_products.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

// Each part as a pair, rounded once.
inline complex_value<double> exact_product(const complex_value<double>& x, const complex_value<double>& y) {
  const auto product = paired_product(x, y);
  return {product.re.rounded(), product.im.rounded()};
}

#if TMK_TIER_NUMBER(TMK_TIER) == 0
struct double_product : description<double> {
  using value = complex_value<double>;
  static value fast(const value& x, const value& y) { return exact_product(x, y); }
  static lane_mask<double> flagged(const value& x, const value& y, const value&) {
    const auto bad = [](const f64& c) {
      return magnitude_outside<double, uint64_t{0x23400000} << 32, uint64_t{0x5FD6A09E} << 32>(c);
    };
    return bad(x.re) | bad(x.im) | bad(y.re) | bad(y.im);
  }
  static int32_t rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
    return vzmul_cout_rare(a, b, r);
  }
};
#else
struct double_product : description<double> {
  using value = complex_value<double>;
  using sum = short_sum<double>;
  static sum real_part(const value& x, const value& y) {
    const f64 p = x.im * y.im;  // subtracted
    return {multiply_subtract(x.re, y.re, p), multiply_subtract(x.im, y.im, p)};
  }
  static sum imaginary_part(const value& x, const value& y) {
    return short_sum_of_products(x.re, y.im, x.im, y.re);
  }
  static value fast(const value& x, const value& y) {
    return {real_part(x, y).rounded(), imaginary_part(x, y).rounded()};
  }

  static constexpr double least = 0x1p-860;  // has no product that was tiny and mattered
  static lane_mask<double> inexact(const sum& part) {
    const u64 exponent = exponent_change(part) & u64(format<double>::infinity);
    return mask_as<double>(exponent != u64(0)) & (part.minus_low != f64(0.0));
  }
  static lane_mask<double> flagged(const value& x, const value& y, const value& r) {
    const sum re = real_part(x, y), im = imaginary_part(x, y);
    const u64 change = (exponent_change(re) | exponent_change(im)) & u64(format<double>::infinity);
    const auto seen = outside<least>(r.re) | outside<least>(r.im) | mask_as<double>(change != u64(0));
    if (lane_bits<double>(seen) == 0) return seen;
    return inexact(re) | inexact(im) | has_unsettled<least>(x, y, r);
  }
  static lane_mask<double> patch(const value& x, const value& y, value& r) {
    const auto flags = flagged(x, y, r), open = flags & !answer_nan_arguments(x, y, r);
    const auto scaled = open & !(has_special(x) | has_special(y));
    if (lane_bits<double>(scaled) == 0) return open;
    const auto u = into_window(or_one(scaled, x)), v = into_window(or_one(scaled, y));
    const value product = exact_product(u.value, v.value);
    const auto back = out_of_window(product, u.inverse_root * v.inverse_root);
    const auto wrong = u.lost | v.lost | back.lost | has_unsettled<least>(u.value, v.value, product);
    r = select(scaled & !wrong, back.value, r);
    return open & !(scaled & !wrong);
  }
  static int32_t rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
    return vzmul_cout_rare(a, b, r);
  }
};
#endif

}  // namespace
TMK_TIER_CLOSE
