// SPDX-License-Identifier: Apache-2.0
#include "linalg/tridiagonal.hpp"

namespace tmk::linalg {

namespace {

constexpr int at_once = 4;

template <class Real, int Count>
void solve_some(const tridiagonals<const Real>& t, Real* b, ptrdiff_t ldb) {
  Real x[Count];
#pragma GCC unroll 4
  for (int k = 0; k < Count; ++k) x[k] = b[k * ldb] *= t.d[0];
  for (ptrdiff_t i = 1; i < t.n; ++i)
#pragma GCC unroll 4
    for (int k = 0; k < Count; ++k) x[k] = b[i + k * ldb] = b[i + k * ldb] * t.d[i] - t.dl[i - 1] * x[k];
  for (ptrdiff_t i = t.n - 1; i-- > 0;)
#pragma GCC unroll 4
    for (int k = 0; k < Count; ++k) x[k] = b[i + k * ldb] -= t.du[i] * x[k];
}

}  // namespace

template <class Real>
ptrdiff_t factor(const tridiagonals<Real>& t) {
  Real pivot = t.d[0];
  for (ptrdiff_t i = 0;; ++i) {
    if (pivot == 0) return i + 1;
    const Real reciprocal = t.d[i] = 1 / pivot;
    if (i > 0) t.dl[i - 1] *= reciprocal;
    if (i == t.n - 1) return 0;
    t.du[i] *= reciprocal;
    pivot = t.d[i + 1] - t.dl[i] * t.du[i];
  }
}

template <class Real>
void solve(const tridiagonals<const Real>& t, Real* b, ptrdiff_t ldb, ptrdiff_t columns) {
  ptrdiff_t k = 0;
  for (; columns - k >= at_once; k += at_once) solve_some<Real, at_once>(t, b + k * ldb, ldb);
  for (; k < columns; ++k) solve_some<Real, 1>(t, b + k * ldb, ldb);
}

template ptrdiff_t factor(const tridiagonals<double>&);
template ptrdiff_t factor(const tridiagonals<float>&);
template void solve(const tridiagonals<const double>&, double*, ptrdiff_t, ptrdiff_t);
template void solve(const tridiagonals<const float>&, float*, ptrdiff_t, ptrdiff_t);

}  // namespace tmk::linalg

#define TMK_TRIDIAGONAL(letter, Real)                                                                 \
  void letter##dttrfb_4dfl(const int* n, Real* dl, Real* d, Real* du, int* info) {                    \
    *info = static_cast<int>(tmk::linalg::factor<Real>({*n, dl, d, du}));                             \
  }                                                                                                   \
  void letter##dttrsb_4dfl(const char*, const int* n, const int* nrhs, const Real* dl, const Real* d, \
                           const Real* du, Real* b, const int* ldb, int* info) {                      \
    tmk::linalg::solve<Real>({*n, dl, d, du}, b, *ldb, *nrhs);                                        \
    *info = 0;                                                                                        \
  }                                                                                                   \
  void letter##dtsvb_4dfl(const int* n, const int* nrhs, Real* dl, Real* d, Real* du, Real* b,        \
                          const int* ldb, int* info) {                                                \
    letter##dttrfb_4dfl(n, dl, d, du, info);                                                          \
    if (*info == 0) letter##dttrsb_4dfl("N", n, nrhs, dl, d, du, b, ldb, info);                       \
  }
TMK_TRIDIAGONAL(d, double)
TMK_TRIDIAGONAL(s, float)
