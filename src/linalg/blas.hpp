// SPDX-License-Identifier: Apache-2.0
// BLAS and LAPACK under the library's own names, with the standard arguments of the Fortran interface. The x
// forms run in the calling thread alone: they are for workers, where the caller's threads are already at
// work, and for results that do not depend on how many threads the BLAS has.
#pragma once

extern "C" {
#define TMK_REAL double
#define TMK_ROUTINE(library, name, parameters, arguments) \
  void tmk_##library##_d##name parameters;                \
  void tmk_##library##_xd##name parameters;
#include "linalg/routines.def"
#undef TMK_ROUTINE
#undef TMK_REAL
#define TMK_REAL float
#define TMK_ROUTINE(library, name, parameters, arguments) \
  void tmk_##library##_s##name parameters;                \
  void tmk_##library##_xs##name parameters;
#include "linalg/routines.def"
#undef TMK_ROUTINE
#undef TMK_REAL
}

namespace tmk {

// The same by precision, for templates: threaded<double>::gemm is tmk_blas_dgemm, serial<double>::gemm is
// tmk_blas_xdgemm.
namespace linalg {

template <class Real>
struct threaded;
template <class Real>
struct serial;

template <>
struct threaded<double> {
#define TMK_ROUTINE(library, name, parameters, arguments) \
  static constexpr auto* name = tmk_##library##_d##name;
#include "linalg/routines.def"
#undef TMK_ROUTINE
};
template <>
struct threaded<float> {
#define TMK_ROUTINE(library, name, parameters, arguments) \
  static constexpr auto* name = tmk_##library##_s##name;
#include "linalg/routines.def"
#undef TMK_ROUTINE
};
template <>
struct serial<double> {
#define TMK_ROUTINE(library, name, parameters, arguments) \
  static constexpr auto* name = tmk_##library##_xd##name;
#include "linalg/routines.def"
#undef TMK_ROUTINE
};
template <>
struct serial<float> {
#define TMK_ROUTINE(library, name, parameters, arguments) \
  static constexpr auto* name = tmk_##library##_xs##name;
#include "linalg/routines.def"
#undef TMK_ROUTINE
};

}  // namespace linalg

}  // namespace tmk
