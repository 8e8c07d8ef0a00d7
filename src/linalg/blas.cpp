// SPDX-License-Identifier: Apache-2.0
// BLAS under the names of blas.hpp.
#include "linalg/blas.hpp"

#include "linalg/blas_routines.hpp"
#include "threading/fork.hpp"

namespace tmk {

namespace {

const blas_library& watched_blas() {
  watch_forks();  // before it makes threads
  return blas();
}

class one_thread {
 public:
  explicit one_thread(const blas_library& library)
      : library_(library), previous_(library.max_threads != nullptr ? library.max_threads() : 0) {
    set(1);
  }
  ~one_thread() { set(previous_); }
  one_thread(const one_thread&) = delete;
  one_thread& operator=(const one_thread&) = delete;

 private:
  void set(int threads) {
    if (library_.set_threads != nullptr && library_.max_threads != nullptr) library_.set_threads(threads);
  }

  const blas_library& library_;
  int previous_;
};

template <auto Precision, auto Routine, class... Arguments>
void serially(Arguments... arguments) {
  const blas_library& library = watched_blas();
  const one_thread alone(library);
  (library.*Precision.*Routine)(arguments...);
}

// With all of BLAS's threads; in a forked child they are gone.
template <auto Precision, auto Routine, class... Arguments>
void freely(Arguments... arguments) {
  if (in_forked_child()) return serially<Precision, Routine>(arguments...);
  (watched_blas().*Precision.*Routine)(arguments...);
}

}  // namespace

}  // namespace tmk

#define TMK_BLAS_FORM(prefix, run, letter, Real)                                                             \
  void prefix##letter##gemm(const char* transa, const char* transb, const int* m, const int* n,              \
                            const int* k, const Real* alpha, const Real* a, const int* lda, const Real* b,   \
                            const int* ldb, const Real* beta, Real* c, const int* ldc) {                     \
    tmk::run<&tmk::blas_library::letter, &tmk::blas_routines<Real>::gemm>(transa, transb, m, n, k, alpha, a, \
                                                                          lda, b, ldb, beta, c, ldc);        \
  }                                                                                                          \
  void prefix##letter##syrk(const char* uplo, const char* trans, const int* n, const int* k,                 \
                            const Real* alpha, const Real* a, const int* lda, const Real* beta, Real* c,     \
                            const int* ldc) {                                                                \
    tmk::run<&tmk::blas_library::letter, &tmk::blas_routines<Real>::syrk>(uplo, trans, n, k, alpha, a, lda,  \
                                                                          beta, c, ldc);                     \
  }                                                                                                          \
  void prefix##letter##syr(const char* uplo, const int* n, const Real* alpha, const Real* x,                 \
                           const int* incx, Real* a, const int* lda) {                                       \
    tmk::run<&tmk::blas_library::letter, &tmk::blas_routines<Real>::syr>(uplo, n, alpha, x, incx, a, lda);   \
  }
TMK_BLAS_FORM(tmk_blas_, freely, d, double)
TMK_BLAS_FORM(tmk_blas_, freely, s, float)
TMK_BLAS_FORM(tmk_blas_x, serially, d, double)
TMK_BLAS_FORM(tmk_blas_x, serially, s, float)
