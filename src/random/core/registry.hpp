// SPDX-License-Identifier: Apache-2.0
// Records by identifier and by stream.
#pragma once

#include "random/core/stream.hpp"

namespace tmk::rng {

// Null unless the identifier is valid. Rows below zero pass __vtsIsBrngValid, and have no record.
const VtsBrngProperties* find_record(int32_t brng_id);

// The record that a live stream was made by.
inline const VtsBrngProperties& record_of(VtsStreamHandle stream) {
  int32_t row, offset;
  const VtsBrngProperties* table = __vtsGetBrngBaseOffset(header_of(stream).brng_id, &row, &offset);
  return table[row];
}

}  // namespace tmk::rng
