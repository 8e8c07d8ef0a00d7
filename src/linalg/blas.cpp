// The installed BLAS behind the names of blas.hpp: the one place that knows its symbols.
#include "linalg/blas.hpp"

#include <omp.h>

// The trailing underscore of the Fortran interface.
extern "C" {
#define TMK_FORTRAN_TWIN(letter, Real)                                                                       \
  void letter##gemm_(const char*, const char*, const int*, const int*, const int*, const Real*, const Real*, \
                     const int*, const Real*, const int*, const Real*, Real*, const int*);                   \
  void letter##syrk_(const char*, const char*, const int*, const int*, const Real*, const Real*, const int*, \
                     const Real*, Real*, const int*);                                                        \
  void letter##syr_(const char*, const int*, const Real*, const Real*, const int*, Real*, const int*);
TMK_FORTRAN_TWIN(d, double)
TMK_FORTRAN_TWIN(s, float)
#undef TMK_FORTRAN_TWIN
}

namespace {

// An OpenMP build of the library takes as many threads as the calling thread may have at that moment.
class one_thread {
 public:
  one_thread() { omp_set_num_threads(1); }
  ~one_thread() { omp_set_num_threads(previous_); }
  one_thread(const one_thread&) = delete;
  one_thread& operator=(const one_thread&) = delete;

 private:
  int previous_ = omp_get_max_threads();
};

template <auto Routine, class... Arguments>
void directly(Arguments... arguments) {
  Routine(arguments...);
}

template <auto Routine, class... Arguments>
void serially(Arguments... arguments) {
  const one_thread alone;
  Routine(arguments...);
}

}  // namespace

#define TMK_BLAS_FORM(prefix, run, letter, Real)                                                           \
  void prefix##letter##gemm(const char* transa, const char* transb, const int* m, const int* n,            \
                            const int* k, const Real* alpha, const Real* a, const int* lda, const Real* b, \
                            const int* ldb, const Real* beta, Real* c, const int* ldc) {                   \
    run<letter##gemm_>(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);                      \
  }                                                                                                        \
  void prefix##letter##syrk(const char* uplo, const char* trans, const int* n, const int* k,               \
                            const Real* alpha, const Real* a, const int* lda, const Real* beta, Real* c,   \
                            const int* ldc) {                                                              \
    run<letter##syrk_>(uplo, trans, n, k, alpha, a, lda, beta, c, ldc);                                    \
  }                                                                                                        \
  void prefix##letter##syr(const char* uplo, const int* n, const Real* alpha, const Real* x,               \
                           const int* incx, Real* a, const int* lda) {                                     \
    run<letter##syr_>(uplo, n, alpha, x, incx, a, lda);                                                    \
  }
TMK_BLAS_FORM(tmk_blas_, directly, d, double)
TMK_BLAS_FORM(tmk_blas_, directly, s, float)
TMK_BLAS_FORM(tmk_blas_x, serially, d, double)
TMK_BLAS_FORM(tmk_blas_x, serially, s, float)
