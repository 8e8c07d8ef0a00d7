// SPDX-License-Identifier: Apache-2.0
// The record of every generator of the registry as a constant.
#pragma once

#include "random/core/states.hpp"
#include "random/core/stream.hpp"

namespace tmk::rng::records {

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

}  // namespace tmk::rng::records
