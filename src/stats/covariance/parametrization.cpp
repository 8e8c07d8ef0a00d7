// SPDX-License-Identifier: Apache-2.0
// A matrix of unit diagonal made a correlation matrix: its negative eigenvalues become 0, and rows and
// columns of what they rebuild are scaled to a unit diagonal again (Rebonato and Jaeckel, The most general
// methodology to create a valid correlation matrix, 1999). A matrix without negative eigenvalues stays as it
// is.
#include <cmath>

#include "linalg/blas.hpp"
#include "platform/checks.hpp"
#include "stats/moments/pack.hpp"

namespace tmk::stats {
namespace {

template <class Real>
int32_t check(const task<Real>& t, uint32_t method) {
  const auto unknown = [&](const void* storage) {
    if (storage == nullptr) return false;
    const int64_t code = t.integer(storage);
    return code != VTS_SS_FULL && code != VTS_SS_LOWER && code != VTS_SS_UPPER;
  };
  const auto is_full = [&](const void* storage) {
    return storage != nullptr && t.integer(storage) == VTS_SS_FULL;
  };
  return first_status({
      {t.p() < 1, VTS_STATUS_SS_BAD_DIMENSION},
      {t.cor == nullptr, VTS_STATUS_SS_COR_NULL},
      {t.corStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {unknown(t.corStorage), VTS_STATUS_SS_BAD_STORAGE},
      {t.corParamOut == nullptr, VTS_STATUS_SS_COR_PARAM_NULL},
      {t.corParamStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {t.cor == t.corParamOut && is_full(t.corParamStorage) && !is_full(t.corStorage),
       VTS_STATUS_SS_BAD_STORAGE},
      {unknown(t.corParamStorage), VTS_STATUS_SS_BAD_STORAGE},
      {(method & VTS_SS_METHOD_SPECTRAL) == 0, VTS_STATUS_SS_BAD_METHOD},
  });
}

// Of eigenvectors in the columns of v and ascending eigenvalues w: r = D v w+ v' D in the lower triangle by
// rows, D such that the diagonal is 1. `v` is changed. 0, or a status where a variable has nothing left to
// scale.
template <class Real>
int32_t rebuild(int p, const Real* w, Real* v, Real* r) {
  for (ptrdiff_t i = 0; i < p; ++i) {
    Real sum = 0;
    for (ptrdiff_t k = 0; k < p; ++k) {
      Real& element = v[i + k * p];
      element = w[k] > 0 ? element * std::sqrt(w[k]) : Real{0};
      sum += element * element;
    }
    if (!(sum > 0)) return VTS_STATUS_SS_COR_PARAM_FAILED;
    const Real scale = 1 / std::sqrt(sum);
    for (ptrdiff_t k = 0; k < p; ++k) v[i + k * p] *= scale;
  }
  const Real one = 1, zero = 0;
  linalg::serial<Real>::syrk("U", "N", &p, &p, &one, v, &p, &zero, r, &p);
  for (ptrdiff_t i = 0; i < p; ++i) r[i * (p + 1)] = 1;
  return 0;
}

template <class Real, int Storage>
void finish(ptrdiff_t p, const Real* full, Real* r) {
  pack(
      p, Storage, r, [](ptrdiff_t) { return true; },
      [&](ptrdiff_t i, ptrdiff_t j) { return full[i * p + j]; });
}
template <class Real>
constexpr auto* _vSSFinishMtxParametrzSDFull = finish<Real, VTS_SS_FULL>;
template <class Real>
constexpr auto* _vSSFinishMtxParametrzSDLPacked = finish<Real, VTS_SS_LOWER>;
template <class Real>
constexpr auto* _vSSFinishMtxParametrzSDUPacked = finish<Real, VTS_SS_UPPER>;

template <class Real>
int32_t parametrize(SSTask* handle, uint32_t method) {
  const auto& t = task<Real>::of(handle);
  if (const int32_t status = check(t, method); status != 0) return status;
  const auto p = static_cast<int>(t.p());
  const ptrdiff_t size = p, work_size = 50 * size;
  const scratch<Real> memory(static_cast<size_t>(2 * size * size + size + work_size));
  if (!memory) return VTS_STATUS_SS_MEMORY;
  Real *const full = memory.get(), *const vectors = full + size * size, *const values = vectors + size * size;
  expand(size, static_cast<int>(t.integer(t.corStorage)), t.cor, full);
  for (ptrdiff_t i = 0; i < size; ++i) full[i * (size + 1)] = 1;

  // The lower triangle by rows is the upper one by columns.
  std::copy_n(full, size * size, vectors);
  int info = 0;
  const int lwork = static_cast<int>(work_size);
  linalg::serial<Real>::syev("V", "U", &p, vectors, &p, values, values + size, &lwork, &info);
  if (info != 0) return VTS_STATUS_SS_COR_EIGEN_FAILED;
  if (!(values[0] >= 0))
    if (const int32_t status = rebuild(p, values, vectors, full); status != 0) return status;

  constexpr void (*finishers[])(ptrdiff_t, const Real*, Real*) = {_vSSFinishMtxParametrzSDFull<Real>,
                                                                  _vSSFinishMtxParametrzSDLPacked<Real>,
                                                                  _vSSFinishMtxParametrzSDUPacked<Real>};
  finishers[t.integer(t.corParamStorage)](size, full, t.corParamOut);
  return 0;
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSCorParametrization(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                                  const ThreadingService*) {
  return tmk::stats::parametrize<double>(task, methodLow);
}
int32_t _vtssSSCorParametrization(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                                  const ThreadingService*) {
  return tmk::stats::parametrize<float>(task, methodLow);
}
