// SPDX-License-Identifier: Apache-2.0
// The BLAS and the LAPACK that the system has, loaded when they are first needed and kept until the process
// ends.
#include <dlfcn.h>

#include "linalg/blas_routines.hpp"

namespace tmk {

namespace {

// The standard interface library of Linux distributions, which their administrators choose; and the one that
// is most often there without it. A LAPACK comes with them or by the name of its own interface.
constexpr const char* blas_names[] = {"libblas.so.3", "libopenblas.so.0"};
constexpr const char* lapack_name = "liblapack.so.3";

void* open(const char* name) { return dlopen(name, RTLD_NOW | RTLD_LOCAL); }

template <class Function>
bool find(void* opened, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(dlsym(opened, name));
  return function != nullptr;
}

// Whether the opened library, or what it depends on, has all routines of BLAS, or all of LAPACK.
bool find_routines(void* opened, bool lapack, blas_library& b) {
  constexpr struct { bool blas, lapack; } is = {false, true};
  bool all = opened != nullptr;
#define TMK_ROUTINE(library, name, parameters, arguments) \
  if (is.library == lapack)                               \
    all = all && find(opened, "d" #name "_", b.d.name) && find(opened, "s" #name "_", b.s.name);
#include "linalg/routines.def"
#undef TMK_ROUTINE
  return all;
}

}  // namespace

const blas_library& blas() {
  static const blas_library loaded = [] {
    for (const char* name : blas_names) {
      void* const opened = open(name);
      blas_library b = plain_blas;
      if (!find_routines(opened, false, b)) continue;
      find(opened, "omp_get_max_threads", b.max_threads);
      find(opened, "omp_set_num_threads", b.set_threads);
      if (blas_library both = b; find_routines(opened, true, both)) return both;
      if (blas_library both = b; find_routines(open(lapack_name), true, both)) return both;
      return b;
    }
    return plain_blas;
  }();
  return loaded;
}

}  // namespace tmk
