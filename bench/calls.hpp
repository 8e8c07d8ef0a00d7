// SPDX-License-Identifier: Apache-2.0
// Kernels of every shape under one signature.
#pragma once

#include <cstdint>
#include <functional>
#include <type_traits>

#include "common/kernels.hpp"
#include "peers.hpp"

namespace tmk::bench {

using tools::call_shape;

// What the scalar arguments are.
inline constexpr double fraction_scalars[] = {1.5, 0.25, 0.75, 20};  // of LinearFrac
inline constexpr std::int64_t stride = 2;                            // of PackI and UnpackI

template <class... Parameters>
void run(VtmKernel kernel, Parameters... parameters) {
  reinterpret_cast<void (*)(Parameters...)>(kernel)(parameters...);
}

template <class Element>
std::function<void(const call&)> call_in(VtmKernel kernel, call_shape shape) {
  constexpr std::int32_t narrow = 1;  // masks and indices have 32 bits
  switch (shape) {
    case call_shape::binary:
      return [=](const call& c) { run(kernel, c.n, c.a, c.b, c.r); };
    case call_shape::two_results:
      return [=](const call& c) { run(kernel, c.n, c.a, c.r, c.r2); };
    case call_shape::scalar_exponent:
      return [=](const call& c) { run(kernel, c.n, c.a, *static_cast<const Element*>(c.b), c.r); };
    case call_shape::linear_fraction:
      if constexpr (std::is_floating_point_v<Element>)
        return [=](const call& c) {
          constexpr auto s = fraction_scalars;
          run(kernel, c.n, c.a, c.b, Element(s[0]), Element(s[1]), Element(s[2]), Element(s[3]), c.r);
        };
      [[fallthrough]];
    case call_shape::pack_stride:
      return [=](const call& c) { run(kernel, std::int64_t{c.n}, c.a, stride, c.r, narrow); };
    case call_shape::unpack_stride:
      return [=](const call& c) { run(kernel, std::int64_t{c.n}, c.a, c.r, stride, narrow); };
    case call_shape::pack_mask:
    case call_shape::pack_index:
      return [=](const call& c) { run(kernel, std::int64_t{c.n}, c.a, c.b, c.r, narrow); };
    case call_shape::unpack_mask:
    case call_shape::unpack_index:
      return [=](const call& c) { run(kernel, std::int64_t{c.n}, c.a, c.r, c.b, narrow); };
    default:
      return [=](const call& c) { run(kernel, c.n, c.a, c.r); };
  }
}

inline std::function<void(const call&)> call_of(const tools::vector_function& f, VtmKernel kernel) {
  switch (f.letter) {
    case 's':
      return call_in<float>(kernel, f.shape);
    case 'd':
      return call_in<double>(kernel, f.shape);
    case 'c':
      return call_in<tmk_complex8>(kernel, f.shape);
    default:
      return call_in<tmk_complex16>(kernel, f.shape);
  }
}

}  // namespace tmk::bench
