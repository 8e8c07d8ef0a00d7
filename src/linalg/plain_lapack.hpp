// SPDX-License-Identifier: Apache-2.0
// Factors, inverses and eigenvalues in plain loops, for a BLAS that comes without LAPACK. Arguments and info
// as in LAPACK; work arrays are not used. info is positive when there is no memory for a copy.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

#include "platform/scratch.hpp"

namespace tmk::plain {

// The lower triangle of a matrix by columns, or the transpose of its upper one: both are read as lower.
template <class Real>
class triangle {
 public:
  triangle(const char* uplo, Real* a, const int* ld)
      : a_(a),
        row_(*uplo == 'L' || *uplo == 'l' ? 1 : *ld),
        column_(*uplo == 'L' || *uplo == 'l' ? *ld : 1) {}
  Real& operator()(ptrdiff_t i, ptrdiff_t j) const { return a_[i * row_ + j * column_]; }

 private:
  Real* a_;
  ptrdiff_t row_, column_;
};

// Cholesky's factor: A = L L'.
template <class Real>
void potrf(const char* uplo, const int* n, Real* a, const int* lda, int* info) {
  const triangle<Real> l(uplo, a, lda);
  *info = 0;
  for (ptrdiff_t j = 0; j < *n; ++j) {
    Real pivot = l(j, j);
    for (ptrdiff_t k = 0; k < j; ++k) pivot -= l(j, k) * l(j, k);
    l(j, j) = pivot;
    if (!(pivot > 0)) return void(*info = static_cast<int>(j) + 1);
    const Real root = std::sqrt(pivot);
    l(j, j) = root;
    for (ptrdiff_t i = j + 1; i < *n; ++i) {
      Real sum = l(i, j);
      for (ptrdiff_t k = 0; k < j; ++k) sum -= l(i, k) * l(j, k);
      l(i, j) = sum / root;
    }
  }
}

// The inverse of a triangle, in its place.
template <class Real>
void trtri(const char* uplo, const char* diag, const int* n, Real* a, const int* lda, int* info) {
  const triangle<Real> l(uplo, a, lda);
  const bool unit = *diag == 'U' || *diag == 'u';
  *info = 0;
  for (ptrdiff_t j = 0; j < *n && !unit; ++j)
    if (l(j, j) == 0) return void(*info = static_cast<int>(j) + 1);
  // Row by row: row i of the inverse needs the rows above it, which are inverted already.
  for (ptrdiff_t i = 0; i < *n; ++i) {
    const Real pivot = unit ? Real{1} : 1 / l(i, i);
    for (ptrdiff_t j = 0; j < i; ++j) {
      Real sum = unit ? l(i, j) : l(i, j) * l(j, j);
      for (ptrdiff_t k = j + 1; k < i; ++k) sum += l(i, k) * l(k, j);
      l(i, j) = -pivot * sum;
    }
    if (!unit) l(i, i) = pivot;
  }
}

// The inverse of A from its factor: inv(L)' inv(L).
template <class Real>
void potri(const char* uplo, const int* n, Real* a, const int* lda, int* info) {
  trtri(uplo, "N", n, a, lda, info);
  if (*info != 0) return;
  const triangle<Real> l(uplo, a, lda);
  for (ptrdiff_t j = 0; j < *n; ++j)
    for (ptrdiff_t i = j; i < *n; ++i) {
      Real sum = 0;
      for (ptrdiff_t k = i; k < *n; ++k) sum += l(k, i) * l(k, j);
      l(i, j) = sum;  // rows below i still hold the factor's inverse, and column j is not needed again
    }
}

// Jacobi's method by rows, cyclic: rotations that annul one element at a time, until all are next to nothing.
// `a` is the whole symmetric matrix; columns of `vectors` are rotated along where it is not null.
template <class Real>
void jacobi(ptrdiff_t n, double* a, double* vectors) {
  constexpr int most_sweeps = 60;
  const auto rotate = [n](double* x, ptrdiff_t p, ptrdiff_t q, ptrdiff_t step, double c, double s) {
    for (ptrdiff_t k = 0; k < n; ++k) {
      double &u = x[p + k * step], &v = x[q + k * step];
      const double was = u;
      u = c * was - s * v;
      v = s * was + c * v;
    }
  };
  for (int sweep = 0; sweep < most_sweeps; ++sweep) {
    bool rotated = false;
    for (ptrdiff_t p = 0; p < n; ++p)
      for (ptrdiff_t q = p + 1; q < n; ++q) {
        const double off = a[p + q * n], ap = a[p + p * n], aq = a[q + q * n];
        if (std::abs(off) <= std::numeric_limits<double>::epsilon() / 8 * std::sqrt(std::abs(ap)) *
                                 std::sqrt(std::abs(aq)) ||
            !(std::abs(off) > std::numeric_limits<double>::min()))
          continue;
        rotated = true;
        const double theta = (aq - ap) / (2 * off);
        const double t = (theta < 0 ? -1 : 1) / (std::abs(theta) + std::hypot(1, theta));
        const double c = 1 / std::sqrt(1 + t * t), s = t * c;
        rotate(a, p, q, n, c, s);
        rotate(a, p * n, q * n, 1, c, s);
        a[p + q * n] = a[q + p * n] = 0;
        if (vectors != nullptr) rotate(vectors, p * n, q * n, 1, c, s);
      }
    if (!rotated) return;
  }
}

// Eigenvalues in ascending order; element(i, j), j <= i, is the matrix. vectors(i, k, value) takes component
// i of eigenvector k where they are requested.
template <class Real, class Element, class Vectors>
int eigen(ptrdiff_t n, Element element, Real* w, bool with_vectors, Vectors vectors) {
  const auto size = static_cast<size_t>(n * n);
  const scratch<double> memory(2 * size + 1);
  const scratch<ptrdiff_t> order(static_cast<size_t>(n) + 1);
  if (!memory || !order) return 1;
  double *const a = memory.get(), *const v = a + size;
  for (ptrdiff_t j = 0; j < n; ++j)
    for (ptrdiff_t i = 0; i < n; ++i) {
      a[i + j * n] = static_cast<double>(i < j ? element(j, i) : element(i, j));
      v[i + j * n] = i == j ? 1 : 0;
    }
  for (ptrdiff_t i = 0; i < n * n; ++i)
    if (!std::isfinite(a[i])) return 1;
  jacobi<Real>(n, a, with_vectors ? v : nullptr);
  ptrdiff_t* const by_value = order.get();
  std::iota(by_value, by_value + n, ptrdiff_t{0});
  std::sort(by_value, by_value + n, [&](ptrdiff_t x, ptrdiff_t y) { return a[x + x * n] < a[y + y * n]; });
  for (ptrdiff_t k = 0; k < n; ++k) {
    w[k] = static_cast<Real>(a[by_value[k] * (n + 1)]);
    for (ptrdiff_t i = 0; i < n && with_vectors; ++i)
      vectors(i, k, static_cast<Real>(v[i + by_value[k] * n]));
  }
  return 0;
}

template <class Real>
void syev(const char* jobz, const char* uplo, const int* n, Real* a, const int* lda, Real* w, Real*,
          const int*, int* info) {
  const triangle<Real> l(uplo, a, lda);
  const ptrdiff_t ld = *lda;
  *info = eigen(
      *n, [&](ptrdiff_t i, ptrdiff_t j) { return l(i, j); }, w, *jobz == 'V' || *jobz == 'v',
      [&](ptrdiff_t i, ptrdiff_t k, Real value) { a[i + k * ld] = value; });
}

template <class Real>
void spevd(const char* jobz, const char* uplo, const int* n, Real* ap, Real* w, Real* z, const int* ldz,
           Real*, const int*, int*, const int*, int* info) {
  const ptrdiff_t size = *n, ld = *ldz;
  const bool lower = *uplo == 'L' || *uplo == 'l';
  *info = eigen(
      size,
      [&](ptrdiff_t i, ptrdiff_t j) {
        return lower ? ap[i + j * (2 * size - j - 1) / 2] : ap[j + i * (i + 1) / 2];
      },
      w, *jobz == 'V' || *jobz == 'v', [&](ptrdiff_t i, ptrdiff_t k, Real value) { z[i + k * ld] = value; });
}

}  // namespace tmk::plain
