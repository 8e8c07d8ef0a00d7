// SPDX-License-Identifier: Apache-2.0
// The BLAS that the system has, loaded when it is first needed and kept until the process ends.
#include <dlfcn.h>

#include "linalg/blas_routines.hpp"

namespace tmk {

namespace {

// The standard interface library of Linux distributions, which their administrators choose; and the one that
// is most often there without it.
constexpr const char* names[] = {"libblas.so.3", "libopenblas.so.0"};

template <class Function>
bool find(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(dlsym(library, name));
  return function != nullptr;
}

// Whether the library has all of the routines.
bool load(const char* name, blas_library& b) {
  void* const library = dlopen(name, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return false;
  find(library, "omp_get_max_threads", b.max_threads);
  find(library, "omp_set_num_threads", b.set_threads);
  return find(library, "dgemm_", b.d.gemm) && find(library, "dsyrk_", b.d.syrk) &&
         find(library, "dsyr_", b.d.syr) && find(library, "sgemm_", b.s.gemm) &&
         find(library, "ssyrk_", b.s.syrk) && find(library, "ssyr_", b.s.syr);
}

}  // namespace

const blas_library& blas() {
  static const blas_library loaded = [] {
    blas_library b{};
    for (const char* name : names)
      if (load(name, b)) return b;
    return plain_blas;
  }();
  return loaded;
}

}  // namespace tmk
