// The record of every generator of the registry as a constant.
#pragma once

#include "random/core/states.hpp"
#include "random/core/stream.hpp"

extern "C" {
#define TMK_GENERATOR(name, state, seed_words, zero, word_bytes, bits, sets)                             \
  [[gnu::weak]] int32_t __vtsBRng##name##InitStream(int32_t, VtsStreamHandle, int32_t, const uint32_t*); \
  [[gnu::weak]] int32_t __vtssBRng##name(VtsStreamHandle, int32_t, float*, float, float);                \
  [[gnu::weak]] int32_t __vtsdBRng##name(VtsStreamHandle, int32_t, double*, double, double);             \
  [[gnu::weak]] int32_t __vtsiBRng##name(VtsStreamHandle, int32_t, void*);
#include "random/core/generators.def"
#undef TMK_GENERATOR
}

namespace tmk::row {

#define TMK_GENERATOR(name, state, seed_words, zero, word_bytes, bits, sets)                       \
  constexpr VtsBrngProperties name = {static_cast<int32_t>(sizeof(stream_header) + sizeof(state)), \
                                      seed_words,                                                  \
                                      zero,                                                        \
                                      word_bytes,                                                  \
                                      bits,                                                        \
                                      __vtsBRng##name##InitStream,                                 \
                                      __vtssBRng##name,                                            \
                                      __vtsdBRng##name,                                            \
                                      __vtsiBRng##name};
#include "random/core/generators.def"
#undef TMK_GENERATOR

}  // namespace tmk::row
