// SPDX-License-Identifier: Apache-2.0
// Kernels of every shape under one signature.
#pragma once

#include <cstdint>
#include <functional>

#include "common/kernels.hpp"
#include "peers.hpp"

namespace tmk::bench {

using tools::call_shape;

template <class Real>
std::function<void(const call&)> call_in(VtmKernel kernel, call_shape shape) {
  switch (shape) {
    case call_shape::binary:
      return [=](const call& c) {
        reinterpret_cast<void (*)(std::int32_t, const void*, const void*, void*)>(kernel)(c.n, c.a, c.b, c.r);
      };
    case call_shape::two_results:
      return [=](const call& c) {
        reinterpret_cast<void (*)(std::int32_t, const void*, void*, void*)>(kernel)(c.n, c.a, c.r, c.r2);
      };
    case call_shape::scalar_exponent:
      return [=](const call& c) {
        const Real exponent = *static_cast<const Real*>(c.b);
        reinterpret_cast<void (*)(std::int32_t, const void*, Real, void*)>(kernel)(c.n, c.a, exponent, c.r);
      };
    default:
      return [=](const call& c) {
        reinterpret_cast<void (*)(std::int32_t, const void*, void*)>(kernel)(c.n, c.a, c.r);
      };
  }
}

inline std::function<void(const call&)> call_of(const tools::vector_function& f, VtmKernel kernel) {
  return f.is_single() ? call_in<float>(kernel, f.shape) : call_in<double>(kernel, f.shape);
}

inline bool is_timed(const tools::vector_function& f) {
  return !f.is_complex() && f.shape <= call_shape::two_results;
}

}  // namespace tmk::bench
