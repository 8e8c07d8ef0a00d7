// SPDX-License-Identifier: Apache-2.0
// What tests of streams share: an owner, blobs, and a generator that a caller registers.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "random/core/stream.hpp"
#include "tmk/abi/serv.h"
#include "tmk/abi/vts.h"

struct owned_stream {
  VtsStreamHandle handle = nullptr;
  owned_stream() = default;
  owned_stream(int32_t brng_id, std::vector<uint32_t> seeds) {
    const auto n = static_cast<int32_t>(seeds.size());
    EXPECT_EQ(__vtsNewStreamEx(&handle, brng_id, n, seeds.data()), 0) << std::hex << brng_id;
  }
  owned_stream(const owned_stream&) = delete;
  ~owned_stream() { __vtsDeleteStream(&handle); }
  operator VtsStreamHandle() const { return handle; }
};

// n elements of the generator's words, as bytes.
inline std::vector<unsigned char> draw_bytes(VtsStreamHandle stream, int32_t n) {
  VtsBrngProperties record;
  EXPECT_EQ(__vtsGetBrngProperties(__vtsGetStreamStateBrng(stream), &record), 0);
  std::vector<unsigned char> bytes(static_cast<size_t>(n) * static_cast<size_t>(record.wordBytes));
  EXPECT_EQ(record.iBrng(stream, n, bytes.data()), 0);
  return bytes;
}

inline void* new_blob(uint32_t bytes, int fill) {
  void* blob = tmk_serv_allocate(bytes, 128);
  return std::memset(blob, fill, bytes);
}

// Counts upwards; keeps its last request.
struct counting_state {
  uint32_t next;
  int32_t method, n;
  uint32_t params[2];
};

inline VtsBrngProperties counting_record() {
  return {sizeof(tmk::rng::stream_header) + sizeof(counting_state),
          1,
          1,
          4,
          32,
          [](int32_t method, VtsStreamHandle stream, int32_t n, const uint32_t* params) -> int32_t {
            auto& s = tmk::rng::state_of<counting_state>(stream);
            s = {method == VTS_INIT_SEED ? params[0] : s.next, method, n, {params[0], 0}};
            if (method == VTS_INIT_SKIPAHEAD) s.params[1] = params[1];
            return params[0] == 13 ? VTS_STATUS_BAD_ARGUMENT : VTS_STATUS_OK;
          },
          [](VtsStreamHandle, int32_t, float*, float, float) -> int32_t { return VTS_STATUS_OK; },
          [](VtsStreamHandle, int32_t, double*, double, double) -> int32_t { return VTS_STATUS_OK; },
          [](VtsStreamHandle stream, int32_t n, void* r) -> int32_t {
            for (int32_t i = 0; i < n; ++i)
              static_cast<uint32_t*>(r)[i] = tmk::rng::state_of<counting_state>(stream).next++;
            return VTS_STATUS_OK;
          }};
}

inline int32_t counting_id() {
  static const int32_t id = [] {
    const VtsBrngProperties record = counting_record();
    return __vtsRegisterBrng(&record);
  }();
  return id;
}
