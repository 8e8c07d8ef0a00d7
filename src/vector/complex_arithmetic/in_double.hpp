// SPDX-License-Identifier: Apache-2.0
// Complex functions of singles, computed in double precision.
#pragma once

#include "vector/walk/elements.hpp"

TMK_TIER_OPEN
namespace {

struct widened_complex {
  complex_value<double> low, high;
};
inline widened_complex widen_parts(const complex_value<float>& z) {
  const auto re = widen(z.re), im = widen(z.im);
  return {{re.low, im.low}, {re.high, im.high}};
}

// f(x...) of complex singles, f of complex doubles.
template <class F, class... Singles>
[[gnu::always_inline]] inline complex_value<float> complex_in_double(const F& f, const Singles&... x) {
  const complex_value<double> low = f(widen_parts(x).low...), high = f(widen_parts(x).high...);
  return {narrow({low.re, high.re}), narrow({low.im, high.im})};
}

}  // namespace
TMK_TIER_CLOSE
