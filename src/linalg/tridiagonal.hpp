// SPDX-License-Identifier: Apache-2.0
// Tridiagonal systems T x = b without pivoting, for diagonally dominant T: order n, sub-diagonal dl (n - 1),
// diagonal d (n), super-diagonal du (n - 1 elements).
//
// Factors replace the matrix, scaled such that both sweeps are one multiply-add a row:
//   p[0] = d[0], p[i] = d[i] - dl[i-1] du[i-1] / p[i-1]
//   d[i] = 1 / p[i], dl[i-1] = dl[i-1] / p[i], du[i] = du[i] / p[i]
//   z[i] = b[i] d[i] - dl[i-1] z[i-1],  x[i] = z[i] - du[i] x[i+1]
// A sweep waits for one row before it begins the next; four columns at a time fill the waits.
#pragma once

#include <cstddef>

extern "C" {
// info is 0, or the number of the row, counted from 1, whose pivot is zero. trans is 'N'. B holds nrhs
// columns of ldb elements. ddtsvb factors and solves.
#define TMK_TRIDIAGONAL(letter, Real)                                                                       \
  void letter##dttrfb_4dfl(const int* n, Real* dl, Real* d, Real* du, int* info);                           \
  void letter##dttrsb_4dfl(const char* trans, const int* n, const int* nrhs, const Real* dl, const Real* d, \
                           const Real* du, Real* b, const int* ldb, int* info);                             \
  void letter##dtsvb_4dfl(const int* n, const int* nrhs, Real* dl, Real* d, Real* du, Real* b,              \
                          const int* ldb, int* info);
TMK_TRIDIAGONAL(d, double)
TMK_TRIDIAGONAL(s, float)
#undef TMK_TRIDIAGONAL
}

namespace tmk::linalg {

template <class Real>
struct tridiagonals {
  ptrdiff_t n;
  Real *dl, *d, *du;
};

// 0, or the first row, counted from 1, whose pivot is zero.
template <class Real>
ptrdiff_t factor(const tridiagonals<Real>& t);

// Solves by factors for `columns` right sides, ldb elements apart.
template <class Real>
void solve(const tridiagonals<const Real>& t, Real* b, ptrdiff_t ldb, ptrdiff_t columns);

}  // namespace tmk::linalg
