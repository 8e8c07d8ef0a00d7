// SPDX-License-Identifier: Apache-2.0
// A registered generator whose uniforms are all at one place of the interval; draw number `failing` fails.
#pragma once

#include "random/streams.hpp"

struct placed {
  inline static double at;
  inline static int draws, failing;  // 0: none

  template <class Real>
  static int32_t draw(VtsStreamHandle, int32_t n, Real* r, Real a, Real b) {
    if (++draws == failing) return -77;
    std::fill_n(r, n, static_cast<Real>(a + (b - a) * static_cast<Real>(at)));
    return 0;
  }
  static int32_t id() {
    static const int32_t registered = [] {
      VtsBrngProperties record = counting_record();
      record.sBrng = draw<float>;
      record.dBrng = draw<double>;
      return __vtsRegisterBrng(&record);
    }();
    return registered;
  }
};
