// SPDX-License-Identifier: Apache-2.0
// The plain loops that are used where no BLAS is found, against the BLAS that the tests are linked with.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "linalg/blas_routines.hpp"

namespace tmk {
namespace {

template <class Real>
std::vector<Real> random_values(std::size_t n) {
  std::mt19937 engine(5);
  std::uniform_real_distribution<Real> unit(-1, 1);
  std::vector<Real> x(n);
  for (Real& value : x) value = unit(engine);
  return x;
}

// Runs call(routines, c) with both, over equal arrays, where `unset` ones hold NaN.
template <class Real, class Call>
void expect_same(const blas_routines<Real>& plain, const blas_routines<Real>& linked, bool unset, Call call) {
  std::vector<Real> a = random_values<Real>(400), b = a;
  if (unset) a.assign(a.size(), NAN), b = a;
  call(plain, a.data());
  call(linked, b.data());
  const Real bound = 30 * std::numeric_limits<Real>::epsilon();
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::isnan(b[i]))
      EXPECT_TRUE(std::isnan(a[i])) << i;
    else
      EXPECT_NEAR(a[i], b[i], bound) << i;
  }
}

template <class Real>
void compare(const blas_routines<Real>& plain, const blas_routines<Real>& linked) {
  const std::vector<Real> x = random_values<Real>(400), y = random_values<Real>(800);
  const int m = 5, n = 7, k = 11, lda = 13, ldb = 12, ldc = 9, step = 2;
  const Real alpha = Real(0.75);
  for (const Real beta : {Real(0), Real(1), Real(-0.5)}) {
    for (const char* ta : {"N", "T"})
      for (const char* tb : {"N", "T"})
        expect_same(plain, linked, beta == 0, [&](const blas_routines<Real>& routines, Real* c) {
          routines.gemm(ta, tb, &m, &n, &k, &alpha, x.data(), &lda, y.data() + 3, &ldb, &beta, c, &ldc);
        });
    for (const char* uplo : {"U", "L"})
      for (const char* trans : {"N", "T"})
        expect_same(plain, linked, beta == 0, [&](const blas_routines<Real>& routines, Real* c) {
          routines.syrk(uplo, trans, &n, &k, &alpha, x.data(), &lda, &beta, c, &ldc);
        });
  }
  for (const char* uplo : {"U", "L"})
    expect_same(plain, linked, false, [&](const blas_routines<Real>& routines, Real* c) {
      routines.syr(uplo, &n, &alpha, y.data(), &step, c, &ldc);
    });
}

TEST(blas, plain_loops_agree_with_a_library) {
  ASSERT_NE(blas().d.gemm, plain_blas.d.gemm);
  compare(plain_blas.d, blas().d);
  compare(plain_blas.s, blas().s);
}

}  // namespace
}  // namespace tmk
