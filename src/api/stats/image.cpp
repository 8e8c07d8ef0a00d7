// SPDX-License-Identifier: Apache-2.0
#include "api/stats/image.hpp"

#include <cstring>

#include "api/call/check.hpp"

namespace tmk::detail {

namespace {

constexpr std::size_t magic_bytes = 8, hash_bytes = 8, least_bytes = magic_bytes + 4 + hash_bytes;

}  // namespace

void image_writer::begin(std::span<const char, 8> magic, std::uint32_t version) {
  for (const char c : magic) bytes.push_back(static_cast<std::byte>(c));
  (*this)(version);
}

std::vector<std::byte> image_writer::finish() {
  (*this)(fnv1a(bytes));
  return std::move(bytes);
}

void image_reader::refuse(const std::string& complaint) const {
  detail::refuse(function, "bytes", std::to_string(whole_size) + " bytes", complaint);
}

void image_reader::begin(std::span<const char, 8> magic, std::uint32_t version, const char* content) {
  whole_size = bytes.size();
  if (whole_size < least_bytes) refuse("has " + std::to_string(whole_size) + " bytes, too few for a header");
  if (std::memcmp(bytes.data(), magic.data(), magic.size()) != 0)
    refuse(std::string("does not hold ") + content);
  const auto whole = bytes;
  bytes = bytes.subspan(magic_bytes);
  std::uint32_t found;
  (*this)(found);
  if (found != version)
    detail::refuse(function, "bytes", "version " + std::to_string(found),
                   "has version " + std::to_string(found) + ", want " + std::to_string(version));
  std::uint64_t hash;
  image_reader{function, whole.last(hash_bytes)}(hash);
  if (hash != fnv1a(whole.first(whole_size - hash_bytes))) refuse("is damaged");
  bytes = bytes.first(bytes.size() - hash_bytes);
}

}  // namespace tmk::detail
