// SPDX-License-Identifier: Apache-2.0
// Seeds of many streams from one: entropy of any length is hashed to as many words as are wanted, and
// children have entropy of their own.
//
//   tmk::seed_sequence seeds(2026);              or several words, a text, the system's entropy
//   tmk::stream g(tmk::generator::mt19937, seeds.child(17));
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace tmk {

/// Entropy and a spawn key, both words of 32 bits. The words that come of them are those of NumPy's
/// SeedSequence(entropy, spawn_key=...), after M. E. O'Neill's seed_seq_fe (2015): a change of one bit
/// changes about half of all bits, and 128 bits of entropy are kept, so that among n children of one or of
/// many sequences two are alike with probability n^2 / 2^129.
class seed_sequence {
 public:
  /// No words are those of 0, and zeros at the end of up to four words make no difference.
  explicit seed_sequence(std::span<const std::uint32_t> entropy,
                         std::span<const std::uint32_t> spawn_key = {});
  explicit seed_sequence(std::initializer_list<std::uint32_t> entropy) : seed_sequence(std::span(entropy)) {}
  /// The number's words, lowest first. Throws tmk::error for a negative one.
  template <std::integral Seed>
  requires(!std::same_as<Seed, bool> && sizeof(Seed) <= 8) explicit seed_sequence(Seed seed)
      : seed_sequence(static_cast<std::uint64_t>(seed), std::cmp_less(seed, 0)) {}

  /// The text's bytes, four to a word, lowest first and filled up with zeros; then how many there are.
  [[nodiscard]] static seed_sequence of_text(std::string_view text);

  /// 128 bits of the system's entropy, which entropy() shows for a record. Throws std::system_error without a
  /// source.
  [[nodiscard]] static seed_sequence of_system();

  /// The sequence with k after the spawn key: children of different k, and a child and its parent, are
  /// unrelated.
  [[nodiscard]] seed_sequence child(std::uint32_t k) const;

  /// The first `count` words: generate_state(count) in NumPy.
  [[nodiscard]] std::vector<std::uint32_t> words(std::size_t count) const;

  [[nodiscard]] const std::vector<std::uint32_t>& entropy() const { return entropy_; }
  [[nodiscard]] const std::vector<std::uint32_t>& spawn_key() const { return spawn_key_; }

 private:
  seed_sequence(std::uint64_t seed, bool negative);
  std::vector<std::uint32_t> entropy_, spawn_key_;
};

}  // namespace tmk
