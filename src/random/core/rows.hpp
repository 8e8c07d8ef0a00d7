// The record of every generator of the registry as a constant.
#pragma once

#include "random/core/states.hpp"
#include "random/core/stream.hpp"

// A row whose generator is still to come links weakly.
#define TMK_PENDING(name)                                                                                    \
  extern "C"                                                                                                 \
      [[gnu::weak]] int32_t __vtsBRng##name##InitStream(int32_t, VtsStreamHandle, int32_t, const uint32_t*); \
  extern "C" [[gnu::weak]] int32_t __vtssBRng##name(VtsStreamHandle, int32_t, float*, float, float);         \
  extern "C" [[gnu::weak]] int32_t __vtsdBRng##name(VtsStreamHandle, int32_t, double*, double, double);      \
  extern "C" [[gnu::weak]] int32_t __vtsiBRng##name(VtsStreamHandle, int32_t, void*);
TMK_PENDING(Sobol)
TMK_PENDING(Niederr)
#undef TMK_PENDING

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
