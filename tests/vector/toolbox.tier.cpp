// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "simd/batch.hpp"
#include "toolbox_kernels.hpp"
#include "vector/toolbox/pair.hpp"
#include "vector/toolbox/polynomial.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, auto Operation>
void operate(const Real* x_high, const Real* x_low, const Real* y_high, const Real* y_low, Real* high,
             Real* low) {
  const batch_pair<Real> x{load(x_high), load(x_low)}, y{load(y_high), load(y_low)};
  const batch_pair<Real> r = Operation(x, y);
  store(high, r.high);
  store(low, r.low);
}

template <class Real, int N>
void look_up(const Real* entries, const typename format<Real>::bits* x, Real* entry, Real* leading,
             Real* by_fraction) {
  const lane_table<Real, N> t(reinterpret_cast<const Real(&)[N]>(*entries));
  const auto bits = load(x);
  const auto last = table_index<Real, N, 0>(bits);
  store(entry, t[last]);
  store(leading, t.leading(last));
  constexpr int width = N == 4 ? 2 : N == 8 ? 3 : N == 16 ? 4 : 5;
  store(by_fraction, t.short_entry(table_index<Real, N, format<Real>::fraction_bits - width>(bits)));
}

template <class Real, int Size, int First = 0>
Real evaluate(Real x, const Real* coefficients) {
  return polynomial<First>(batch<Real>(x), reinterpret_cast<const Real(&)[Size]>(*coefficients)).get(0);
}

#define TMK_OPERATION(...) \
  operate<Real, []([[maybe_unused]] const auto& x, [[maybe_unused]] const auto& y) { return __VA_ARGS__; }>

template <class Real>
constexpr toolbox_kernels<Real> kernels() {
  return {
      lanes<Real>,
      {TMK_OPERATION(two_prod(x.high, y.high)), TMK_OPERATION(add(x, y.high)), TMK_OPERATION(add(x, y)),
       TMK_OPERATION(multiply(x, y.high)), TMK_OPERATION(multiply(x, y)),
       TMK_OPERATION(divide(x.high, y.high)), TMK_OPERATION(divide(x, y.high)), TMK_OPERATION(divide(x, y)),
       TMK_OPERATION(square_root(x.high)), TMK_OPERATION(square_root(x))},
      [](Real x, Real y, Real z) {
        return multiply_add(batch<Real>(x), batch<Real>(y), batch<Real>(z)).get(0);
      },
      [](const Real* x, Real* even_odd) {
        const auto parts = deinterleave(load(x), load(x + lanes<Real>));
        store(even_odd, parts.first);
        store(even_odd + lanes<Real>, parts.second);
      },
      [](const Real* even_odd, Real* x) {
        const auto whole = interleave(load(even_odd), load(even_odd + lanes<Real>));
        store(x, whole.first);
        store(x + lanes<Real>, whole.second);
      },
      {look_up<Real, 4>, look_up<Real, 8>, look_up<Real, 16>, look_up<Real, 32>},
      {evaluate<Real, 1>, evaluate<Real, 2>, evaluate<Real, 3>, evaluate<Real, 4>, evaluate<Real, 5>,
       evaluate<Real, 6>, evaluate<Real, 7>, evaluate<Real, 8, 1>},
  };
}

}  // namespace
TMK_TIER_CLOSE

namespace tmk {
TMK_DEFINE_TIER_KERNELS(toolbox_doubles) = {kernels<double>()};
TMK_DEFINE_TIER_KERNELS(toolbox_singles) = {kernels<float>()};
}  // namespace tmk
