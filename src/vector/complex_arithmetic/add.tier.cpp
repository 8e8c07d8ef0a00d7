// SPDX-License-Identifier: Apache-2.0
// Sums and differences, each part rounded once by the processor: formulas of reals, whose lanes need not be
// taken apart. HA looks for overflows; EP does not.
#include "vector/toolbox/lane_tests.hpp"
#include "vector/walk/by_flags.hpp"
#include "vector/walk/kernel.hpp"

TMK_TIER_OPEN
namespace {

struct plus {
  static auto of(const auto& x, const auto& y) { return x + y; }
  static auto in_order(const auto& x, const auto& y) { return add_in_order(x, y); }
};
struct minus {
  static auto of(const auto& x, const auto& y) { return x - y; }
  static auto in_order(const auto& x, const auto& y) { return x - y; }
};

template <class Operation, class Real>
struct by_parts : description<Real> {
  using value = parts_in_turn<Real>;
  static constexpr int group = 2 * lanes<Real>;
  static constexpr bool streams = true;
  static value in_order(const value& x, const value& y) { return {Operation::in_order(x.parts, y.parts)}; }
};

template <class Operation, class Real>
struct coarse_by_parts : by_parts<Operation, Real> {
  using value = parts_in_turn<Real>;
  static constexpr auto controls = control_class::b;
  static value fast(const value& x, const value& y) { return by_parts<Operation, Real>::in_order(x, y); }
};

// A part infinite, and no argument: an overflow. rare() sees the other part.
template <class Operation, class Real>
struct reported_by_parts : by_parts<Operation, Real> {
  using value = parts_in_turn<Real>;
  static constexpr bool by_flags = true;
  static value fast(const value& x, const value& y) { return {Operation::of(x.parts, y.parts)}; }
  static lane_mask<Real> flagged(const value&, const value&, const value& r) { return not_finite(r.parts); }
  static lane_mask<Real> patch(const value& x, const value& y, value& r) {
    pack result{r.parts};
    answer_nans(pack{x.parts, y.parts}, result);
    r.parts = result.first;
    return xsimd::isinf(r.parts) & !(xsimd::isinf(x.parts) | xsimd::isinf(y.parts));
  }
  template <class Element>
  static int32_t rare(const Element* a, const Element* b, Element* r) {
    *r = {Operation::of(a->re, b->re), Operation::of(a->im, b->im)};
    const auto infinite = [](const Element& z) { return std::isinf(z.re) || std::isinf(z.im); };
    return infinite(*r) && !infinite(*a) && !infinite(*b) ? VTM_STATUS_OVERFLOW : VTM_STATUS_OK;
  }
};

template <class Real, level Level>
using sum =
    std::conditional_t<Level == level::ep, coarse_by_parts<plus, Real>, reported_by_parts<plus, Real>>;
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
