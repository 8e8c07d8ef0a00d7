// SPDX-License-Identifier: Apache-2.0
#include "stats/moments/pack.hpp"

#include <cmath>

#include "tmk/abi/vtm.h"

namespace tmk::stats {
namespace {

// The variables that the task selects.
template <class Real>
auto selected_in(const task<Real>& task) {
  return [&task](ptrdiff_t j) { return task.selects(j); };
}

// With subnormals kept whatever the thread's mode.
template <class Real>
void inverse_square_roots(ptrdiff_t n, const Real* a, Real* r) {
  const auto& record = sizeof(Real) == 8 ? tmk_vtm_kernel_dInvSqrt_ttab : tmk_vtm_kernel_sInvSqrt_ttab;
  const uint32_t mode = tmk_vtm_kernel_SetMode(VTM_DENORMALS_KEPT);
  reinterpret_cast<void (*)(int32_t, const Real*, Real*)>(record.kernel[TMK_SLOT_LA])(static_cast<int32_t>(n),
                                                                                      a, r);
  tmk_vtm_kernel_SetMode(mode);
}

template <class Real>
int32_t pack_cor(const task<Real>& task, ptrdiff_t p, Real factor, const Real* cross) {
  const scratch<Real> memory(2 * static_cast<size_t>(p));
  if (!memory) return VTS_STATUS_SS_MEMORY;
  Real *const diagonal = memory.get(), *const r = diagonal + p;
  for (ptrdiff_t i = 0; i < p; ++i) diagonal[i] = cross[i * p + i];
  inverse_square_roots(p, diagonal, r);
  pack(p, matrix_storage(task, task.corStorage), task.cor, selected_in(task), [&](ptrdiff_t i, ptrdiff_t j) {
    return i == j ? factor * diagonal[i] : cross[i * p + j] * r[i] * r[j];
  });
  return 0;
}

}  // namespace

template <class Real>
int matrix_storage(const task<Real>& task, const void* code) {
  const int64_t bits = code == nullptr ? int64_t{VTS_SS_FULL} : task.integer(code);
  if ((bits & VTS_SS_UPPER) != 0) return VTS_SS_UPPER;
  return (bits & VTS_SS_LOWER) != 0 ? VTS_SS_LOWER : VTS_SS_FULL;
}

template <class Real>
void expand(ptrdiff_t p, int storage, const Real* packed, Real* full) {
  for (ptrdiff_t i = 0; i < p; ++i)
    for (ptrdiff_t j = 0; j <= i; ++j) full[i * p + j] = packed[position(storage, p, i, j)];
}

template <class Real>
void expand_cov(ptrdiff_t p, int storage, const Real* packed, weight_pair<Real> w, Real* cross) {
  expand(p, storage, packed, cross);
  const Real factor = w.w - w.w2 / w.w;
  for (ptrdiff_t i = 0; i < p; ++i)
    for (ptrdiff_t j = 0; j <= i; ++j) cross[i * p + j] *= factor;
}

template <class Real>
void expand_cor(ptrdiff_t p, int storage, const Real* packed, weight_pair<Real> w, Real* cross) {
  expand(p, storage, packed, cross);
  const Real factor = w.w - w.w2 / w.w;
  for (ptrdiff_t i = 0; i < p; ++i) cross[i * p + i] *= factor;
  for (ptrdiff_t i = 0; i < p; ++i)
    for (ptrdiff_t j = 0; j < i; ++j)
      cross[i * p + j] *= std::sqrt(cross[i * p + i]) * std::sqrt(cross[j * p + j]);
}

template <class Real>
int32_t write_matrices(const task<Real>& task, const demand& asked, ptrdiff_t p, weight_pair<Real> w,
                       const Real* cross) {
  const Real factor = w.variance_factor();
  if (asked.wants(correlation_estimate))
    if (const int32_t status = pack_cor(task, p, factor, cross); status != 0) return status;
  if (asked.wants(covariance_estimate))
    pack(p, matrix_storage(task, task.covStorage), task.cov, selected_in(task),
         [&](ptrdiff_t i, ptrdiff_t j) { return factor * cross[i * p + j]; });
  // Last, since the working matrix may be the caller's.
  if (asked.wants(cross_estimate))
    pack(p, matrix_storage(task, task.crossStorage), task.cross, selected_in(task),
         [&](ptrdiff_t i, ptrdiff_t j) { return cross[i * p + j]; });
  return 0;
}

#define TMK_INSTANTIATE(Real)                                                                     \
  template int matrix_storage(const task<Real>&, const void*);                                    \
  template void expand(ptrdiff_t, int, const Real*, Real*);                                       \
  template void expand_cov(ptrdiff_t, int, const Real*, weight_pair<Real>, Real*);                \
  template void expand_cor(ptrdiff_t, int, const Real*, weight_pair<Real>, Real*);                \
  template int32_t write_matrices(const task<Real>&, const demand&, ptrdiff_t, weight_pair<Real>, \
                                  const Real*);
TMK_INSTANTIATE(double)
TMK_INSTANTIATE(float)
#undef TMK_INSTANTIATE

}  // namespace tmk::stats
