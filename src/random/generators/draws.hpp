// SPDX-License-Identifier: Apache-2.0
// The three exported draws of a generator: its own words, and uniforms from a to b in either precision.
#pragma once

#include <cstdint>

#include "random/generators/scale.hpp"

namespace tmk::rng {

// How 32-bit words are spread over an interval.
struct word_range {
  bool is_signed;
  double scale;      // the share of the interval that one step of a word is
  bool from_centre;  // word 0 is in the middle of the interval, not at its lower end
};
inline constexpr word_range all_32_bits = {.is_signed = false, .scale = 0x1p-32, .from_centre = false};

// The draws by Words(stream, n, words), which returns a status.
template <auto Words, const word_range& Range = all_32_bits>
struct word_draws {
  static int32_t words(VtsStreamHandle stream, int32_t n, void* r) {
    return Words(stream, n, static_cast<uint32_t*>(r));
  }
  template <class Real>
  static int32_t uniforms(VtsStreamHandle stream, int32_t n, Real* r, Real a, Real b) {
    const auto& kernels = scale_kernels_now<Real>();
    return uniforms_from_words(n, r, Range.is_signed ? kernels.of_signed : kernels.of_unsigned,
                               (double{b} - a) * Range.scale,
                               Range.from_centre ? (double{a} + b) * 0.5 : double{a},
                               [stream](int32_t count, uint32_t* w) { return Words(stream, count, w); });
  }
};

}  // namespace tmk::rng

// The rest of the line is a type with the members of word_draws.
#define TMK_DEFINE_DRAWS(name, ...)                                                            \
  int32_t __vtsiBRng##name(VtsStreamHandle stream, int32_t n, void* r) {                       \
    return __VA_ARGS__::words(stream, n, r);                                                   \
  }                                                                                            \
  int32_t __vtsdBRng##name(VtsStreamHandle stream, int32_t n, double* r, double a, double b) { \
    return __VA_ARGS__::uniforms(stream, n, r, a, b);                                          \
  }                                                                                            \
  int32_t __vtssBRng##name(VtsStreamHandle stream, int32_t n, float* r, float a, float b) {    \
    return __VA_ARGS__::uniforms(stream, n, r, a, b);                                          \
  }
