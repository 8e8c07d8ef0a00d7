// SPDX-License-Identifier: Apache-2.0
// The products of matrices in plain loops. All matrices are stored by columns.
#include <cstddef>

#include "linalg/blas_routines.hpp"

namespace tmk {

namespace {

// op(A), where element (i, k) of A is a[i + k * ld].
template <class Real>
class operand {
 public:
  operand(const char* trans, const Real* a, const int* ld)
      : a_(a), row_(*trans == 'N' ? 1 : *ld), column_(*trans == 'N' ? *ld : 1) {}

  Real operator()(ptrdiff_t i, ptrdiff_t k) const { return a_[i * row_ + k * column_]; }

 private:
  const Real* a_;
  ptrdiff_t row_, column_;
};

// A result that the caller has not set is not read: beta is zero then.
template <class Real>
void update(Real& c, Real beta, Real value) {
  c = value + (beta == 0 ? 0 : beta * c);
}

template <class Real, class Product>
void for_triangle(const char* uplo, int n, Real* c, int ldc, Product product) {
  for (ptrdiff_t j = 0; j < n; ++j)
    for (ptrdiff_t i = *uplo == 'U' ? 0 : j; i < (*uplo == 'U' ? j + 1 : n); ++i)
      product(i, j, c[i + j * ldc]);
}

template <class Real>
void gemm(const char* transa, const char* transb, const int* m, const int* n, const int* k, const Real* alpha,
          const Real* a, const int* lda, const Real* b, const int* ldb, const Real* beta, Real* c,
          const int* ldc) {
  const operand<Real> left(transa, a, lda), right(transb, b, ldb);
  for (ptrdiff_t j = 0; j < *n; ++j)
    for (ptrdiff_t i = 0; i < *m; ++i) {
      Real sum = 0;
      for (ptrdiff_t l = 0; l < *k; ++l) sum += left(i, l) * right(l, j);
      update(c[i + j * *ldc], *beta, *alpha * sum);
    }
}

template <class Real>
void syrk(const char* uplo, const char* trans, const int* n, const int* k, const Real* alpha, const Real* a,
          const int* lda, const Real* beta, Real* c, const int* ldc) {
  const operand<Real> left(trans, a, lda);
  for_triangle(uplo, *n, c, *ldc, [&](ptrdiff_t i, ptrdiff_t j, Real& element) {
    Real sum = 0;
    for (ptrdiff_t l = 0; l < *k; ++l) sum += left(i, l) * left(j, l);
    update(element, *beta, *alpha * sum);
  });
}

template <class Real>
void syr(const char* uplo, const int* n, const Real* alpha, const Real* x, const int* incx, Real* a,
         const int* lda) {
  const ptrdiff_t step = *incx;
  for_triangle(uplo, *n, a, *lda, [&](ptrdiff_t i, ptrdiff_t j, Real& element) {
    element += *alpha * x[i * step] * x[j * step];
  });
}

}  // namespace

constinit const blas_library plain_blas = {
    {gemm<double>, syrk<double>, syr<double>}, {gemm<float>, syrk<float>, syr<float>}, nullptr, nullptr};

}  // namespace tmk
