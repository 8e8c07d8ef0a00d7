// SPDX-License-Identifier: Apache-2.0
// The kernels of local cubics, a cell to a lane. Every element is computed in the same way whatever its lane,
// and no operation is fused, so that neither the cut into strips nor the tier changes a bit.
#include <algorithm>
#include <limits>

#include "fitting/construction/cubic_cell.hpp"
#include "fitting/construction/local_cubic_kernels.hpp"
#include "simd/rows.hpp"

namespace tmk::fitting {
inline namespace TMK_TIER {
namespace {

// Vector by vector; arrays of scratch have room for a last one that is not full.
template <class Real, class Body>
[[gnu::always_inline]] inline void walk(int count, Body&& body) {
  for (int i = 0; i < count; i += lanes<Real>) body(i, std::min(count - i, lanes<Real>));
}

template <class Real>
void widths(const Real* x, int count, Real* h, Real* r) {
  walk<Real>(count, [&](int i, int rest) {
    const batch<Real> width = load_partial(x + i + 1, rest, Real(1)) - load_partial(x + i, rest, Real(0));
    store(h + i, width);
    store(r + i, Real(1) / width);
  });
}

template <class Real>
void slopes(const Real* y, const Real* r, int count, Real* d) {
  walk<Real>(count, [&](int i, int rest) {
    const batch<Real> rise = load_partial(y + i + 1, rest, Real(0)) - load_partial(y + i, rest, Real(0));
    store(d + i, rise * load(r + i));
  });
}

// A bound of what rounding of points, values and operations can have done to a divided difference d; points
// and values are sums of their sizes at the two ends of the cell.
template <class Real>
[[gnu::always_inline]] inline batch<Real> rounding(const batch<Real>& points, const batch<Real>& values,
                                                   const batch<Real>& r, const batch<Real>& d) {
  constexpr Real roundings = 4 * std::numeric_limits<Real>::epsilon();
  return (xsimd::abs(d) * (Real(1) + points * r) + values * r) * batch<Real>(roundings);
}

template <class Real>
[[gnu::always_inline]] inline batch<Real> sizes(const Real* ends, int rest = lanes<Real>) {
  return xsimd::abs(load_partial(ends, rest, Real(0))) + xsimd::abs(load_partial(ends + 1, rest, Real(0)));
}

template <class Real>
void noise(const Real* x, const Real* y, const Real* r, const Real* d, int count, Real* bounds) {
  walk<Real>(count, [&](int i, int rest) {
    const batch<Real> points = x == nullptr ? batch<Real>(0) : sizes(x + i, rest);
    store(bounds + i, rounding(points, sizes(y + i, rest), load(r + i), load(d + i)));
  });
}

// Rules that take differences as they are.
struct exact_differences {
  static constexpr bool needs_noise = false;
};

// The slope of the parabola through a point and its neighbours.
struct bessel_rule : exact_differences {
  template <class Real>
  [[gnu::always_inline]] static batch<Real> slope(const Real* h, const Real* d, const Real* /*noise*/) {
    const batch<Real> h0 = load(h - 1), h1 = load(h);
    return (h1 * load(d - 1) + h0 * load(d)) / (h0 + h1);
  }
};

struct hyman_rule : exact_differences {
  template <class Real>
  [[gnu::always_inline]] static batch<Real> slope(const Real* h, const Real* d, const Real* /*noise*/) {
    const batch<Real> d0 = load(d - 1), d1 = load(d), b = bessel_rule::slope(h, d, d);
    const batch<Real> zero(0), steepest = Real(3) * xsimd::min(xsimd::abs(d0), xsimd::abs(d1));
    const batch<Real> filtered = xsimd::copysign(xsimd::min(steepest, xsimd::abs(b)), b);
    // By signs: the product of two small differences is 0.
    const auto turns = ((d0 <= zero) & (d1 >= zero)) | ((d0 >= zero) & (d1 <= zero));
    return xsimd::select(turns, zero, filtered);
  }
};

struct akima_rule : exact_differences {
  template <class Real>
  [[gnu::always_inline]] static batch<Real> slope(const Real* /*h*/, const Real* d, const Real* /*noise*/) {
    const batch<Real> d0 = load(d - 1), d1 = load(d);
    const batch<Real> w1 = xsimd::abs(load(d + 1) - d1), w2 = xsimd::abs(d0 - load(d - 2));
    const batch<Real> w = w1 + w2, mean = (d0 + d1) * batch<Real>(0.5);
    const auto flat = w < batch<Real>(akima_flat<Real>);
    return xsimd::select(flat, mean, (w1 * d0 + w2 * d1) / xsimd::select(flat, batch<Real>(1), w));
  }
};

// The same at any scale: weights count as none within what rounding may have made of them, and the mean is
// formed without products that could overflow.
struct akima_by_noise_rule {
  static constexpr bool needs_noise = true;
  template <class Real>
  [[gnu::always_inline]] static batch<Real> slope(const Real* /*h*/, const Real* d, const Real* noise) {
    const batch<Real> d0 = load(d - 1), d1 = load(d);
    const batch<Real> w1 = xsimd::abs(load(d + 1) - d1), w2 = xsimd::abs(d0 - load(d - 2)), w = w1 + w2;
    const batch<Real> bound = (load(noise - 2) + load(noise - 1)) + (load(noise) + load(noise + 1));
    const batch<Real> share =
        xsimd::select(w <= bound, batch<Real>(0.5), w1 / xsimd::select(w <= bound, batch<Real>(1), w));
    return share * d0 + (Real(1) - share) * d1;
  }
};

template <class Real, class Rule>
void knots(const Real* h, const Real* d, const Real* noise, int count, Real* s) {
  walk<Real>(count, [&](int i, int) { store(s + i, Rule::slope(h + i, d + i, noise + i)); });
}

template <class Real>
[[gnu::always_inline]] inline void cell(const batch<Real>& y, const Real* s, const Real* d, const Real* r,
                                        batch<Real> (&power)[4]) {
  cubic_cell(y, load(s), load(s + 1), load(d), load(r), power);
}

// All stages in one loop, so that divisions, shuffles and stores overlap. A rule loads neighbours that two
// different stores wrote; the lag between the stages lets both reach the cache first, since such a load
// cannot take its value from the stores in flight.
template <class Real, class Rule, bool WithWidths>
void together(const strip_stages<Real>& stages, int count) {
  // Copies: for all that the compiler knows, stores could change what the reference refers to.
  const auto [x, y, y_last, ahead, middle, last, c, past_caches] = stages;
  for (int i = 0; i < count; i += lanes<Real>) {
    batch<Real> r;
    if constexpr (WithWidths) {
      const batch<Real> h = load(x + i + 1) - load(x + i);
      r = Real(1) / h;
      store(ahead.h + i, h);
      store(ahead.r + i, r);
    } else {
      r = load(ahead.r + i);
    }
    const batch<Real> d = (load(y + i + 1) - load(y + i)) * r;
    store(ahead.d + i, d);
    if constexpr (Rule::needs_noise) {
      const batch<Real> points = x == nullptr ? batch<Real>(0) : sizes(x + i);
      store(ahead.noise + i, rounding(points, sizes(y + i), r, d));
    }
    store(middle.s + i, Rule::slope(middle.h + i, middle.d + i, middle.noise + i));
    batch<Real> power[4];
    cell(load(y_last + i), last.s + i, last.d + i, last.r + i, power);
    put_columns(c + 4 * i, power, past_caches);
  }
}

template <class Real>
void cells(const Real* y, const Real* s, const Real* d, const Real* r, int count, bool past_caches, Real* c) {
  constexpr int width = lanes<Real>;
  batch<Real> power[4];
  int i = 0;
  for (; i <= count - width; i += width) {
    cell(load(y + i), s + i, d + i, r + i, power);
    put_columns(c + 4 * i, power, past_caches);
  }
  if (i == count) return;
  Real last[4 * width];
  cell(load_partial(y + i, count - i, Real(0)), s + i, d + i, r + i, power);
  store_columns<4>(last, 4, power);
  std::copy_n(last, 4 * (count - i), c + 4 * i);
}

void settle() { streaming_done(); }

template <class Real, class Rule>
constexpr slope_kernels<Real> kernels_of = {Rule::needs_noise ? noise<Real> : nullptr,
                                            knots<Real, Rule>,
                                            {together<Real, Rule, false>, together<Real, Rule, true>}};

template <class Real>
constexpr local_cubic_kernels<Real> all_kernels = {widths<Real>,
                                                   slopes<Real>,
                                                   kernels_of<Real, bessel_rule>,
                                                   kernels_of<Real, hyman_rule>,
                                                   kernels_of<Real, akima_rule>,
                                                   kernels_of<Real, akima_by_noise_rule>,
                                                   cells<Real>,
                                                   settle};

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(local_cubic_doubles) = {all_kernels<double>};
TMK_DEFINE_TIER_KERNELS(local_cubic_singles) = {all_kernels<float>};

}  // namespace tmk::fitting
