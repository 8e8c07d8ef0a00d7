// SPDX-License-Identifier: Apache-2.0
// BLAS in plain loops. All matrices are stored by columns.
#include <cstddef>

#include "linalg/blas_routines.hpp"
#include "linalg/plain_lapack.hpp"

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

template <class Real>
void gemv(const char* trans, const int* m, const int* n, const Real* alpha, const Real* a, const int* lda,
          const Real* x, const int* incx, const Real* beta, Real* y, const int* incy) {
  const operand<Real> left(trans, a, lda);
  const ptrdiff_t rows = *trans == 'N' ? *m : *n, columns = *trans == 'N' ? *n : *m, x_step = *incx,
                  y_step = *incy;
  for (ptrdiff_t i = 0; i < rows; ++i) {
    Real sum = 0;
    for (ptrdiff_t k = 0; k < columns; ++k) sum += left(i, k) * x[k * x_step];
    update(y[i * y_step], *beta, *alpha * sum);
  }
}

// A symmetric matrix of which one triangle is there.
template <class Real>
void symm(const char* side, const char* uplo, const int* m, const int* n, const Real* alpha, const Real* a,
          const int* lda, const Real* b, const int* ldb, const Real* beta, Real* c, const int* ldc) {
  const bool left = *side == 'L', upper = *uplo == 'U';
  const ptrdiff_t size = left ? *m : *n, a_step = *lda, b_step = *ldb;
  const auto element = [&](ptrdiff_t i, ptrdiff_t k) {
    return (i < k) == upper ? a[i + k * a_step] : a[k + i * a_step];
  };
  for (ptrdiff_t j = 0; j < *n; ++j)
    for (ptrdiff_t i = 0; i < *m; ++i) {
      Real sum = 0;
      for (ptrdiff_t k = 0; k < size; ++k)
        sum += left ? element(i, k) * b[k + j * b_step] : b[i + k * b_step] * element(k, j);
      update(c[i + j * *ldc], *beta, *alpha * sum);
    }
}

// B = alpha op(A) B or alpha B op(A). Rows or columns of B are finished in the order in which none is needed
// again.
template <class Real>
void trmm(const char* side, const char* uplo, const char* transa, const char* diag, const int* m,
          const int* n, const Real* alpha, const Real* a, const int* lda, Real* b, const int* ldb) {
  const operand<Real> matrix(transa, a, lda);
  const bool left = *side == 'L', unit = *diag == 'U', transposed = *transa != 'N';
  const bool upper = (*uplo == 'U') != transposed;  // of op(A)
  const ptrdiff_t size = left ? *m : *n, others = left ? *n : *m;
  const ptrdiff_t along = left ? 1 : *ldb, across = left ? *ldb : 1;
  const auto element = [&](ptrdiff_t i, ptrdiff_t k) {
    return unit && i == k ? Real{1} : left ? matrix(i, k) : matrix(k, i);
  };
  const bool later = upper == left;  // whether element i needs those after it
  for (ptrdiff_t j = 0; j < others; ++j)
    for (ptrdiff_t step = 0; step < size; ++step) {
      const ptrdiff_t i = later ? step : size - 1 - step;
      Real sum = 0;
      for (ptrdiff_t k = later ? i : 0; k < (later ? size : i + 1); ++k)
        sum += element(i, k) * b[k * along + j * across];
      b[i * along + j * across] = *alpha * sum;
    }
}

template <class Real>
constexpr blas_routines<Real> plain_routines() {
  using namespace plain;
  return {
#define TMK_ROUTINE(library, name, parameters, arguments) .name = name<Real>,
#include "linalg/routines.def"
#undef TMK_ROUTINE
  };
}

}  // namespace

constinit const blas_library plain_blas = {plain_routines<double>(), plain_routines<float>(), nullptr,
                                           nullptr};

}  // namespace tmk
