#include "linalg/tridiagonal.hpp"

namespace tmk::linalg {

namespace {

constexpr int at_once = 4;

// Pivots of zero are seen at the end: what they spoil is not used.
template <class Real, int Count>
ptrdiff_t factor_some(const tridiagonals<Real>& t) {
  Real reciprocal[Count], above[Count];
  ptrdiff_t bad = 0;
  const auto row = [&](ptrdiff_t i, int k, Real pivot) {
    if (pivot == 0 && bad == 0) bad = i + 1;
    reciprocal[k] = 1 / pivot;
    t.d[i + k * t.stride] = reciprocal[k];
  };
  for (int k = 0; k < Count; ++k) row(0, k, t.d[k * t.stride]);
  for (ptrdiff_t i = 1; i < t.n; ++i) {
    for (int k = 0; k < Count; ++k) {
      Real& du = t.du[i - 1 + k * t.stride];
      Real& dl = t.dl[i - 1 + k * t.stride];
      above[k] = du *= reciprocal[k];
      row(i, k, t.d[i + k * t.stride] - dl * above[k]);
      dl *= reciprocal[k];
    }
  }
  return bad;
}

template <class Real, int Count>
void solve_some(const tridiagonals<const Real>& t, Real* b, ptrdiff_t ldb) {
  Real x[Count];
  const auto at = [&](const Real* diagonal, ptrdiff_t i, int k) { return diagonal[i + k * t.stride]; };
  for (int k = 0; k < Count; ++k) x[k] = b[k * ldb] *= at(t.d, 0, k);
  for (ptrdiff_t i = 1; i < t.n; ++i)
    for (int k = 0; k < Count; ++k)
      x[k] = b[i + k * ldb] = b[i + k * ldb] * at(t.d, i, k) - at(t.dl, i - 1, k) * x[k];
  for (ptrdiff_t i = t.n - 1; i-- > 0;)
    for (int k = 0; k < Count; ++k) x[k] = b[i + k * ldb] -= at(t.du, i, k) * x[k];
}

template <class Real>
tridiagonals<Real> from(const tridiagonals<Real>& t, ptrdiff_t first) {
  const ptrdiff_t skipped = first * t.stride;
  return {t.n, t.dl + skipped, t.d + skipped, t.du + skipped, t.stride};
}

}  // namespace

template <class Real>
ptrdiff_t factor(const tridiagonals<Real>& t, ptrdiff_t count) {
  ptrdiff_t k = 0;
  for (; count - k >= at_once; k += at_once)
    if (const ptrdiff_t bad = factor_some<Real, at_once>(from(t, k))) return bad;
  for (; k < count; ++k)
    if (const ptrdiff_t bad = factor_some<Real, 1>(from(t, k))) return bad;
  return 0;
}

template <class Real>
void solve(const tridiagonals<const Real>& t, Real* b, ptrdiff_t ldb, ptrdiff_t columns) {
  ptrdiff_t k = 0;
  for (; columns - k >= at_once; k += at_once) solve_some<Real, at_once>(from(t, k), b + k * ldb, ldb);
  for (; k < columns; ++k) solve_some<Real, 1>(from(t, k), b + k * ldb, ldb);
}

template ptrdiff_t factor(const tridiagonals<double>&, ptrdiff_t);
template ptrdiff_t factor(const tridiagonals<float>&, ptrdiff_t);
template void solve(const tridiagonals<const double>&, double*, ptrdiff_t, ptrdiff_t);
template void solve(const tridiagonals<const float>&, float*, ptrdiff_t, ptrdiff_t);

}  // namespace tmk::linalg

#define TMK_TRIDIAGONAL_TWIN(letter, Real)                                                            \
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
TMK_TRIDIAGONAL_TWIN(d, double)
TMK_TRIDIAGONAL_TWIN(s, float)
