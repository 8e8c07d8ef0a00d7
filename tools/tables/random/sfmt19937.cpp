// SPDX-License-Identifier: Apache-2.0
// Prints the characteristic polynomial of the 156-lane recurrence: the minimal polynomial of a linear
// functional of its states, by the algorithm of Berlekamp and Massey. A functional or a state that misses a
// factor shows by a degree below the dimension, and the next one is tried.
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr int lanes = 156, degree = 32 * 4 * lanes, words = degree / 64 + 2;
using lane = std::array<uint32_t, 4>;
using polynomial = std::vector<uint64_t>;

lane shift_left_8(const lane& x) {
  return {x[0] << 8, x[1] << 8 | x[0] >> 24, x[2] << 8 | x[1] >> 24, x[3] << 8 | x[2] >> 24};
}
lane shift_right_8(const lane& x) {
  return {x[0] >> 8 | x[1] << 24, x[1] >> 8 | x[2] << 24, x[2] >> 8 | x[3] << 24, x[3] >> 8};
}

// One bit of each of the lanes that follow a random state: the parity of some of the lane's bits.
std::vector<bool> sequence(uint32_t seed, size_t length) {
  constexpr lane mask = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};
  std::mt19937 engine(seed);
  std::vector<lane> w(lanes);
  for (lane& x : w)
    for (uint32_t& word : x) word = engine();
  lane functional;
  for (uint32_t& word : functional) word = engine();
  std::vector<bool> bits(length);
  for (size_t k = 0; k < length; ++k) {
    lane& here = w[k % lanes];
    const lane &partner = w[(k + 122) % lanes], &before = w[(k + lanes - 2) % lanes],
               &last = w[(k + lanes - 1) % lanes];
    const lane up = shift_left_8(here), down = shift_right_8(before);
    uint32_t parity = 0;
    for (int j = 0; j < 4; ++j) {
      here[j] ^= up[j] ^ (partner[j] >> 11 & mask[j]) ^ down[j] ^ last[j] << 18;
      parity ^= here[j] & functional[j];
    }
    bits[k] = std::popcount(parity) % 2;
  }
  return bits;
}

// The connection polynomial of the shortest recurrence, and its length.
polynomial shortest_recurrence(const std::vector<bool>& s, int& length) {
  polynomial c(words), previous(words), recent(words);  // recent: bit i is s[k - i]
  c[0] = previous[0] = 1;
  length = 0;
  int shift = 1;
  for (int k = 0; k < static_cast<int>(s.size()); ++k, ++shift) {
    for (int i = words - 1; i > 0; --i) recent[i] = recent[i] << 1 | recent[i - 1] >> 63;
    recent[0] = recent[0] << 1 | s[k];
    uint64_t discrepancy = 0;
    for (int i = 0; i <= length / 64; ++i) discrepancy ^= c[i] & recent[i];
    if (std::popcount(discrepancy) % 2 == 0) continue;
    const bool longer = 2 * length <= k;
    const polynomial before = longer ? c : polynomial();
    const int whole = shift / 64, part = shift % 64;
    for (int i = words - 1; i >= whole; --i) {
      uint64_t shifted = previous[i - whole] << part;
      if (part != 0 && i > whole) shifted |= previous[i - whole - 1] >> (64 - part);
      c[i] ^= shifted;
    }
    if (!longer) continue;
    length = k + 1 - length;
    previous = before;
    shift = 0;
  }
  return c;
}

}  // namespace

int main() {
  int length = 0;
  polynomial c;
  for (uint32_t seed = 1; length != degree; ++seed)
    c = shortest_recurrence(sequence(seed, 2 * degree + 64), length);
  // The polynomial is the connection polynomial with its coefficients in reverse.
  std::printf(
      "// Made by tools/tables/random/sfmt19937.cpp: coefficients of the characteristic polynomial of one "
      "lane's\n"
      "// step, lowest first, without the leading one, of x^%d.\n"
      "#pragma once\n\n#include <cstdint>\n\nnamespace tmk::rng {\n\n"
      "constexpr uint64_t sfmt19937_polynomial[%d] = {\n",
      degree, degree / 64);
  for (int i = 0; i < degree / 64; ++i) {
    uint64_t word = 0;
    for (int bit = 0; bit < 64; ++bit) {
      const int mirrored = degree - (64 * i + bit);
      word |= (c[mirrored / 64] >> mirrored % 64 & 1) << bit;
    }
    std::printf("%s0x%016llX,%s", i % 5 == 0 ? "    " : " ", static_cast<unsigned long long>(word),
                i % 5 == 4 || i == degree / 64 - 1 ? "\n" : "");
  }
  std::puts("};\n\n}  // namespace tmk::rng");
}
