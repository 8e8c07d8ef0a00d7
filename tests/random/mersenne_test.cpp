// SPDX-License-Identifier: Apache-2.0
// MT19937, MT2203 and SFMT19937: published outputs, sequences, seeds, and the period of the small twisters.
#include <sstream>

#include "random/core/states.hpp"
#include "random/generators/mt2203_data.hpp"
#include "random/plain_generators.hpp"
#include "sanitized.hpp"

namespace {

TEST(mersenne, published_outputs) {
  // M. Matsumoto and T. Nishimura, mt19937ar.out; M. Saito and M. Matsumoto, SFMT.19937.out (array seeds).
  const struct {
    int32_t id;
    std::vector<uint32_t> key, outputs;
  } cases[] = {
      {VTS_BRNG_MT19937,
       {0x123, 0x234, 0x345, 0x456},
       {1067595299, 955945823, 477289528, 4107218783, 4228976476}},
      {VTS_BRNG_SFMT19937,
       {0x1234, 0x5678, 0x9ABC, 0xDEF0},
       {2920711183, 3885745737, 3501893680, 856470934, 1421864068, 277361036, 1518638004, 2328404353,
        3355513634, 64329189, 1624587673, 3508467182}},
  };
  for (const auto& c : cases) {
    const owned_stream stream(c.id, c.key);
    EXPECT_EQ(draw_words(stream, static_cast<int32_t>(c.outputs.size())), c.outputs) << std::hex << c.id;
  }
  const owned_stream stream(VTS_BRNG_MT19937, cases[0].key);
  EXPECT_EQ(draw_words(stream, 1000).back(), 3460025646u);
}

double unsigned_value(const uint32_t* x, double a, double b) { return *x * ((b - a) * 0x1p-32) + a; }
double signed_value(const uint32_t* x, double a, double b) {
  return static_cast<int32_t>(*x) * ((b - a) * 0x1p-32) + (a + b) * 0.5;
}

// The standard library's engine in the state of a stream that has drawn nothing.
template <class Engine, class State>
plain_generator plain_twister(int32_t id) {
  const owned_stream stream(id, {3, 1, 4});
  std::stringstream text;
  for (const uint32_t word : tmk::rng::state_of<State>(stream).mt) text << word << ' ';
  text << Engine::state_size;
  Engine engine;
  text >> engine;
  return {id,
          {3, 1, 4},
          [engine](uint32_t* r) mutable { *r = static_cast<uint32_t>(engine()); },
          unsigned_value,
          unsigned_value};
}

template <size_t Set>
using small_twister = std::mersenne_twister_engine<uint32_t, 32, 69, 34, 5, tmk::rng::mt2203_rows[3 * Set],
                                                   12, 0xFFFFFFFF, 7, tmk::rng::mt2203_rows[3 * Set + 1], 15,
                                                   tmk::rng::mt2203_rows[3 * Set + 2], 18, 1812433253>;

// Lanes as four words, with carries from word to word where a lane is shifted.
struct plain_sfmt {
  std::vector<uint32_t> w;
  size_t i = 0;
  uint32_t operator()() {
    constexpr uint32_t mask[] = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};
    if (i % 4 == 0) {
      const auto at = [&](size_t word) -> uint32_t& { return w[word % 624]; };
      uint32_t fresh[4];
      for (size_t j = 0; j < 4; ++j) {
        const uint32_t from_below = j > 0 ? at(i + j - 1) >> 24 : 0;
        const uint32_t from_above = j < 3 ? at(i + 616 + j + 1) << 24 : 0;
        fresh[j] = at(i + j) ^ (at(i + j) << 8 | from_below) ^ (at(i + 488 + j) >> 11 & mask[j]) ^
                   (at(i + 616 + j) >> 8 | from_above) ^ at(i + 620 + j) << 18;
      }
      for (size_t j = 0; j < 4; ++j) at(i + j) = fresh[j];
    }
    return w[i++ % 624];
  }
};

