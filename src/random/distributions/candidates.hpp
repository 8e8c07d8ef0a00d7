// SPDX-License-Identifier: Apache-2.0
// Laws by rejection. Candidate j of a stream owns uniforms k j to k j + k - 1, k fixed by the law and its
// parameters, and gives one variate or none. As many candidates are drawn as variates are missing, never one
// more: the last candidate drawn is the last that was accepted, so that the stream ends just after it, and
// a sequence does not depend on how it is cut into calls.
#pragma once

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>

#include "random/core/chunk_kinds.hpp"
#include "random/core/stream.hpp"
#include "random/distributions/precision.hpp"
#include "tmk/abi/serv.h"

namespace tmk::rng {

// A law accepts half of its candidates or more: that many rejected in a row come from a generator that
// repeats itself.
constexpr int32_t most_rejected_in_a_row = 1 << 12;

// candidates(count, r) draws `count` candidates, at most a block, writes the accepted ones to r in their
// order (r has room for all), and returns how many they are, or a negative status.
template <class T, class Candidates>
int32_t fill_with_accepted(int32_t n, T* r, Candidates candidates) {
  for (int32_t rejected = 0; n > 0;) {
    const int32_t count = std::min(n, distribution_block);
    const int32_t kept = candidates(count, r);
    if (kept < 0) return kept;
    rejected = kept == 0 ? rejected + count : 0;
    if (rejected >= most_rejected_in_a_row) return VTS_STATUS_BAD_ARGUMENT;
    n -= kept;
    r += kept;
  }
  return VTS_STATUS_OK;
}

// Candidates of any count by those of a block.
template <class T, class Candidates>
int32_t candidates_in_blocks(int32_t n, T* r, Candidates candidates) {
  int32_t kept = 0;
  for (int32_t count; n > 0; n -= count) {
    count = std::min(n, distribution_block);
    const int32_t now = candidates(count, r + kept);
    if (now < 0) return now;
    kept += now;
  }
  return kept;
}

// What a law computes of its parameters once, kept in a chunk of the stream, which copies and saved images
// carry along. A SetUp is a plain struct of fixed layout with
//   static constexpr chunk_kind kind;
//   using parameters = <a plain struct with ==>;  parameters of;   its first member
//   static bool accepts(const parameters&);       whether the law has these parameters
//   explicit SetUp(const parameters&);            every byte determined by them
// The one of the last call with other parameters is replaced. Null without memory.
template <class SetUp>
const SetUp* attached_set_up(VtsStreamHandle stream, const typename SetUp::parameters& p) {
  constexpr uint32_t bytes = bytes_of_kind(SetUp::kind);
  static_assert(sizeof(SetUp) <= bytes && std::is_trivially_copyable_v<SetUp>);
  void* found = __vtsSearchChunk(stream, SetUp::kind);
  if (found != nullptr && static_cast<SetUp*>(found)->of == p) return static_cast<SetUp*>(found);
  if (found == nullptr) {
    found = tmk_serv_allocate(bytes, stream_alignment);
    if (found == nullptr) return nullptr;
    std::memset(found, 0, bytes);
    if (__vtsAddChunk(stream, SetUp::kind, nullptr, found, bytes) < 0) {
      tmk_serv_deallocate(found);
      return nullptr;
    }
  }
  return new (found) SetUp(p);
}

// A loaded chunk is used when its parameters are those of a law; what follows from them is computed anew,
// since a draw relies on it. False for parameters that no law has.
template <class SetUp>
bool renew_set_up(void* blob) {
  const typename SetUp::parameters p = static_cast<SetUp*>(blob)->of;
  if (!SetUp::accepts(p)) return false;
  new (blob) SetUp(p);
  return true;
}

}  // namespace tmk::rng
