// SPDX-License-Identifier: Apache-2.0
// Panels of natural cubics, one to a lane: the recurrences of all panels run down the rows at once.
#include <algorithm>
#include <cstring>

#include "fitting/construction/cubic_cell.hpp"
#include "fitting/construction/natural_kernels.hpp"
#include "simd/rows.hpp"

namespace tmk::fitting {
inline namespace TMK_TIER {
namespace {

// A row of an interleaved array: 64 bytes, in as many registers as the tier needs.
template <class Real>
struct row {
  static constexpr int size = panel_lanes<Real> / lanes<Real>;
  batch<Real> v[size];

  static row at(const Real* p, ptrdiff_t i) {
    row x;
#pragma GCC unroll 4
    for (int k = 0; k < size; ++k) x.v[k] = load(p + i * panel_lanes<Real> + k * lanes<Real>);
    return x;
  }
  void put(Real* p, ptrdiff_t i) const {
#pragma GCC unroll 4
    for (int k = 0; k < size; ++k) store(p + i * panel_lanes<Real> + k * lanes<Real>, v[k]);
  }
};

template <class Real>
void differences(const Real* from, ptrdiff_t rows, Real* to) {
  for (ptrdiff_t i = 0; i < rows * panel_lanes<Real>; i += lanes<Real>)
    store(to + i, load(from + i + panel_lanes<Real>) - load(from + i));
}

template <class Real>
bool factor(const panel_group<Real>& group, const Real* w, ptrdiff_t first, ptrdiff_t end,
            Real* least_width) {
  using values = row<Real>;
  values left = values::at(w, first - 1), above = values::at(group.g, first - 1);
  lane_mask<Real> zero(false);
  batch<Real> least(*least_width);
  for (ptrdiff_t i = first; i < end; ++i) {
    const values right = values::at(w, i);
    values e, r;
#pragma GCC unroll 4
    for (int k = 0; k < values::size; ++k) {
      const batch<Real> sum = left.v[k] + right.v[k];
      const batch<Real> pivot = xsimd::fnma(right.v[k], above.v[k], sum + sum);
      zero = zero | (pivot == batch<Real>(Real(0)));
      const batch<Real> reciprocal = Real(1) / pivot;
      least = xsimd::min(least, right.v[k]);
      e.v[k] = right.v[k] * reciprocal;
      above.v[k] = left.v[k] * reciprocal;
      r.v[k] = Real(1) / right.v[k];
    }
    e.put(group.e, i);
    above.put(group.g, i);
    r.put(group.r, i);
    left = right;
  }
  Real lane[lanes<Real>];
  store(lane, least);
  *least_width = *std::min_element(lane, lane + lanes<Real>);
  return !xsimd::any(zero);
}

template <class Real>
void forward(const panel_group<Real>& group, ptrdiff_t first, ptrdiff_t end) {
  using values = row<Real>;
  const batch<Real> three(Real(3));
  values y = values::at(group.y, first), s = values::at(group.s, first - 1), left;
  const values y0 = values::at(group.y, first - 1), r0 = values::at(group.r, first - 1);
#pragma GCC unroll 4
  for (int k = 0; k < values::size; ++k) left.v[k] = (y.v[k] - y0.v[k]) * r0.v[k];
  for (ptrdiff_t i = first; i < end; ++i) {
    const values next = values::at(group.y, i + 1), r = values::at(group.r, i);
    const values e = values::at(group.e, i), g = values::at(group.g, i);
#pragma GCC unroll 4
    for (int k = 0; k < values::size; ++k) {
      const batch<Real> right = (next.v[k] - y.v[k]) * r.v[k];
      const batch<Real> side = three * xsimd::fma(e.v[k], left.v[k], g.v[k] * right);
      s.v[k] = xsimd::fnma(e.v[k], s.v[k], side);
      left.v[k] = right;
    }
    s.put(group.s, i);
    y = next;
  }
}

template <class Real>
void backward(const panel_group<Real>& group, ptrdiff_t first, ptrdiff_t end) {
  using values = row<Real>;
  values s = values::at(group.s, end);
  for (ptrdiff_t i = end; i-- > first;) {
    const values z = values::at(group.s, i), g = values::at(group.g, i);
#pragma GCC unroll 4
    for (int k = 0; k < values::size; ++k) s.v[k] = xsimd::fnma(g.v[k], s.v[k], z.v[k]);
    s.put(group.s, i);
  }
}

template <class Real>
void cells(const Real* y, const Real* s, const Real* r, ptrdiff_t count, bool past_caches, Real* c) {
  constexpr ptrdiff_t width = lanes<Real>;
  ptrdiff_t i = 0;
  for (; i + width <= count; i += width) {
    const batch<Real> value = load(y + i), rate = load(r + i);
    batch<Real> power[4];
    cubic_cell(value, load(s + i), load(s + i + 1), (load(y + i + 1) - value) * rate, rate, power);
    put_columns(c + 4 * i, power, past_caches);
  }
  for (; i < count; ++i) {
    Real power[4];
    cubic_cell(y[i], s[i], s[i + 1], (y[i + 1] - y[i]) * r[i], r[i], power);
    std::copy_n(power, 4, c + 4 * i);
  }
}

// A square of elements in 16-byte vectors: element k of vector i becomes element i of vector k.
//   doubles  a0 a1  ->  a0 b0     singles  a0 a1 a2 a3      a = a0 b0 a1 b1      a0 b0 c0 d0
//            b0 b1      a1 b1              b0 b1 b2 b3  ->  b = a2 b2 a3 b3  ->  a1 b1 c1 d1
//                                          c0 c1 c2 c3      c = c0 d0 c1 d1      a2 b2 c2 d2
//                                          d0 d1 d2 d3      d = c2 d2 c3 d3      a3 b3 c3 d3
template <class Real>
struct square {
  static constexpr int size = 16 / static_cast<int>(sizeof(Real));
  using vector [[gnu::vector_size(16)]] = Real;
  vector v[size];

  void transpose() {
    if constexpr (size == 2) {
      const vector a = v[0], b = v[1];
      v[0] = __builtin_shufflevector(a, b, 0, 2);
      v[1] = __builtin_shufflevector(a, b, 1, 3);
    } else {
      const vector a = __builtin_shufflevector(v[0], v[1], 0, 4, 1, 5);
      const vector b = __builtin_shufflevector(v[0], v[1], 2, 6, 3, 7);
      const vector c = __builtin_shufflevector(v[2], v[3], 0, 4, 1, 5);
      const vector d = __builtin_shufflevector(v[2], v[3], 2, 6, 3, 7);
      v[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
      v[1] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
      v[2] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
      v[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
    }
  }
};

// Transposes the square whose vector i is at from(i), to the places to(i).
template <class Real, class From, class To>
[[gnu::always_inline]] inline void transpose(From&& from, To&& to) {
  square<Real> x;
  for (int i = 0; i < square<Real>::size; ++i) std::memcpy(&x.v[i], from(i), 16);
  x.transpose();
  for (int i = 0; i < square<Real>::size; ++i) std::memcpy(to(i), &x.v[i], 16);
}

template <class Real>
void interleave(const Real* const* from, ptrdiff_t rows, Real* to) {
  constexpr int size = square<Real>::size, width = panel_lanes<Real>;
  ptrdiff_t i = 0;
  for (; i + size <= rows; i += size, to += size * width)
    for (int k = 0; k < width; k += size)
      transpose<Real>([&](int n) { return from[k + n] + i; }, [&](int n) { return to + n * width + k; });
  for (; i < rows; ++i)
    for (int k = 0; k < width; ++k) *to++ = from[k][i];
}

template <class Real>
void separate(const Real* from, ptrdiff_t rows, Real* const* to) {
  constexpr int size = square<Real>::size, width = panel_lanes<Real>;
  ptrdiff_t i = 0;
  for (; i + size <= rows; i += size, from += size * width)
    for (int k = 0; k < width; k += size)
      transpose<Real>([&](int n) { return from + n * width + k; }, [&](int n) { return to[k + n] + i; });
  for (; i < rows; ++i)
    for (int k = 0; k < width; ++k) to[k][i] = *from++;
}

void settle() { streaming_done(); }

template <class Real>
constexpr natural_kernels<Real> natural_table = {interleave<Real>, separate<Real>, differences<Real>,
                                                 factor<Real>,     forward<Real>,  backward<Real>,
                                                 cells<Real>,      settle};

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(natural_doubles) = {natural_table<double>};
TMK_DEFINE_TIER_KERNELS(natural_singles) = {natural_table<float>};

}  // namespace tmk::fitting
