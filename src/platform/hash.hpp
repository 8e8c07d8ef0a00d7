// SPDX-License-Identifier: Apache-2.0
// The hash at the end of saved images: a change of any one byte changes it.
// G. Fowler, L. C. Noll, K.-P. Vo, FNV-1a.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tmk {

inline std::uint64_t fnv1a(std::span<const std::byte> bytes) {
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const std::byte b : bytes) hash = (hash ^ std::to_integer<std::uint64_t>(b)) * 0x100000001b3;
  return hash;
}

}  // namespace tmk
