// The record of every generator of the registry as a constant.
#pragma once

#include "random/core/states.hpp"
#include "random/core/stream.hpp"

// A row whose generator is still to come links weakly; an archive does not bring members in for weak names.
#define TMK_LINK_MCG31M1
#define TMK_LINK_R250 [[gnu::weak]]
#define TMK_LINK_MRG32K3A [[gnu::weak]]
#define TMK_LINK_MCG59
#define TMK_LINK_WH
#define TMK_LINK_Sobol [[gnu::weak]]
#define TMK_LINK_Niederr [[gnu::weak]]
#define TMK_LINK_MT19937
#define TMK_LINK_MT2203
#define TMK_LINK_iAbstract
#define TMK_LINK_dAbstract
#define TMK_LINK_sAbstract
#define TMK_LINK_SFMT19937
#define TMK_LINK_TRNG [[gnu::weak]]
#define TMK_LINK_ARS5 [[gnu::weak]]
#define TMK_LINK_PHILOX4X32X10 [[gnu::weak]]

extern "C" {
#define TMK_GENERATOR(name, state, seed_words, zero, word_bytes, bits, sets)                               \
  TMK_LINK_##name int32_t __vtsBRng##name##InitStream(int32_t, VtsStreamHandle, int32_t, const uint32_t*); \
  TMK_LINK_##name int32_t __vtssBRng##name(VtsStreamHandle, int32_t, float*, float, float);                \
  TMK_LINK_##name int32_t __vtsdBRng##name(VtsStreamHandle, int32_t, double*, double, double);             \
  TMK_LINK_##name int32_t __vtsiBRng##name(VtsStreamHandle, int32_t, void*);
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
