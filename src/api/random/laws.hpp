// SPDX-License-Identifier: Apache-2.0
// The laws of the random interface as calls of the C interface.
#pragma once

#include <tmk/abi/vts.h>

#include <cstddef>
#include <new>
#include <type_traits>

namespace tmk::detail {

// What a kernel of a law by rejection returns: how many of its candidates were accepted, or a negative
// status. A kernel that returns a plain status accepts all of them.
struct accepted {
  int32_t count;
};

// A law with its parameters. draw(stream, n, r) draws n candidates, puts the accepted ones at r in their
// order, and returns how many they are, or a negative status. A candidate takes so many uniforms of so many
// bytes (none where the count depends on earlier draws), or, where bytes is 0, so many elements.
template <class T>
class draw {
 public:
  template <class Kernel>
  draw(const char* name, int uniforms_of_one, int bytes_of_one, const Kernel& kernel)
      : function(name), uniforms(uniforms_of_one), bytes(bytes_of_one) {
    static_assert(sizeof kernel <= sizeof kernel_ && std::is_trivially_copyable_v<Kernel>);
    ::new (kernel_) Kernel(kernel);
    call_ = [](const std::byte* k, VtsStreamHandle g, int32_t n, T* r) {
      const auto& own = *std::launder(reinterpret_cast<const Kernel*>(k));
      if constexpr (std::is_same_v<decltype(own(g, n, r)), accepted>) {
        return own(g, n, r).count;
      } else {
        const int32_t status = own(g, n, r);
        return status < 0 ? status : n;
      }
    };
  }

  int32_t operator()(VtsStreamHandle g, int32_t n, T* r) const { return call_(kernel_, g, n, r); }

  // Elements of the stream that a candidate takes.
  int elements(VtsStreamHandle g) const {
    return bytes == 0 ? uniforms : uniforms * tmk_vts_elements_of_uniform(g, bytes);
  }

  const char* function;
  int uniforms, bytes;

 private:
  int32_t (*call_)(const std::byte*, VtsStreamHandle, int32_t, T*);
  // In place of std::function, which would allocate memory at each fill.
  alignas(double) std::byte kernel_[64];
};

// Throws tmk::error for parameters that the law does not have. T is double or float for the continuous laws,
// and int32_t for the discrete ones.
template <class T, class Laws>
draw<T> draw_of(const Laws& law);

}  // namespace tmk::detail
