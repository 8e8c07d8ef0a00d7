// BLAS under the library's own names, with the standard arguments of the Fortran interface. The x forms run
// in the calling thread alone: they are for workers, where the caller's threads are already at work.
#pragma once

extern "C" {
#define TMK_BLAS_TWIN(letter, Real)                                                                          \
  void tmk_blas_##letter##gemm(const char* transa, const char* transb, const int* m, const int* n,           \
                               const int* k, const Real* alpha, const Real* a, const int* lda,               \
                               const Real* b, const int* ldb, const Real* beta, Real* c, const int* ldc);    \
  void tmk_blas_##letter##syrk(const char* uplo, const char* trans, const int* n, const int* k,              \
                               const Real* alpha, const Real* a, const int* lda, const Real* beta, Real* c,  \
                               const int* ldc);                                                              \
  void tmk_blas_##letter##syr(const char* uplo, const int* n, const Real* alpha, const Real* x,              \
                              const int* incx, Real* a, const int* lda);                                     \
  void tmk_blas_x##letter##gemm(const char* transa, const char* transb, const int* m, const int* n,          \
                                const int* k, const Real* alpha, const Real* a, const int* lda,              \
                                const Real* b, const int* ldb, const Real* beta, Real* c, const int* ldc);   \
  void tmk_blas_x##letter##syrk(const char* uplo, const char* trans, const int* n, const int* k,             \
                                const Real* alpha, const Real* a, const int* lda, const Real* beta, Real* c, \
                                const int* ldc);                                                             \
  void tmk_blas_x##letter##syr(const char* uplo, const int* n, const Real* alpha, const Real* x,             \
                               const int* incx, Real* a, const int* lda);
TMK_BLAS_TWIN(d, double)
TMK_BLAS_TWIN(s, float)
#undef TMK_BLAS_TWIN
}
