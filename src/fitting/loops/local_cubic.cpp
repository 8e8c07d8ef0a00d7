// The loops of local cubics, lanes over cells. Every element is computed alike whatever its lane, and no
// operation is fused, so that neither the cut into blocks nor the tier changes a bit.
#include <algorithm>

#include "fitting/construction/frame.hpp"
#include "fitting/construction/local_cubic_loops.hpp"
#include "platform/simd.hpp"

TMK_TIER_OPEN
namespace {

// Vector by vector; rows of scratch have room for a last one that is not full.
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

// The slope of the parabola through a point and its neighbours.
template <class Real>
batch<Real> parabola(const Real* h, const Real* d) {
  const batch<Real> h0 = load(h - 1), h1 = load(h);
  return (h1 * load(d - 1) + h0 * load(d)) / (h0 + h1);
}

template <class Real>
void bessel(const Real* h, const Real* d, int count, Real* s) {
  walk<Real>(count, [&](int i, int) { store(s + i, parabola(h + i, d + i)); });
}

template <class Real>
void hyman(const Real* h, const Real* d, int count, Real* s) {
  walk<Real>(count, [&](int i, int) {
    const batch<Real> d0 = load(d + i - 1), d1 = load(d + i), b = parabola(h + i, d + i);
    const batch<Real> steepest = Real(3) * xsimd::min(xsimd::abs(d0), xsimd::abs(d1));
    const batch<Real> filtered = xsimd::copysign(xsimd::min(steepest, xsimd::abs(b)), b);
    store(s + i, xsimd::select(d0 * d1 <= batch<Real>(0), batch<Real>(0), filtered));
  });
}

template <class Real>
void akima(const Real*, const Real* d, int count, Real* s) {
  walk<Real>(count, [&](int i, int) {
    const batch<Real> d0 = load(d + i - 1), d1 = load(d + i);
    const batch<Real> w1 = xsimd::abs(load(d + i + 1) - d1), w2 = xsimd::abs(d0 - load(d + i - 2));
    const batch<Real> w = w1 + w2, mean = (d0 + d1) * batch<Real>(0.5);
    const auto flat = w < batch<Real>(akima_flat<Real>);
    store(s + i, xsimd::select(flat, mean, (w1 * d0 + w2 * d1) / xsimd::select(flat, batch<Real>(1), w)));
  });
}

template <class Real>
void cells(const Real* y, const Real* s, const Real* d, const Real* r, int count, bool past_caches, Real* c) {
  constexpr int width = lanes<Real>;
  const auto powers = [&](int i, int rest, auto&& put) {
    const batch<Real> s0 = load(s + i), s1 = load(s + i + 1), slope = load(d + i), reciprocal = load(r + i);
    const batch<Real> value = load_partial(y + i, rest, Real(0));
    batch<Real> power[4];
    fitting::cubic_cell(value, s0, s1, slope, reciprocal, power);
    put(power[0], power[1], power[2], power[3]);
  };
  int i = 0;
  if (past_caches)
    for (; i <= count - width; i += width)
      powers(i, width, [&](auto&&... power) { store_rows<true>(c + 4 * i, power...); });
  for (; i <= count - width; i += width)
    powers(i, width, [&](auto&&... power) { store_rows<false>(c + 4 * i, power...); });
  if (i < count) {
    Real last[4 * width];
    powers(i, count - i, [&](auto&&... power) { store_rows<false>(last, power...); });
    std::copy_n(last, 4 * (count - i), c + 4 * i);
  }
}

void settle() { streaming_done(); }

}  // namespace
TMK_TIER_CLOSE

TMK_DEFINE_LOOPS(local_cubic_doubles) = {{tmk::widths<double>, tmk::slopes<double>, tmk::bessel<double>,
                                          tmk::hyman<double>, tmk::akima<double>, tmk::cells<double>,
                                          tmk::settle}};
TMK_DEFINE_LOOPS(local_cubic_singles) = {{tmk::widths<float>, tmk::slopes<float>, tmk::bessel<float>,
                                          tmk::hyman<float>, tmk::akima<float>, tmk::cells<float>,
                                          tmk::settle}};
