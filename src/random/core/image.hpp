// SPDX-License-Identifier: Apache-2.0
// The persisted form of a stream: header, state as it is in memory, then every chunk with its blob.
// Little-endian, the same on 32-bit and 64-bit builds.
#pragma once

#include <cstdint>
#include <cstdio>

#include "random/core/stream.hpp"

namespace tmk::rng {

struct image_header {
  uint32_t magic;  // the first byte is the version
  uint16_t header_bytes;
  uint16_t filler;
  uint32_t state_bytes;
  uint16_t chunk_count;
  uint16_t chunk_filler;
  int32_t brng_id;
};
static_assert(sizeof(image_header) == 20);

struct image_chunk {
  uint32_t chunk_id;
  uint32_t key[4];  // absent in version 0
  uint32_t data_bytes;
};
static_assert(sizeof(image_chunk) == 24);

constexpr uint32_t image_magic = 0x474E5200;
constexpr uint32_t image_version = 2;

// A stream's file name as the interface gives it: terminated when the length is negative.
class file_name {
 public:
  file_name(const char* name, int32_t length);
  ~file_name();
  file_name(const file_name&) = delete;
  file_name& operator=(const file_name&) = delete;
  const char* text() const { return text_; }  // null without memory

 private:
  char* copy_ = nullptr;
  const char* text_;
};

// Whether the positions in a state that came from outside stay inside its arrays.
bool state_is_sound(VtsStreamHandle stream);

// Whether a state means nothing outside the process that made it.
bool state_holds_addresses(const VtsBrngProperties& record);

}  // namespace tmk::rng
