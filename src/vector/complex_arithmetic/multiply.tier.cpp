// SPDX-License-Identifier: Apache-2.0
// (a + ib) (c + id) = (ac - bd) + i (ad + bc), and the same with the conjugate of c + id.
// Singles, HA: in double precision, where the products are exact. Doubles, HA: products.hpp.
// EP: in the precision of the arguments, but as HA where a sum is not above 2^-10 of one of its products, or
// 2^-20 in double.
#include "vector/complex_arithmetic/in_double.hpp"
#include "vector/complex_arithmetic/products.hpp"
#include "vector/complex_arithmetic/rare.hpp"
#include "vector/complex_arithmetic/scaling.hpp"
#include "vector/complex_arithmetic/short_products.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

template <class Real>
complex_value<Real> plain_product(const complex_value<Real>& x, const complex_value<Real>& y) {
  return {multiply_subtract(x.re, y.re, x.im * y.im), multiply_add(x.im, y.re, x.re * y.im)};
}

// The products are exact in double: fused or not, the same bits.
inline complex_value<float> product_in_double(const complex_value<float>& x, const complex_value<float>& y) {
  return complex_in_double([](const auto& u, const auto& v) { return plain_product(u, v); }, x, y);
}

// Subnormal numbers are as the caller has set. Every finite element is computed by the same formula; but an
// overflow beside a zero is not reported.
struct single_product : description<float> {
  static constexpr auto controls = control_class::b;
  static constexpr auto sse = sse_control::nearest;
  using value = complex_value<float>;
  static value fast(const value& x, const value& y) { return product_in_double(x, y); }

#if TMK_TIER_NUMBER(TMK_TIER) == 0
  static lane_mask<float> zero_or_not_finite(const f32& x) {
    return magnitude_outside<float, 1u, format<float>::infinity>(x);
  }
  static lane_mask<float> flagged(const value& x, const value& y, const value& r) {
    return zero_or_not_finite(x.re) | zero_or_not_finite(x.im) | zero_or_not_finite(y.re) |
           zero_or_not_finite(y.im) | has_special(r);
  }
#else
  static lane_mask<float> flagged(const value&, const value&, const value& r) { return has_special(r); }
  static lane_mask<float> patch(const value& x, const value& y, value& r) {
    const auto nan = answer_nan_arguments(x, y, r);
    const auto silent = (has_zero(x) | has_zero(y)) & !(has_special(x) | has_special(y));
    return !(nan | silent);
  }
#endif
  static int32_t rare(const tmk_complex8* a, const tmk_complex8* b, tmk_complex8* r) {
    const int32_t status = _c_mul_ha_scalar(a, b, r);
    return is_ordinary(*a) && is_ordinary(*b) && has_infinity(*r) ? VTM_STATUS_OVERFLOW : status;
  }
};

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

  // A sum that is not tiny has no product that was tiny and mattered.
  static lane_mask<double> outside(const f64& r) {
    return magnitude_outside<double, to_bits(0x1p-860), format<double>::infinity>(r);
  }
  static lane_mask<double> unsettled(const f64& r, const f64& a, const f64& c, const f64& b, const f64& d) {
    return outside(r) & !((r == f64(0.0)) & is_zero_sum(a, c, b, d));
  }
  static lane_mask<double> out_of_range(const value& x, const value& y, const value& r) {
    return unsettled(r.re, x.re, y.re, x.im, y.im) | unsettled(r.im, x.re, y.im, x.im, y.re);
  }
  static lane_mask<double> inexact(const sum& part) {
    const u64 exponent = exponent_change(part) & u64(format<double>::infinity);
    return mask_as<double>(exponent != u64(0)) & (part.minus_low != f64(0.0));
  }
  static lane_mask<double> flagged(const value& x, const value& y, const value& r) {
    const sum re = real_part(x, y), im = imaginary_part(x, y);
    const u64 change = (exponent_change(re) | exponent_change(im)) & u64(format<double>::infinity);
    const auto seen = outside(r.re) | outside(r.im) | mask_as<double>(change != u64(0));
    if (lane_bits<double>(seen) == 0) return seen;
    return inexact(re) | inexact(im) | out_of_range(x, y, r);
  }
  static lane_mask<double> patch(const value& x, const value& y, value& r) {
    const auto flags = flagged(x, y, r), open = flags & !answer_nan_arguments(x, y, r);
    if (lane_bits<double>(open) == 0) return open;
    const auto u = into_window(x), v = into_window(y);
    const value product = exact_product(u.value, v.value);
    const auto back = out_of_window(product, u.inverse_root * v.inverse_root);
    const auto wrong = u.lost | v.lost | back.lost | out_of_range(u.value, v.value, product);
    r = select(open & !wrong, back.value, r);
    return open & wrong;
  }
  static int32_t rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
    return vzmul_cout_rare(a, b, r);
  }
};
#endif

