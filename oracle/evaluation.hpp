// SPDX-License-Identifier: Apache-2.0
// What a formula works on: exact arguments, and results at the working precision.
#pragma once

#include <mpc.h>
#include <mpfr.h>

namespace tmk::accuracy {

struct evaluation {
  mpc_t a, b, r;
  mpfr_t scalea, shifta, scaleb, shiftb;
  bool is_single;

  // A formula may be asked again at a higher precision, so it leaves its arguments as they are.
  mpfr_srcptr x() const { return mpc_realref(a); }
  mpfr_srcptr y() const { return mpc_realref(b); }
  mpfr_ptr first() { return mpc_realref(r); }
  mpfr_ptr second() { return mpc_imagref(r); }
  mpfr_prec_t precision() { return mpfr_get_prec(first()); }
};

// Returns 0 when the result is exact; otherwise it is within 2^6 units of the working precision's last place.
using formula = int (*)(evaluation&);

constexpr mpfr_rnd_t nearest = MPFR_RNDN;
constexpr int inexact = 1;

// Scratch value with more bits than the results have, so that short compositions lose nothing visible.
class number {
 public:
  explicit number(evaluation& e) { mpfr_init2(value_, e.precision() + 32); }
  number(const number&) = delete;
  number& operator=(const number&) = delete;
  ~number() { mpfr_clear(value_); }
  operator mpfr_ptr() { return value_; }

 private:
  mpfr_t value_;
};

inline int undefined(evaluation& e) {
  mpfr_set_nan(e.first());
  return 0;
}

inline int take(evaluation& e, mpfr_srcptr x) { return mpfr_set(e.first(), x, nearest); }

}  // namespace tmk::accuracy
