// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/matrix.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <type_traits>
#include <vector>

#include "linalg/blas.hpp"
#include "platform/scratch.hpp"
#include "tmk/abi/ss_robust.h"

namespace tmk::stats::robust {
namespace {

// The ridge in eigenvalues, the least eigenvalue that counts as positive (a subnormal number: the bits 0x3E8)
// and the rank test, which is absolute.
template <class Real>
struct rank_limits {
  static constexpr Real ridge = static_cast<Real>(0.01);
  static constexpr Real positive =
      std::bit_cast<Real>(std::conditional_t<sizeof(Real) == 8, uint64_t, uint32_t>(0x3E8));
  static constexpr Real full_rank = static_cast<Real>(1e-15);
};

template <class Real>
int32_t make_invertible_1(Real& c) {
  constexpr Real t = rank_limits<Real>::positive;
  if (c > 0) return 0;
  if (c < -t) return VTS_STATUS_SS_NOT_POSITIVE;
  c = t;
  return 0;
}

template <class Real>
void invert_2(Real* c) {
  const Real a = c[0], b = c[1], d = c[3], determinant = a * d - b * b;
  c[0] = d / determinant;
  c[1] = -b / determinant;
  c[3] = a / determinant;
}

template <class Real>
void invert_3(Real* c) {
  const Real a = c[0], b = c[1], d = c[2], e = c[4], f = c[5], g = c[8];
  const Real A = e * g - f * f, B = d * f - b * g, D = b * f - d * e;
  const Real determinant = a * A + b * B + d * D;
  c[0] = A / determinant;
  c[1] = B / determinant;
  c[2] = D / determinant;
  c[4] = (a * g - d * d) / determinant;
  c[5] = (b * d - a * f) / determinant;
  c[8] = (a * e - b * b) / determinant;
}

}  // namespace

template <class Real>
int32_t make_invertible(int32_t p, Real* c) {
  using limits = rank_limits<Real>;
  if (p == 1) return make_invertible_1(*c);
  const size_t order = static_cast<size_t>(p);
  const scratch<Real> memory(5 * order);
  if (!memory) return VTS_STATUS_SS_MEMORY;
  Real *const diagonal = memory.get(), *const eigenvalues = diagonal + p, *const work = eigenvalues + p;
  for (size_t i = 0; i < order; ++i) diagonal[i] = c[i * order + i];
  const int lwork = 3 * p;
  int info = 0;
  linalg::serial<Real>::syev("N", "U", &p, c, &p, eigenvalues, work, &lwork, &info);
  if (info != 0) return VTS_STATUS_SS_EIGEN_FAILED;
  for (size_t i = 0; i < order; ++i) c[i * order + i] = diagonal[i];
  if (eigenvalues[0] > limits::full_rank) return 0;
  const Real* const first =
      std::find_if(eigenvalues + 1, eigenvalues + p, [](Real value) { return !(value < limits::positive); });
  if (first == eigenvalues + p) return VTS_STATUS_SS_NOT_POSITIVE;
  for (size_t i = 0; i < order; ++i) c[i * order + i] += limits::ridge * *first;
  return 0;
}

template <class Real>
int32_t invert(int32_t p, Real* c) {
  if (p == 1) return *c = 1 / *c, 0;
  if (p == 2) return invert_2(c), 0;
  if (p == 3) return invert_3(c), 0;
  int info = 0;
  linalg::serial<Real>::potrf("L", &p, c, &p, &info);
  if (info != 0) return VTS_STATUS_SS_FACTOR_FAILED;
  linalg::serial<Real>::potri("L", &p, c, &p, &info);
  return info != 0 ? int32_t{VTS_STATUS_SS_INVERSE_FAILED} : 0;
}

template <class Real>
void mirror(int32_t p, Real* c) {
  const auto order = static_cast<size_t>(p);
  for (size_t i = 0; i < order; ++i)
    for (size_t j = i + 1; j < order; ++j) c[j * order + i] = c[i * order + j];
}

double log_determinant_of(int32_t p, const double* c) {
  const auto order = static_cast<size_t>(p);
  std::vector<double> factor(c, c + order * order);
  int info = 0;
  linalg::serial<double>::potrf("L", &p, factor.data(), &p, &info);
  double sum = info == 0 ? 0 : HUGE_VAL;
  for (size_t i = 0; i < order; ++i) sum += 2 * std::log(factor[i * order + i]);
  return sum;
}

// By the pivots of the correlation matrix: what a variable has that the ones before it do not explain.
bool well_conditioned(int32_t p, const double* c) {
  constexpr double least_share = 1e-13;
  const auto order = static_cast<size_t>(p);
  std::vector<double> r(order * order);
  for (size_t i = 0; i < order; ++i)
    for (size_t j = i; j < order; ++j) {
      const double scale = std::sqrt(c[i * order + i]) * std::sqrt(c[j * order + j]);
      if (!(scale > 0) || !std::isfinite(c[i * order + j])) return false;
      r[i * order + j] = c[i * order + j] / scale;
    }
  int info = 0;
  linalg::serial<double>::potrf("L", &p, r.data(), &p, &info);
  if (info != 0) return false;
  for (size_t i = 0; i < order; ++i)
    if (!(r[i * order + i] * r[i * order + i] > least_share)) return false;
  return true;
}

}  // namespace tmk::stats::robust

// The caller must not free the matrix after VTS_STATUS_SS_FACTOR_FAILED.
#define TMK_MATRIX_TWIN(letter, Real)                                   \
  template int32_t tmk::stats::robust::make_invertible(int32_t, Real*); \
  template int32_t tmk::stats::robust::invert(int32_t, Real*);          \
  template void tmk::stats::robust::mirror(int32_t, Real*);             \
  int32_t __vts##letter##TestCovRank(int32_t p, Real* c) {              \
    return tmk::stats::robust::make_invertible(p, c);                   \
  }                                                                     \
  int32_t __vts##letter##InvCov(int32_t p, Real* c) {                   \
    const int32_t status = tmk::stats::robust::invert(p, c);            \
    if (status == VTS_STATUS_SS_FACTOR_FAILED) tmk_serv_deallocate(c);  \
    return status;                                                      \
  }
TMK_MATRIX_TWIN(d, double)
TMK_MATRIX_TWIN(s, float)
#undef TMK_MATRIX_TWIN
