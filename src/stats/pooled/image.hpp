// SPDX-License-Identifier: Apache-2.0
// Saved forms: little-endian words, of which the first is the kind of the content, and a hash of all before
// it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "platform/guarded.hpp"
#include "platform/hash.hpp"
#include "stats/pooled/handles.hpp"

namespace tmk::stats::pooled {

// No count of values is above it; sums of two still fit.
constexpr int64_t most_values = int64_t{1} << 53;

template <class Value>
using word_of = std::conditional_t<sizeof(Value) == 8, uint64_t, uint32_t>;

struct image_kind {
  uint64_t name;  // eight characters
  uint32_t version;
};
constexpr uint64_t name_word(const char (&name)[9]) {
  uint64_t word = 0;
  for (unsigned k = 0; k < 8; ++k) word |= static_cast<uint64_t>(name[k]) << 8 * k;
  return word;
}

// The length of what is written to it.
struct image_length {
  int64_t bytes = 0;
  template <class Value>
  void operator()(const Value&) {
    bytes += static_cast<int64_t>(sizeof(Value));
  }
};

struct image_writer {
  std::byte* end;
  template <class Value>
  void operator()(const Value& value) {
    const auto word = std::bit_cast<word_of<Value>>(value);
    for (unsigned k = 0; k < sizeof word; ++k) *end++ = static_cast<std::byte>(word >> 8 * k & 0xFF);
  }
};

struct image_reader {
  std::span<const std::byte> bytes;

  // The caller has made sure by `holds`, or by the length of a header, that the bytes are there.
  template <class Value>
  void operator()(Value& value) {
    word_of<Value> word = 0;
    for (unsigned k = 0; k < sizeof word; ++k) word |= std::to_integer<word_of<Value>>(bytes[k]) << 8 * k;
    bytes = bytes.subspan(sizeof word);
    value = std::bit_cast<Value>(word);
  }
  template <class Value>
  Value next() {
    Value value;
    (*this)(value);
    return value;
  }
  bool holds(uint64_t words) const { return bytes.size() / 8 >= words; }
};

// A reader of the content: of the bytes between version and hash, all of which are checked. Throws a status.
inline image_reader content_of(std::span<const std::byte> image, const image_kind& kind) {
  constexpr size_t hash_bytes = 8, header_bytes = 12;
  if (image.size() < header_bytes + hash_bytes) throw failed{TMK_SS_BAD_IMAGE_SIZE};
  image_reader read{image};
  if (read.next<uint64_t>() != kind.name) throw failed{TMK_SS_BAD_IMAGE};
  if (read.next<uint32_t>() != kind.version) throw failed{TMK_SS_BAD_IMAGE_VERSION};
  image_reader hash{image.last(hash_bytes)};
  if (hash.next<uint64_t>() != fnv1a(image.first(image.size() - hash_bytes)))
    throw failed{TMK_SS_DAMAGED_IMAGE};
  read.bytes = read.bytes.first(read.bytes.size() - hash_bytes);
  return read;
}

// The two entry points that save: visit(object, sink) hands every word of the content to the sink.
template <class Object, class Visit>
int64_t image_size(const Object* object, const Visit& visit) {
  if (object == nullptr) return VTS_STATUS_SS_TASK_NULL;
  image_length length{8 + 4 + 8};
  visit(*object, length);
  return length.bytes;
}

template <class Object, class Visit>
int32_t save_image(const Object* object, const image_kind& kind, void* image, int64_t size,
                   const Visit& visit) {
  if (object == nullptr) return VTS_STATUS_SS_TASK_NULL;
  if (image == nullptr) return VTS_STATUS_SS_DATA_NULL;
  if (size != image_size(object, visit)) return TMK_SS_BAD_IMAGE_SIZE;
  auto* const first = static_cast<std::byte*>(image);
  image_writer write{first};
  write(kind.name);
  write(kind.version);
  visit(*object, write);
  write(fnv1a({first, write.end}));
  return 0;
}

// Makes an object by make(reader), which throws a status for content that it refuses.
template <class Object, class Make>
int32_t load_image(Object** place, const image_kind& kind, const void* image, int64_t size,
                   const Make& make) {
  if (size < 0) return TMK_SS_BAD_IMAGE_SIZE;
  if (size > 0 && image == nullptr) return VTS_STATUS_SS_DATA_NULL;
  return make_handle(place, [&] {
    image_reader read = content_of({static_cast<const std::byte*>(image), static_cast<size_t>(size)}, kind);
    return make(read);
  });
}

}  // namespace tmk::stats::pooled