// Where products cancel, or are zero or no numbers: also a comparison with a NaN does not hold.
template <class Real>
lane_mask<Real> cancels(const complex_value<Real>& x, const complex_value<Real>& y,
                        const complex_value<Real>& r) {
  const batch<Real> part(sizeof(Real) == 4 ? Real(0x1p-10) : Real(0x1p-20));
  return !((part * xsimd::abs(x.im * y.im) < xsimd::abs(r.re)) &
           (part * xsimd::abs(x.re * y.im) < xsimd::abs(r.im)));
}

struct coarse_single_product : description<float> {
  using value = complex_value<float>;
  static value fast(const value& x, const value& y) { return plain_product(x, y); }
  static lane_mask<float> flagged(const value& x, const value& y, const value& r) { return cancels(x, y, r); }
#if TMK_TIER_NUMBER(TMK_TIER) != 0
  static lane_mask<float> patch(const value& x, const value& y, value& r) {
    const auto flags = cancels(x, y, r);
    r = select(flags, product_in_double(x, y), r);
    answer_nan_arguments(x, y, r);
    return flags & (has_infinity(x) | has_infinity(y));
  }
#endif
  static int32_t rare(const tmk_complex8* a, const tmk_complex8* b, tmk_complex8* r) {
    return vcmul_cout_rare(a, b, r);
  }
};

struct coarse_double_product : description<double> {
  using value = complex_value<double>;
  static value fast(const value& x, const value& y) { return plain_product(x, y); }
  static lane_mask<double> flagged(const value& x, const value& y, const value& r) {
    return cancels(x, y, r);
  }
#if TMK_TIER_NUMBER(TMK_TIER) != 0
  static lane_mask<double> patch(const value& x, const value& y, value& r) {
    const auto flags = cancels(x, y, r);
    value fine = double_product::fast(x, y);
    auto rest = double_product::flagged(x, y, fine);
    if (lane_bits<double>(flags & rest) != 0) rest = rest & double_product::patch(x, y, fine);
    r = select(flags, fine, r);
    return flags & rest;
  }
#endif
  static int32_t rare(const tmk_complex16* a, const tmk_complex16* b, tmk_complex16* r) {
    return double_product::rare(a, b, r);
  }
};

// The same with the second argument's conjugate.
template <class Product>
struct conjugated : Product {
  using value = typename Product::value;
  using mask = lane_mask<typename Product::real>;
  static value fast(const value& x, const value& y) { return Product::fast(x, conjugate_of(y)); }
  static mask flagged(const value& x, const value& y, const value& r) {
    return Product::flagged(x, conjugate_of(y), r);
  }
#if TMK_TIER_NUMBER(TMK_TIER) != 0
  static mask patch(const value& x, const value& y, value& r) {
    return Product::patch(x, conjugate_of(y), r);
  }
#endif
  template <class Element>
  static int32_t rare(const Element* a, const Element* b, Element* r) {
    const Element conjugate = conjugate_of(*b);
    return Product::rare(a, &conjugate, r);
  }
};

template <class Real, level Level>
using product =
    std::conditional_t<sizeof(Real) == 4,
                       std::conditional_t<Level == level::ep, coarse_single_product, single_product>,
                       std::conditional_t<Level == level::ep, coarse_double_product, double_product>>;
template <class Real, level Level>
using product_by_conjugate = conjugated<product<Real, Level>>;

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(c, Mul, binary, HHE, product)
TMK_KERNELS(z, Mul, binary, HHE, product)
TMK_KERNELS(c, MulByConj, binary, HHE, product_by_conjugate)
TMK_KERNELS(z, MulByConj, binary, HHE, product_by_conjugate)
