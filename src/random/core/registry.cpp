// SPDX-License-Identifier: Apache-2.0
// The registry: which generators there are, and what an identifier means.
#include "random/core/registry.hpp"

#include "random/core/records.hpp"

namespace {
using namespace tmk::rng;

constexpr int32_t first_current_id = 0x100000;
constexpr int32_t legacy_rows = 281;

static_assert(records::MCG31M1.stateBytes == 24 && records::R250.stateBytes == 1024 &&
              records::MRG32K3A.stateBytes == 40 && records::MCG59.stateBytes == 32 &&
              records::WH.stateBytes == 48 && records::Sobol.stateBytes == 11712 &&
              records::Niederr.stateBytes == 84288 && records::MT19937.stateBytes == 2516 &&
              records::MT2203.stateBytes == 308 && records::SFMT19937.stateBytes == 2536 &&
              records::TRNG.stateBytes == 24 && records::ARS5.stateBytes == 68 &&
              records::PHILOX4X32X10.stateBytes == 60);
static_assert(sizeof(void*) == 8 ||
              (records::iAbstract.stateBytes == 36 && records::dAbstract.stateBytes == 52 &&
               records::sAbstract.stateBytes == 44));

}  // namespace

extern "C" {

#define TMK_GENERATOR(name, state, seed_words, zero, word_bytes, bits, sets) records::name,
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

int32_t __vtsRegisterBrng(const VtsBrngProperties* properties) {
  const VtsBrngProperties& p = *properties;
  const struct {
    bool refused;
    int32_t status;
  } checks[] = {
      {p.stateBytes < 0, VTS_STATUS_BAD_STATE_SIZE},
      {p.wordBytes != 4 && p.wordBytes != 8 && p.wordBytes != 16, VTS_STATUS_BAD_WORD_SIZE},
      {p.seedWords < 1, VTS_STATUS_BAD_SEED_COUNT},
      {p.bitsPerWord < 1, VTS_STATUS_BAD_BIT_COUNT},
      {!p.dBrng || !p.sBrng || !p.iBrng || !p.initStream, VTS_STATUS_NULL_CALLBACK},
  };
  for (const auto& check : checks)
    if (check.refused) return check.status;

  const int32_t row = NRegBrngsNew++;
  __RegBrngsNew[row] = p;
  NumOffsets[row] = 1;
  return (row << 20) + first_current_id;
}

int32_t __vtsGetNumRegBrngs(void) { return NRegBrngsNew; }

VtsBrngProperties* __vtsGetBrngBaseOffset(int32_t brngId, int32_t* row, int32_t* offset) {
  *offset = parameter_set(brngId);
  if (brngId >= first_current_id) {
    *row = (brngId >> 20) - 1;
    return __RegBrngsNew;
  }
  *row = brngId >= 4 && brngId <= 276 ? 4 : brngId;
  return __RegBrngs;
}

int32_t __vtsIsBrngValid(const VtsBrngProperties* table, int32_t row, int32_t offset) {
  const bool valid = table == __RegBrngs ? row < legacy_rows : row < NRegBrngsNew && offset < NumOffsets[row];
  return valid ? VTS_STATUS_OK : VTS_STATUS_INVALID_BRNG;
}

int32_t __vtsGetBrngProperties(int32_t brngId, VtsBrngProperties* properties) {
  const VtsBrngProperties* record = find_record(brngId);
  if (record == nullptr) return VTS_STATUS_INVALID_BRNG;
  *properties = *record;
  return VTS_STATUS_OK;
}

}  // extern "C"

const VtsBrngProperties* tmk::rng::find_record(int32_t brng_id) {
  int32_t row, offset;
  const VtsBrngProperties* table = __vtsGetBrngBaseOffset(brng_id, &row, &offset);
  return row >= 0 && __vtsIsBrngValid(table, row, offset) == VTS_STATUS_OK ? table + row : nullptr;
}
