// SPDX-License-Identifier: Apache-2.0
// The laws of the random interface as calls of the C interface.
#pragma once

#include <tmk/abi/vts.h>

#include <cstddef>
#include <new>
#include <string>
#include <type_traits>

namespace tmk::detail {

// What a kernel of a law by rejection returns: how many of its candidates were accepted, or a negative
// status. A kernel that returns a plain status accepts all of them.
struct accepted {
  int32_t count;
};

// A law with its parameters. draw(stream, n, r) draws n candidates, puts the accepted ones at r in their
// order, and returns how many they are, or a negative status.
template <class T>
class draw {
 public:
  // A candidate takes so many uniforms of so many bytes (none where the count depends on earlier draws), or,
  // where bytes is 0, so many elements.
  template <class Kernel>
  draw(const char* name, int uniforms_of_one, int bytes_of_one, const Kernel& kernel)
      : draw(name, bytes_of_one, kernel) {
    uniforms_ = [](const draw& d) { return d.fixed_uniforms_; };
    fixed_uniforms_ = uniforms_of_one;
  }
  // Of doubles, as many as kernel.uniforms() says when somebody asks.
  template <class Kernel>
  draw(const char* name, const Kernel& kernel) : draw(name, int{sizeof(double)}, kernel) {
    uniforms_ = [](const draw& d) { return own<Kernel>(d.kernel_).uniforms(); };
  }

  int32_t operator()(VtsStreamHandle g, int32_t n, T* r) const { return call_(kernel_, g, n, r); }

  // Elements of the stream that a candidate takes; 0 where it depends on earlier draws.
  int elements(VtsStreamHandle g) const {
    const int uniforms = uniforms_(*this);
    return bytes_ == 0 ? uniforms : uniforms * tmk_vts_elements_of_uniform(g, bytes_);
  }

  const char* function;

 private:
  template <class Kernel>
  draw(const char* name, int bytes, const Kernel& kernel) : function(name), bytes_(bytes) {
    static_assert(sizeof kernel <= sizeof kernel_ && std::is_trivially_copyable_v<Kernel>);
    ::new (kernel_) Kernel(kernel);
    call_ = [](const std::byte* k, VtsStreamHandle g, int32_t n, T* r) {
      const auto result = own<Kernel>(k)(g, n, r);
      if constexpr (std::is_same_v<decltype(result), const accepted>)
        return result.count;
      else
        return result < 0 ? result : n;
    };
  }
  template <class Kernel>
  static const Kernel& own(const std::byte* k) {
    return *std::launder(reinterpret_cast<const Kernel*>(k));
  }

  int fixed_uniforms_ = 0, bytes_;
  int (*uniforms_)(const draw&) = nullptr;
  int32_t (*call_)(const std::byte*, VtsStreamHandle, int32_t, T*);
  // In place of std::function, which would allocate memory at each fill.
  alignas(double) std::byte kernel_[64];
};

// Throws tmk::error for parameters that the law does not have. T is double or float for the continuous laws,
// and int32_t for the discrete ones.
template <class T, class Laws>
draw<T> draw_of(const Laws& law);

// Shapes of gamma and beta variates.
constexpr double least_shape = 0x1p-20, greatest_shape = 0x1p30;

// Refuses what no Poisson law has as its mean.
void check_mean(const char* function, const std::string& argument, double mean);

}  // namespace tmk::detail
