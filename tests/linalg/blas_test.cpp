// SPDX-License-Identifier: Apache-2.0
// The plain loops that are used where no BLAS or no LAPACK is found, against those that the tests are linked
// with.
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

// Matrices of which a triangle is there: side, triangle, operation and diagonal in all combinations.
template <class Real>
void compare_triangles(const blas_routines<Real>& plain, const blas_routines<Real>& linked) {
  const std::vector<Real> x = random_values<Real>(400), y = random_values<Real>(800);
  const int m = 5, n = 7, lda = 13, ldb = 12, ldc = 9, step = 2;
  const Real alpha = Real(0.75);
  for (const char* trans : {"N", "T"})
    for (const Real beta : {Real(0), Real(-0.5)})
      expect_same(plain, linked, beta == 0, [&](const blas_routines<Real>& routines, Real* c) {
        routines.gemv(trans, &m, &n, &alpha, x.data(), &lda, y.data(), &step, &beta, c, &step);
      });
  for (const char* side : {"L", "R"})
    for (const char* uplo : {"U", "L"}) {
      for (const Real beta : {Real(0), Real(-0.5)})
        expect_same(plain, linked, beta == 0, [&](const blas_routines<Real>& routines, Real* c) {
          routines.symm(side, uplo, &m, &n, &alpha, x.data(), &lda, y.data(), &ldb, &beta, c, &ldc);
        });
      for (const char* trans : {"N", "T"})
        for (const char* diag : {"N", "U"})
          expect_same(plain, linked, false, [&](const blas_routines<Real>& routines, Real* c) {
            routines.trmm(side, uplo, trans, diag, &m, &n, &alpha, x.data(), &lda, c, &ldc);
          });
    }
}

// Factors and inverses of a definite matrix, eigenvalues of an indefinite one, and what makes them fail.
template <class Real>
void compare_decompositions(const blas_routines<Real>& plain, const blas_routines<Real>& linked) {
  constexpr int n = 9, lda = 11, work_size = 200, integers = 60;
  std::vector<Real> definite(400), indefinite = random_values<Real>(400);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      definite[i + j * lda] =
          (i == j ? Real(n) : Real(0)) + (indefinite[i + j * lda] + indefinite[j + i * lda]) / 2;
  const auto on_both = [&](const std::vector<Real>& start, int expected_info, auto call) {
    std::vector<Real> results[2];
    for (const auto* routines : {&plain, &linked}) {
      std::vector<Real> a = start;
      int info = -99;
      call(*routines, a.data(), &info);
      EXPECT_EQ(info, expected_info);
      results[routines == &linked] = a;
    }
    for (std::size_t i = 0; i < start.size() && expected_info == 0; ++i)
      EXPECT_NEAR(results[0][i], results[1][i], 100 * std::numeric_limits<Real>::epsilon()) << i;
  };
  std::vector<Real> singular = definite;
  for (int j = 0; j < n; ++j) singular[4 + j * lda] = singular[j + 4 * lda] = 0;
  for (const char* uplo : {"U", "L"}) {
    on_both(definite, 0, [&](const auto& r, Real* a, int* info) { r.potrf(uplo, &n, a, &lda, info); });
    on_both(definite, 0, [&](const auto& r, Real* a, int* info) {
      r.potrf(uplo, &n, a, &lda, info);
      r.potri(uplo, &n, a, &lda, info);
    });
    on_both(singular, 5, [&](const auto& r, Real* a, int* info) { r.potrf(uplo, &n, a, &lda, info); });
    for (const char* diag : {"N", "U"})
      on_both(definite, 0,
              [&](const auto& r, Real* a, int* info) { r.trtri(uplo, diag, &n, a, &lda, info); });
    on_both(singular, 5, [&](const auto& r, Real* a, int* info) { r.trtri(uplo, "N", &n, a, &lda, info); });
    std::vector<Real> work(work_size);
    std::vector<int> iwork(integers);
    // Eigenvectors up to their signs: the products of their components.
    const auto check_vectors = [](const Real* w, const Real* z, int ldz, Real* r) {
      for (int k = 0; k < n; ++k) {
        r[k] = w[k];
        for (int i = 0; i < n; ++i) r[n + k * n + i] = z[i + k * ldz] * z[k * ldz];
      }
    };
    on_both(indefinite, 0, [&](const auto& r, Real* a, int* info) {
      Real w[n];
      r.syev("V", uplo, &n, a, &lda, w, work.data(), &work_size, info);
      std::vector<Real> found(400);
      check_vectors(w, a, lda, found.data());
      std::copy(found.begin(), found.end(), a);
    });
    on_both(indefinite, 0, [&](const auto& r, Real* a, int* info) {
      Real w[n], z[n * n];
      r.spevd("V", uplo, &n, a, w, z, &n, work.data(), &work_size, iwork.data(), &integers, info);
      std::vector<Real> found(400);
      check_vectors(w, z, n, found.data());
      std::copy(found.begin(), found.end(), a);
    });
  }
}

TEST(blas, plain_loops_agree_with_a_library) {
  ASSERT_NE(blas().d.gemm, plain_blas.d.gemm);
  compare(plain_blas.d, blas().d);
  compare(plain_blas.s, blas().s);
  compare_triangles(plain_blas.d, blas().d);
  compare_triangles(plain_blas.s, blas().s);
}

TEST(blas, plain_decompositions_agree_with_a_library) {
  ASSERT_NE(blas().d.potrf, plain_blas.d.potrf);
  compare_decompositions(plain_blas.d, blas().d);
  compare_decompositions(plain_blas.s, blas().s);
}

TEST(blas, plain_eigenvectors_of_equal_eigenvalues_are_orthogonal) {
  constexpr int n = 60, ld = n;
  std::vector<double> a(n * n), v, w(n), work(1);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) a[i + j * n] = (i == j ? 1 + i % 3 : 0) + (i / 20 == j / 20 ? 0.01 : 0);
  v = a;
  int info = -1;
  const int none = 0;
  plain_blas.d.syev("V", "L", &n, v.data(), &ld, w.data(), work.data(), &none, &info);
  ASSERT_EQ(info, 0);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      double product = 0, rebuilt = 0;
      for (int k = 0; k < n; ++k) {
        product += v[k + i * n] * v[k + j * n];
        rebuilt += v[i + k * n] * w[k] * v[j + k * n];
      }
      EXPECT_NEAR(product, i == j ? 1 : 0, 1e-14);
      EXPECT_NEAR(rebuilt, a[i + j * n], 1e-13);
    }
}

}  // namespace
}  // namespace tmk
