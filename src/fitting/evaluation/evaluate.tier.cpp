// SPDX-License-Identifier: Apache-2.0
// Polynomials of many sites: the coefficient row of each lane is loaded and transposed, then Horner's rule.
//   s(t) = c0 + c1 d + c2 d^2 + c3 d^3,   d = t - base
#include <algorithm>
#include <bit>
#include <utility>

#include "fitting/evaluation/evaluation_kernels.hpp"
#include "simd/integer.hpp"
#include "simd/rows.hpp"

namespace tmk::fitting {
inline namespace TMK_TIER {
namespace {

// The factor of c[power] in the derivative of this order.
constexpr int falling_factorial(int power, int derivative) {
  return derivative == 0 ? 1 : power * falling_factorial(power - 1, derivative - 1);
}

template <int Derivative, class Real, size_t Order>
[[gnu::always_inline]] inline batch<Real> horner(const batch<Real> (&c)[Order], const batch<Real>& d) {
  constexpr int degree = static_cast<int>(Order) - 1;
  const auto term = [&](int power) {
    return Derivative == 0 ? c[power] : c[power] * batch<Real>(Real(falling_factorial(power, Derivative)));
  };
  batch<Real> sum = term(degree);
#pragma GCC unroll 4
  for (int power = degree - 1; power >= Derivative; --power) sum = xsimd::fma(sum, d, term(power));
  return sum;
}

template <class Real, int Order, unsigned Derivatives>
void evaluate(const Real* rows, const int32_t* pieces, const Real* distances, int count, Real* out,
              ptrdiff_t site_stride, ptrdiff_t column_stride) {
  constexpr int columns = std::popcount(Derivatives), width = lanes<Real>;
  for (int i = 0; i < count; i += width) {
    batch<Real> c[Order], column[columns];
    load_columns(rows, pieces + i, c);
    const batch<Real> d = load(distances + i);
    int k = 0;
    if constexpr ((Derivatives & 1) != 0) column[k++] = horner<0>(c, d);
    if constexpr ((Derivatives & 2) != 0) column[k++] = horner<1>(c, d);
    if constexpr ((Derivatives & 4) != 0) column[k++] = horner<2>(c, d);
    if constexpr ((Derivatives & 8) != 0) column[k++] = horner<3>(c, d);
    const bool whole = count - i >= width;
    if (whole && site_stride == 1) {
      for (k = 0; k < columns; ++k) store(out + i + k * column_stride, column[k]);
      continue;
    }
    if constexpr (columns > 1) {
      if (whole) {
        store_columns(out + i * site_stride, site_stride, column);
        continue;
      }
    }
    for (k = 0; k < columns; ++k) {
      alignas(64) Real lane[width];
      column[k].store_aligned(lane);
      for (int j = 0; j < std::min(width, count - i); ++j)
        out[(i + j) * site_stride + k * column_stride] = lane[j];
    }
  }
}

// Pieces past the last cell are 0: registers that are not full read coefficients there.
inline void pieces_of_cells(const int32_t* cells, int count, int32_t last, int32_t* pieces) {
  constexpr int widest = 16;
  int i = 0;
  for (; i + lanes<int32_t> <= count; i += lanes<int32_t>)
    store(pieces + i, xsimd::max(xsimd::min(load(cells + i) - 1, i32(last)), i32(0)));
  for (; i < count; ++i) pieces[i] = std::clamp(cells[i] - 1, 0, last);
  for (; i % widest != 0; ++i) pieces[i] = 0;
}

template <class Real, class Base>
void locate(const Real* sites, const int32_t* cells, int count, int32_t last, int32_t* pieces,
            Real* distances, const Base& base) {
  pieces_of_cells(cells, count, last, pieces);
  int i = 0;
  for (; i + lanes<Real> <= count; i += lanes<Real>) store(distances + i, load(sites + i) - base(pieces + i));
  if (i < count) store(distances + i, load_partial(sites + i, count - i, Real(0)) - base(pieces + i));
}

template <class Real>
void locate_given(const Real* sites, const int32_t* cells, int count, int32_t last, const Real* x,
                  int32_t* pieces, Real* distances) {
  locate(sites, cells, count, last, pieces, distances,
         [&](const int32_t* piece) { return load_at(x, piece); });
}

template <class Real>
void locate_uniform(const Real* sites, const int32_t* cells, int count, int32_t last, Real first, Real step,
                    int32_t* pieces, Real* distances) {
  locate(sites, cells, count, last, pieces, distances, [&](const int32_t* piece) {
    return xsimd::fma(load_as<Real>(piece), batch<Real>(step), batch<Real>(first));
  });
}

// `Columns` columns together, register by register, and the sites that fill none one by one.
template <int Columns, class Real>
void columns_as_rows(const Real* column, ptrdiff_t pitch, int count, Real* out, ptrdiff_t stride) {
  int i = 0;
  if constexpr (Columns > 1) {
    for (; i + lanes<Real> <= count; i += lanes<Real>) {
      batch<Real> c[Columns];
      for (int k = 0; k < Columns; ++k) c[k] = load(column + k * pitch + i);
      store_columns(out + i * stride, stride, c);
    }
  }
  for (; i < count; ++i)
    for (int k = 0; k < Columns; ++k) out[i * stride + k] = column[k * pitch + i];
}

template <class Real>
void as_rows(const Real* column, ptrdiff_t pitch, int columns, int count, Real* out, ptrdiff_t stride) {
  for (; columns >= 4; columns -= 4, column += 4 * pitch, out += 4)
    columns_as_rows<4>(column, pitch, count, out, stride);
  if (columns == 3) columns_as_rows<3>(column, pitch, count, out, stride);
  if (columns == 2) columns_as_rows<2>(column, pitch, count, out, stride);
  if (columns == 1) columns_as_rows<1>(column, pitch, count, out, stride);
}

// Derivatives from the order on are zero: their slots are empty.
template <class Real, int Order, unsigned Derivatives>
constexpr polynomial_kernel<Real>* polynomial() {
  if constexpr (Derivatives == 0 || Derivatives >= 1u << Order)
    return nullptr;
  else
    return evaluate<Real, Order, Derivatives>;
}

template <class Real, unsigned... Set>
constexpr evaluation_kernels<Real> table(std::integer_sequence<unsigned, Set...>) {
  return {{{polynomial<Real, 2, Set>()...}, {polynomial<Real, 3, Set>()...}, {polynomial<Real, 4, Set>()...}},
          locate_given<Real>,
          locate_uniform<Real>,
          as_rows<Real>};
}

}  // namespace
}  // namespace TMK_TIER

TMK_DEFINE_TIER_KERNELS(evaluation_doubles) = {table<double>(std::make_integer_sequence<unsigned, 16>())};
TMK_DEFINE_TIER_KERNELS(evaluation_singles) = {table<float>(std::make_integer_sequence<unsigned, 16>())};

}  // namespace tmk::fitting
