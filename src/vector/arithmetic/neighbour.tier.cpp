// SPDX-License-Identifier: Apache-2.0
// The next number after x towards y: the magnitude's bits, one up or one down.
#include "vector/arithmetic/exact.hpp"

TMK_TIER_OPEN
namespace {

// All signs are turned by that of x, of zeros by that of y: then x >= 0, and up is away from zero.
template <class Real>
struct neighbour : exact<Real> {
  using value = batch<Real>;
  using bits = typename format<Real>::bits;

  static value fast(const value& x, const value& y) {
    const value zero(Real(0)), one_step(from_bits<Real>(1));
    const value sign = xsimd::select(x == zero, y, x) & value(Real(-0.0));
    const value from = xsimd::abs(x), to = y ^ sign;
    const auto up = bits_as<bits>(xsimd::select(from < to, one_step, zero));
    const auto down = bits_as<bits>(xsimd::select(from > to, one_step, zero));
    return bits_as<Real>(bits_as<bits>(from) + up - down) ^ sign;
  }
  static lane_mask<Real> flagged(const value&, const value& y, const value& r) {
    constexpr auto first = bits{1} << tested<Real>::dropped;
    return magnitude_outside<Real, first, format<Real>::infinity>(r) | xsimd::isnan(y);
  }
  // A status has a number that steps to infinity or, other than zero, to zero.
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    pack result{r};
    const auto nan = answer_nans(pack{x, y}, result);
    r = result.first;
    const value magnitude = xsimd::abs(x), zero(Real(0));
    const auto number = magnitude < value(std::numeric_limits<Real>::infinity());
    return (not_finite(r) & number & !nan) | ((r == zero) & (magnitude > zero));
  }
};

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(NextAfter, binary, HHH, neighbour)
