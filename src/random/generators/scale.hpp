// Words to numbers of an interval: r[i] = value(w[i]) * k + a in double, each operation rounded; singles are
// rounded once more at the end. The same bits on every tier.
#pragma once

#include <cstdint>

#include "random/core/by_tier.hpp"

namespace tmk {

// Element n - 1 down to 0 of w may lie in the upper half of r (in-place expansion, in rising order).
struct scale_loops {
  void (*unsigned_to_double)(int32_t n, const uint32_t* w, double* r, double k, double a);
  void (*signed_to_double)(int32_t n, const uint32_t* w, double* r, double k, double a);
  void (*unsigned_to_single)(int32_t n, const uint32_t* w, float* r, double k, double a);  // r may be w
  void (*signed_to_single)(int32_t n, const uint32_t* w, float* r, double k, double a);    // r may be w
};

}  // namespace tmk

TMK_DECLARE_LOOPS(scale_loops)
