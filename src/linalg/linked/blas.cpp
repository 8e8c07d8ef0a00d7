// SPDX-License-Identifier: Apache-2.0
// The BLAS that the program is linked with, by the names of the Fortran interface.
#include "linalg/blas_routines.hpp"

extern "C" {
#define TMK_FORTRAN_BLAS(letter, Real)                                                                       \
  void letter##gemm_(const char*, const char*, const int*, const int*, const int*, const Real*, const Real*, \
                     const int*, const Real*, const int*, const Real*, Real*, const int*);                   \
  void letter##syrk_(const char*, const char*, const int*, const int*, const Real*, const Real*, const int*, \
                     const Real*, Real*, const int*);                                                        \
  void letter##syr_(const char*, const int*, const Real*, const Real*, const int*, Real*, const int*);
TMK_FORTRAN_BLAS(d, double)
TMK_FORTRAN_BLAS(s, float)
#undef TMK_FORTRAN_BLAS

[[gnu::weak]] int omp_get_max_threads();
[[gnu::weak]] void omp_set_num_threads(int);
}

namespace tmk {

const blas_library& blas() {
  static const blas_library linked = {
      {dgemm_, dsyrk_, dsyr_}, {sgemm_, ssyrk_, ssyr_}, omp_get_max_threads, omp_set_num_threads};
  return linked;
}

}  // namespace tmk
