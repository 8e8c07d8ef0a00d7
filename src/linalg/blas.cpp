// SPDX-License-Identifier: Apache-2.0
// BLAS and LAPACK under the names of blas.hpp.
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

#define TMK_REAL double
#define TMK_ROUTINE(library, name, parameters, arguments)                              \
  void tmk_##library##_d##name parameters {                                            \
    tmk::freely<&tmk::blas_library::d, &tmk::blas_routines<double>::name> arguments;   \
  }                                                                                    \
  void tmk_##library##_xd##name parameters {                                           \
    tmk::serially<&tmk::blas_library::d, &tmk::blas_routines<double>::name> arguments; \
  }
#include "linalg/routines.def"
#undef TMK_ROUTINE
#undef TMK_REAL
#define TMK_REAL float
#define TMK_ROUTINE(library, name, parameters, arguments)                             \
  void tmk_##library##_s##name parameters {                                           \
    tmk::freely<&tmk::blas_library::s, &tmk::blas_routines<float>::name> arguments;   \
  }                                                                                   \
  void tmk_##library##_xs##name parameters {                                          \
    tmk::serially<&tmk::blas_library::s, &tmk::blas_routines<float>::name> arguments; \
  }
#include "linalg/routines.def"
#undef TMK_ROUTINE
#undef TMK_REAL
