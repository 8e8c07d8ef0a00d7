// Every function's formula in multiple-precision arithmetic.
#pragma once

#include <mpc.h>
#include <mpfr.h>

#include <string_view>

namespace tmk::accuracy {

// One evaluation: exact arguments, results at the working precision.
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

struct oracle_row {
  std::string_view stem;
  formula real;     // null where the function has complex elements only
  formula complex;  // null where it has real elements only
};

const oracle_row* find_oracle_row(std::string_view stem);

}  // namespace tmk::accuracy
