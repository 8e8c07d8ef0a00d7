// SPDX-License-Identifier: Apache-2.0
// The routines of a BLAS by the arguments of its Fortran interface, wherever they come from.
#pragma once

namespace tmk {

template <class Real>
struct blas_routines {
  void (*gemm)(const char* transa, const char* transb, const int* m, const int* n, const int* k,
               const Real* alpha, const Real* a, const int* lda, const Real* b, const int* ldb,
               const Real* beta, Real* c, const int* ldc);
  void (*syrk)(const char* uplo, const char* trans, const int* n, const int* k, const Real* alpha,
               const Real* a, const int* lda, const Real* beta, Real* c, const int* ldc);
  void (*syr)(const char* uplo, const int* n, const Real* alpha, const Real* x, const int* incx, Real* a,
              const int* lda);
};

struct blas_library {
  blas_routines<double> d;
  blas_routines<float> s;
  // Of a BLAS on OpenMP's threads, which takes as many as the calling thread may have; else null.
  int (*max_threads)();
  void (*set_threads)(int);
};

// The BLAS of this process. The static library links one (linked/). The shared library loads one at the first
// call (loaded/): a process that computes no covariance does not load it.
const blas_library& blas();

// Plain loops, for a process without a BLAS.
extern const blas_library plain_blas;

}  // namespace tmk
