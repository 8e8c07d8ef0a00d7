// SPDX-License-Identifier: Apache-2.0
// BLAS under the library's own names, with the standard arguments of the Fortran interface. The x forms run
// in the calling thread alone: they are for workers, where the caller's threads are already at work.
#pragma once

extern "C" {
#define TMK_BLAS_FORM(prefix, letter, Real)                                                                \
  void prefix##letter##gemm(const char* transa, const char* transb, const int* m, const int* n,            \
                            const int* k, const Real* alpha, const Real* a, const int* lda, const Real* b, \
                            const int* ldb, const Real* beta, Real* c, const int* ldc);                    \
  void prefix##letter##syrk(const char* uplo, const char* trans, const int* n, const int* k,               \
                            const Real* alpha, const Real* a, const int* lda, const Real* beta, Real* c,   \
                            const int* ldc);                                                               \
  void prefix##letter##syr(const char* uplo, const int* n, const Real* alpha, const Real* x,               \
                           const int* incx, Real* a, const int* lda);
TMK_BLAS_FORM(tmk_blas_, d, double)
TMK_BLAS_FORM(tmk_blas_, s, float)
TMK_BLAS_FORM(tmk_blas_x, d, double)
TMK_BLAS_FORM(tmk_blas_x, s, float)
#undef TMK_BLAS_FORM
}
