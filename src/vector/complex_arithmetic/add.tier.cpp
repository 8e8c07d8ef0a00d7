// SPDX-License-Identifier: Apache-2.0
// Sums and differences, each part rounded once by the processor. HA looks for overflows; EP does not.
#include "vector/complex_arithmetic/special_lanes.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

struct plus {
  static auto of(const auto& x, const auto& y) { return x + y; }
};
struct minus {
  static auto of(const auto& x, const auto& y) { return x - y; }
};

// x - (-y): the compiler cannot swap the arguments, the first of two NaNs being the answer.
struct ordered_plus {
  template <class Real>
  static batch<Real> of(const batch<Real>& x, const batch<Real>& y) {
    return x - (y ^ batch<Real>(Real(-0.0)));
  }
};

template <class Operation, class Real>
struct by_parts : description<Real> {
  using value = complex_value<Real>;
  static constexpr bool streams = true;
  static value fast(const value& x, const value& y) {
    return {Operation::of(x.re, y.re), Operation::of(x.im, y.im)};
  }
};

template <class Operation, class Real>
struct coarse_by_parts : by_parts<Operation, Real> {
  static constexpr auto controls = control_class::b;
};

// A part infinite, and no argument: an overflow.
template <class Operation, class Real>
struct reported_by_parts : by_parts<Operation, Real> {
  using value = complex_value<Real>;
  static lane_mask<Real> flagged(const value&, const value&, const value& r) { return has_special(r); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    const auto settle_nan = [](const batch<Real>& u, const batch<Real>& v, batch<Real>& sum) {
      pack result{sum};
      answer_nans(pack{u, v}, result);
      sum = result.first;
    };
    settle_nan(x.re, y.re, r.re);
    settle_nan(x.im, y.im, r.im);
    return has_infinity(r) & !(has_infinity(x) | has_infinity(y));
  }
  template <class Element>
  static int32_t rare(const Element* a, const Element* b, Element* r) {
    *r = {Operation::of(a->re, b->re), Operation::of(a->im, b->im)};
    const auto infinite = [](const Element& z) { return std::isinf(z.re) || std::isinf(z.im); };
    return infinite(*r) && !infinite(*a) && !infinite(*b) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
  }
};

template <class Real, level Level>
using sum = std::conditional_t<Level == level::ep, coarse_by_parts<ordered_plus, Real>,
                               reported_by_parts<plus, Real>>;
template <class Real, level Level>
using difference =
    std::conditional_t<Level == level::ep, coarse_by_parts<minus, Real>, reported_by_parts<minus, Real>>;

}  // namespace
TMK_TIER_CLOSE

// Maximum error 0.5 ulp: rounded correctly.
TMK_KERNELS(c, Add, binary, HHE, sum)
TMK_KERNELS(z, Add, binary, HHE, sum)
TMK_KERNELS(c, Sub, binary, HHE, difference)
TMK_KERNELS(z, Sub, binary, HHE, difference)
