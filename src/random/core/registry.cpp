// The registry: which generators there are, and what an identifier means.
#include <cstddef>

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

#define TMK_GENERATOR(name, state, seed_words, zero, word_bytes, bits, sets) \
  {static_cast<int32_t>(sizeof(tmk::stream_header) + sizeof(tmk::state)),    \
   seed_words,                                                               \
   zero,                                                                     \
   word_bytes,                                                               \
   bits,                                                                     \
   __vtsBRng##name##InitStream,                                              \
   __vtssBRng##name,                                                         \
   __vtsdBRng##name,                                                         \
   __vtsiBRng##name},
VtsBrngProperties __RegBrngsNew[512] = {
#include "random/core/generators.def"
};
#undef TMK_GENERATOR

#define TMK_GENERATOR(name, state, seed_words, zero, word_bytes, bits, sets) sets,
int32_t NumOffsets[512] = {
#include "random/core/generators.def"
};
#undef TMK_GENERATOR
int32_t NRegBrngsNew = 16;
}

namespace {
enum : size_t {
#define TMK_GENERATOR(name, state, seed_words, zero, word_bytes, bits, sets) \
  name##_bytes = sizeof(tmk::stream_header) + sizeof(tmk::state),
#include "random/core/generators.def"
#undef TMK_GENERATOR
};
static_assert(MCG31M1_bytes == 24 && R250_bytes == 1024 && MRG32K3A_bytes == 40 && MCG59_bytes == 32 &&
              WH_bytes == 48 && Sobol_bytes == 11712 && Niederr_bytes == 84288 && MT19937_bytes == 2516 &&
              MT2203_bytes == 308 && SFMT19937_bytes == 2536 && TRNG_bytes == 24 && ARS5_bytes == 68 &&
              PHILOX4X32X10_bytes == 60);
static_assert(sizeof(void*) == 8 ||
              (iAbstract_bytes == 36 && dAbstract_bytes == 52 && sAbstract_bytes == 44));
}  // namespace
