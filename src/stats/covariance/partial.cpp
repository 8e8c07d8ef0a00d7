// SPDX-License-Identifier: Apache-2.0
// Partial covariance: of the variables of a first set, given those of a second one,
//   S11 - S12 inv(S22) S21.
#include <algorithm>
#include <cmath>

#include "linalg/blas.hpp"
#include "platform/checks.hpp"
#include "stats/moments/pack.hpp"

namespace tmk::stats {
namespace {

// The variables of either set.
struct split {
  int size[2];
  const int32_t* variables[2];
};

template <class Real>
int32_t check(const task<Real>& t, bool with_cov, bool with_cor, uint32_t method) {
  return first_status({
      {t.cov == nullptr && t.cor == nullptr, VTS_STATUS_SS_COV_NULL},
      {t.cov == nullptr && t.corStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {t.cov != nullptr && t.covStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {t.partialIndices == nullptr, VTS_STATUS_SS_PARTIAL_INDICES_NULL},
      {with_cov && t.partialCov == nullptr, VTS_STATUS_SS_PARTIAL_COV_NULL},
      {with_cov && t.partialCovStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {with_cor && t.partialCor == nullptr, VTS_STATUS_SS_PARTIAL_COR_NULL},
      {with_cor && t.partialCorStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {(method & VTS_SS_METHOD_FAST) == 0, VTS_STATUS_SS_BAD_METHOD},
  });
}

// The source as a full covariance matrix, lower triangle.
template <class Real>
void expand_source(const task<Real>& t, ptrdiff_t p, Real* full) {
  if (t.cov != nullptr) return expand(p, matrix_storage(t, t.covStorage), t.cov, full);
  expand(p, matrix_storage(t, t.corStorage), t.cor, full);  // variances on the diagonal
  for (ptrdiff_t i = 0; i < p; ++i)
    for (ptrdiff_t j = 0; j < i; ++j)
      full[i * p + j] *= std::sqrt(full[i * p + i]) * std::sqrt(full[j * p + j]);
}

// Block (a, b) of a symmetric matrix, whose lower triangle is stored by rows, by columns.
template <class Real>
void copy_block(ptrdiff_t p, const Real* full, const split& sets, int a, int b, Real* r) {
  for (ptrdiff_t l = 0; l < sets.size[b]; ++l)
    for (ptrdiff_t k = 0; k < sets.size[a]; ++k) {
      const ptrdiff_t i = sets.variables[a][k], j = sets.variables[b][l];
      r[k + l * sets.size[a]] = full[std::max(i, j) * p + std::min(i, j)];
    }
}

// The blocks of the source, as far as they are needed.
template <class Real>
void _vSSPrtCovDecomposeMatrix(ptrdiff_t p, const Real* full, const split& sets, Real* s11, Real* s12,
                               Real* s22) {
  copy_block(p, full, sets, 0, 0, s11);
  copy_block(p, full, sets, 0, 1, s12);
  copy_block(p, full, sets, 1, 1, s22);
}

// S22 becomes its inverse. 0 or a status.
template <class Real>
int32_t invert(int n, Real* s22) {
  int info = 0;
  linalg::serial<Real>::potrf("L", &n, s22, &n, &info);
  if (info != 0) return VTS_STATUS_SS_PARTIAL_FACTOR_FAILED;
  linalg::serial<Real>::potri("L", &n, s22, &n, &info);
  if (info != 0) return VTS_STATUS_SS_PARTIAL_INVERSE_FAILED;
  for (ptrdiff_t j = 0; j < n; ++j)
    for (ptrdiff_t i = 0; i < j; ++i) s22[i + j * n] = s22[j + i * n];
  return 0;
}

// S11 becomes the partial covariance.
template <class Real>
void reduce(const int* size, const Real* s12, const Real* inverse, Real* product, Real* s11) {
  const Real one = 1, minus_one = -1, zero = 0;
  linalg::serial<Real>::gemm("N", "N", &size[0], &size[1], &size[1], &one, s12, &size[0], inverse, &size[1],
                             &zero, product, &size[0]);
  linalg::serial<Real>::gemm("N", "T", &size[0], &size[0], &size[1], &minus_one, product, &size[0], s12,
                             &size[0], &one, s11, &size[0]);
}

// The variables by their sets: a positive index puts a variable into the second set, which is conditioned on.
template <class Real>
split split_variables(const task<Real>& t, ptrdiff_t p, int32_t* list) {
  const auto conditioned = [&](int32_t j) { return t.integer(t.partialIndices, j) > 0; };
  int32_t first = 0;
  for (int32_t j = 0; j < p; ++j)
    if (!conditioned(j)) list[first++] = j;
  int32_t second = first;
  for (int32_t j = 0; j < p; ++j)
    if (conditioned(j)) list[second++] = j;
  return {{first, second - first}, {list, list + first}};
}

template <class Real>
int32_t partial_covariance(SSTask* handle, uint32_t estimates, uint32_t method) {
  const auto& t = task<Real>::of(handle);
  const bool with_cov = (estimates & VTS_SS_ESTIMATE_PARTIAL_COV) != 0;
  const bool with_cor = (estimates & VTS_SS_ESTIMATE_PARTIAL_COR) != 0;
  if (const int32_t status = check(t, with_cov, with_cor, method); status != 0) return status;
  if (t.p() < 1) return VTS_STATUS_SS_BAD_PARTIAL_INDICES;
  const auto p = static_cast<ptrdiff_t>(t.p());
  const scratch<int32_t> list(static_cast<size_t>(p));
  if (!list) return VTS_STATUS_SS_MEMORY;
  const split sets = split_variables(t, p, list.get());
  if (sets.size[0] == 0 || sets.size[1] == 0) return VTS_STATUS_SS_BAD_PARTIAL_INDICES;

  const ptrdiff_t n1 = sets.size[0], n2 = sets.size[1];
  const scratch<Real> memory(static_cast<size_t>(p * p + n1 * n1 + 2 * n1 * n2 + n2 * n2));
  if (!memory) return VTS_STATUS_SS_MEMORY;
  Real *const full = memory.get(), *const s11 = full + p * p, *const s12 = s11 + n1 * n1;
  Real *const product = s12 + n1 * n2, *const s22 = product + n1 * n2;
  expand_source(t, p, full);
  _vSSPrtCovDecomposeMatrix(p, full, sets, s11, s12, s22);
  if (const int32_t status = invert(sets.size[1], s22); status != 0) return status;
  reduce(sets.size, s12, s22, product, s11);

  const auto all = [](ptrdiff_t) { return true; };
  if (with_cov)
    pack(n1, matrix_storage(t, t.partialCovStorage), t.partialCov, all,
         [&](ptrdiff_t i, ptrdiff_t j) { return s11[i + j * n1]; });
  if (with_cor)
    pack(n1, matrix_storage(t, t.partialCorStorage), t.partialCor, all, [&](ptrdiff_t i, ptrdiff_t j) {
      return i == j ? s11[i + i * n1] : s11[i + j * n1] / std::sqrt(s11[i + i * n1] * s11[j + j * n1]);
    });
  return 0;
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSPartialCovariance(SSTask* task, uint32_t estimatesLow, uint32_t, uint32_t methodLow, uint32_t,
                                 const ThreadingService*) {
  return tmk::stats::partial_covariance<double>(task, estimatesLow, methodLow);
}
int32_t _vtssSSPartialCovariance(SSTask* task, uint32_t estimatesLow, uint32_t, uint32_t methodLow, uint32_t,
                                 const ThreadingService*) {
  return tmk::stats::partial_covariance<float>(task, estimatesLow, methodLow);
}