TEST(mersenne, draws_are_the_plain_recurrences) {
  expect_plain_sequence(plain_twister<std::mt19937, tmk::rng::mt19937_state>(VTS_BRNG_MT19937));
  expect_plain_sequence(plain_twister<small_twister<0>, tmk::rng::mt2203_state>(VTS_BRNG_MT2203));
  expect_plain_sequence(plain_twister<small_twister<6023>, tmk::rng::mt2203_state>(VTS_BRNG_MT2203 + 6023));
  const owned_stream stream(VTS_BRNG_SFMT19937, {2, 7, 1});
  const auto& words = tmk::rng::state_of<tmk::rng::sfmt19937_state>(stream).sfmt;
  plain_sfmt plain{{std::begin(words), std::end(words)}};
  expect_plain_sequence({VTS_BRNG_SFMT19937,
                         {2, 7, 1},
                         [plain](uint32_t* r) mutable { *r = plain(); },
                         signed_value,
                         signed_value});
}

TEST(mersenne, keys) {
  for (const int32_t id : {int32_t{VTS_BRNG_MT19937}, VTS_BRNG_MT2203 + 1, int32_t{VTS_BRNG_SFMT19937}}) {
    const owned_stream none(id, {}), one(id, {1});
    EXPECT_EQ(draw_words(none, 1000), draw_words(one, 1000)) << std::hex << id;
    // Every word of a key counts, however long it is.
    std::vector<uint32_t> key(1500, 9);
    const owned_stream long_key(id, key);
    key.back() = 10;
    const owned_stream other(id, key);
    EXPECT_NE(draw_words(long_key, 1000), draw_words(other, 1000)) << std::hex << id;
  }
}

// Polynomials over GF(2), lowest coefficient first.
using polynomial = std::vector<bool>;

// The shortest linear recurrence that a sequence obeys (Berlekamp and Massey), as its minimal polynomial.
polynomial minimal_polynomial(const std::vector<bool>& s) {
  std::vector<bool> c{true}, previous{true};
  size_t length = 0, shift = 1;
  for (size_t k = 0; k < s.size(); ++k, ++shift) {
    bool discrepancy = false;
    for (size_t i = 0; i < c.size() && i <= k; ++i) discrepancy ^= c[i] && s[k - i];
    if (!discrepancy) continue;
    const std::vector<bool> before = c;
    if (c.size() < previous.size() + shift) c.resize(previous.size() + shift);
    for (size_t i = 0; i < previous.size(); ++i) c[i + shift] = c[i + shift] ^ previous[i];
    if (2 * length > k) continue;
    length = k + 1 - length;
    previous = before;
    shift = 0;
  }
  c.resize(length + 1);
  std::reverse(c.begin(), c.end());
  return c;
}

// Of degree 2203, a prime: irreducible means x^(2^2203) = x, since no more than two factors can be linear.
bool is_irreducible_2203(const polynomial& f) {
  constexpr size_t degree = 2203, words = 2 * degree / 64 + 1;
  if (f.size() != degree + 1) return false;
  uint64_t shifted[64][words] = {};  // f times x^0 to x^63
  for (size_t k = 0; k < 64; ++k)
    for (size_t i = 0; i <= degree; ++i) shifted[k][(i + k) / 64] |= uint64_t{f[i]} << (i + k) % 64;
  std::vector<uint64_t> x(words), square(words);
  x[0] = 2;
  for (size_t round = 0; round < degree; ++round) {
    std::fill(square.begin(), square.end(), 0);
    for (size_t i = 0; i < degree; ++i) square[2 * i / 64] |= (x[i / 64] >> i % 64 & 1) << 2 * i % 64;
    for (size_t top = 2 * degree - 1; top-- > degree;)
      if (square[top / 64] >> top % 64 & 1) {
        const size_t shift = top - degree;
        for (size_t i = shift / 64; i <= top / 64; ++i) square[i] ^= shifted[shift % 64][i - shift / 64];
      }
    x.swap(square);
  }
  const uint64_t one = x[0];
  x[0] = 0;
  return one == 2 && std::all_of(x.begin(), x.end(), [](uint64_t word) { return word == 0; });
}

TEST(mersenne, small_twisters_have_their_full_period) {
  for (const int32_t set : sanitized ? std::vector{2500} : std::vector{0, 1, 2, 3, 2500, 6023}) {
    const owned_stream stream(VTS_BRNG_MT2203 + set, {1});
    std::vector<bool> bits;
    for (const uint32_t word : draw_words(stream, 2 * 2203 + 64)) bits.push_back(word >> 31);
    EXPECT_TRUE(is_irreducible_2203(minimal_polynomial(bits))) << set;
  }
}

}  // namespace
