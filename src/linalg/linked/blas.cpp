// SPDX-License-Identifier: Apache-2.0
// The BLAS that the program is linked with, by the names of the Fortran interface. LAPACK comes with many a
// BLAS, but not with each: its names are weak, and plain loops take the place of those that are missing.
#include "linalg/blas_routines.hpp"

extern "C" {
#define TMK_LINK_blas
#define TMK_LINK_lapack [[gnu::weak]]
#define TMK_REAL double
#define TMK_ROUTINE(library, name, parameters, arguments) TMK_LINK_##library void d##name##_ parameters;
#include "linalg/routines.def"
#undef TMK_ROUTINE
#undef TMK_REAL
#define TMK_REAL float
#define TMK_ROUTINE(library, name, parameters, arguments) TMK_LINK_##library void s##name##_ parameters;
#include "linalg/routines.def"
#undef TMK_ROUTINE
#undef TMK_REAL

[[gnu::weak]] int omp_get_max_threads();
[[gnu::weak]] void omp_set_num_threads(int);
}

namespace tmk {

namespace {

template <class Function>
Function* linked_or(Function* linked, Function* plain) {
  return linked != nullptr ? linked : plain;
}

}  // namespace

const blas_library& blas() {
  static const blas_library linked = {
#define TMK_ROUTINE(library, name, parameters, arguments) .name = linked_or(d##name##_, plain_blas.d.name),
      .d =
          {
#include "linalg/routines.def"
          },
#undef TMK_ROUTINE
#define TMK_ROUTINE(library, name, parameters, arguments) .name = linked_or(s##name##_, plain_blas.s.name),
      .s =
          {
#include "linalg/routines.def"
          },
#undef TMK_ROUTINE
      .max_threads = omp_get_max_threads,
      .set_threads = omp_set_num_threads};
  return linked;
}

}  // namespace tmk
