// SPDX-License-Identifier: Apache-2.0
// (a + ib) (c + id) = (ac - bd) + i (ad + bc), and the same with the conjugate of c + id.
// EP: in the precision of the arguments, but as HA where a sum is not above 2^-10 of one of its products, or
// 2^-20 in double.
#include "vector/complex_arithmetic/double_product.hpp"
#include "vector/complex_arithmetic/single_product.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

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

// Maximum errors of a part in ulp, by tmk-accuracy --samples 300000:
//   single HA (all tiers): 0.5000 at ((-0x1.076f68p+2, 0x1.4ffa96p+64), (0x1.f18p-139, 0x1.8p-147))
//   double HA (W7): 0.5000 at ((0x1.98p-1067, 0x1.755d9a4p-1047), (-0x1.382556c3bfcdp+145,
//   -0x1.d9c4e666p-1043)) double HA (V3, V4): 1.000 at ((0x1.324cee4755e54p+3, -0x1.7b03930967318p+1),
//     (-0x1.0492751676f22p+2, 0x1.a529c7a2161d2p+3)): got 0x1.4c8831ce464dcp-43, want 0x1.4c8831ce464dbp-43
// At level EP a part that cancels keeps 13 bits in single and 32 in double. On the baseline one may overflow
// though its two products have a sum in the format.
TMK_KERNELS(c, Mul, binary, HHE, product)
TMK_KERNELS(z, Mul, binary, HHE, product)
TMK_KERNELS(c, MulByConj, binary, HHE, product_by_conjugate)
TMK_KERNELS(z, MulByConj, binary, HHE, product_by_conjugate)
