// SPDX-License-Identifier: Apache-2.0
// What images of accumulators share: little-endian words, and a hash of all before it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "api/call/hash.hpp"

namespace tmk::detail {

// No count of values is above it; sums of two still fit.
constexpr std::int64_t most_values = std::int64_t{1} << 53;

template <class Value>
using word_of = std::conditional_t<sizeof(Value) == 8, std::uint64_t, std::uint32_t>;

struct image_writer {
  std::vector<std::byte> bytes;

  template <class Value>
  void operator()(const Value& value) {
    const auto word = std::bit_cast<word_of<Value>>(value);
    for (unsigned k = 0; k < sizeof word; ++k) bytes.push_back(static_cast<std::byte>(word >> 8 * k & 0xFF));
  }
  // Magic and version; `finish` adds the hash.
  void begin(std::span<const char, 8> magic, std::uint32_t version);
  std::vector<std::byte> finish();
};

struct image_reader {
  const char* function;
  std::span<const std::byte> bytes;
  std::size_t whole_size = 0;  // of the image

  // The bytes are there: it was asked by `holds`, or the header's size is known.
  template <class Value>
  void operator()(Value& value) {
    word_of<Value> word = 0;
    for (unsigned k = 0; k < sizeof word; ++k) word |= std::to_integer<word_of<Value>>(bytes[k]) << 8 * k;
    bytes = bytes.subspan(sizeof word);
    value = std::bit_cast<Value>(word);
  }
  bool holds(std::uint64_t words) const { return bytes.size() / 8 >= words; }

  // Checks length, magic, version and hash, and leaves the bytes between version and hash.
  void begin(std::span<const char, 8> magic, std::uint32_t version, const char* content);
  [[noreturn]] void refuse(const std::string& complaint) const;
};

}  // namespace tmk::detail
