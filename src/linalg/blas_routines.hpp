// SPDX-License-Identifier: Apache-2.0
// The routines of a BLAS and of a LAPACK by the arguments of their Fortran interface, wherever they come
// from.
#pragma once

namespace tmk {

template <class Real>
struct blas_routines {
#define TMK_REAL Real
#define TMK_ROUTINE(library, name, parameters, arguments) void(*name) parameters;
#include "linalg/routines.def"
#undef TMK_ROUTINE
#undef TMK_REAL
};

struct blas_library {
  blas_routines<double> d;
  blas_routines<float> s;
  // Of a BLAS on OpenMP's threads, which takes as many as the calling thread may have; else null.
  int (*max_threads)();
  void (*set_threads)(int);
};

// The BLAS and LAPACK of this process. The static library links a BLAS (linked/). The shared library loads
// one at the first call (loaded/): a process that computes no covariance does not load it. A BLAS without
// LAPACK is completed by plain loops.
const blas_library& blas();

// Plain loops, for a process without a BLAS.
extern const blas_library plain_blas;

}  // namespace tmk
