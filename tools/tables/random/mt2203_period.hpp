// SPDX-License-Identifier: Apache-2.0
// Twist constants whose twister of 69 words, middle 34 and 5 lower bits has period 2^2203 - 1.
//
// With u = x^69 + x^34 and v = x^68 + x^33 the characteristic polynomial of twist constant A is
//   u^27 v^5 + (sum over bits i < 5 of A of u^27 v^(4 - i)) + (sum over bits i >= 5 of A of u^(31 - i)),
// affine in A and of degree 2203. 2^2203 - 1 is prime: it suffices that the polynomial is irreducible.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

constexpr int ring = 69, middle = 34, lower_bits = 5, degree = 2203, polynomial_words = degree / 64 + 1;
using polynomial = std::array<uint64_t, polynomial_words>;

// What each bit of A adds, and the constant part: powers of u divided by powers of x, since v = u / x.
struct affine_term {
  int u_power, x_power;
};
constexpr auto affine_terms = [] {
  std::array<affine_term, 33> terms{};
  for (int i = 0; i < 32; ++i) terms[i] = {31 - i, i < lower_bits ? lower_bits - 1 - i : 0};
  terms[32] = {32, lower_bits};
  return terms;
}();

inline polynomial characteristic_polynomial(uint32_t a) {
  static const auto parts = [] {
    std::array<polynomial, 33> all{};
    for (size_t i = 0; i < all.size(); ++i) {
      const auto [j, k] = affine_terms[i];
      for (int s = j;;
           s = (s - 1) & j) {  // u^j is the sum of x^(69 s + 34 (j - s)), bits of s among those of j
        const int exponent = ring * s + middle * (j - s) - k;
        all[i][exponent / 64] ^= uint64_t{1} << exponent % 64;
        if (s == 0) break;
      }
    }
    return all;
  }();
  polynomial p = parts[32];
  for (int i = 0; i < 32; ++i)
    if (a >> i & 1)
      for (int w = 0; w < polynomial_words; ++w) p[w] ^= parts[i][w];
  return p;
}

struct product128 {
  uint64_t low, high;
};
inline product128 multiply(uint64_t x, uint64_t y) {
  const __m128i p = _mm_clmulepi64_si128(_mm_cvtsi64_si128(static_cast<long long>(x)),
                                         _mm_cvtsi64_si128(static_cast<long long>(y)), 0);
  return {static_cast<uint64_t>(_mm_cvtsi128_si64(p)), static_cast<uint64_t>(_mm_extract_epi64(p, 1))};
}

// A polynomial of prime degree p divides x^(2^p) - x when it is irreducible, and else only as a product of
// linear factors, of which there are two. Residues stay below x^2240, a whole number of words, until the end.
inline bool is_irreducible(const polynomial& f) {
  constexpr int n = polynomial_words, spare = 64 * n - degree;
  polynomial low = f;  // f without its leading term
  low[n - 1] ^= uint64_t{1} << degree % 64;
  polynomial shifted{};  // x^2240 modulo f x^37
  for (int w = n - 1; w >= 0; --w) shifted[w] = low[w] << spare | (w > 0 ? low[w - 1] >> (64 - spare) : 0);

  polynomial x{2};
  for (int round = 0; round < degree; ++round) {
    std::array<uint64_t, 2 * n> square;
    for (int i = 0; i < n; ++i) {
      const product128 p = multiply(x[i], x[i]);
      square[2 * i] = p.low;
      square[2 * i + 1] = p.high;
    }
    for (int top = 2 * n - 1; top >= n; --top) {
      const uint64_t quotient = square[top];
      uint64_t carry = 0;
      for (int w = 0; w < n; ++w) {
        const product128 p = multiply(quotient, shifted[w]);
        square[top - n + w] ^= p.low ^ carry;
        carry = p.high;
      }
      square[top] = carry;  // of lower degree than the quotient was: the word may need another turn
      if (carry != 0) ++top;
    }
    std::copy_n(square.begin(), n, x.begin());
  }
  const uint64_t quotient = x[n - 1] >> (64 - spare);
  x[n - 1] &= ~uint64_t{0} >> spare;
  uint64_t carry = 0;
  for (int w = 0; w < n; ++w) {
    const product128 p = multiply(quotient, low[w]);
    x[w] ^= p.low ^ carry;
    carry = p.high;
  }
  x[0] ^= 2;
  return std::all_of(x.begin(), x.end(), [](uint64_t word) { return word == 0; });
}

// Which upper halves of A, for a given lower one, give a polynomial without small factors. Modulo a small
// irreducible q the polynomial is affine in the 15 free bits of the upper half: those that make it vanish
// solve a linear system, kept in echelon form.
class small_factor_sieve {
 public:
  static constexpr int free_bits = 15;

  explicit small_factor_sieve(int greatest_degree) {
    std::vector<bool> composite(size_t{2} << greatest_degree);
    for (uint32_t q = 2; q < composite.size(); ++q) {
      if (composite[q]) continue;
      const int d = static_cast<int>(std::bit_width(q)) - 1;
      for (uint32_t m = q; d + static_cast<int>(std::bit_width(m)) - 1 <= greatest_degree; ++m)
        composite[multiple(q, m)] = true;
      if (q != 2) systems_.push_back(system_of(q, d));  // x divides none: A is odd in its top bit
    }
  }

  std::vector<bool> bad_upper_halves(uint32_t lower_half) const {
    std::vector<bool> bad(size_t{1} << free_bits);
    for (const auto& s : systems_) {
      uint32_t value = s.residue[32] ^ s.residue[31], solution = 0;
      for (int i = 0; i < 16; ++i)
        if (lower_half >> i & 1) value ^= s.residue[i];
      for (const auto& row : s.echelon)
        if (value & std::bit_floor(row.value)) {
          value ^= row.value;
          solution ^= row.bits;
        }
      if (value != 0) continue;
      bad[solution] = true;
      for (uint32_t g = 1; g < uint32_t{1} << s.kernel.size(); ++g) {
        solution ^= s.kernel[std::countr_zero(g)];
        bad[solution] = true;
      }
    }
    return bad;
  }

 private:
  struct equation {
    uint32_t value, bits;
  };
  struct linear_system {
    std::array<uint32_t, 33> residue;
    std::vector<equation> echelon;  // falling leading bits
    std::vector<uint32_t> kernel;
  };

  static uint32_t multiple(uint32_t x, uint32_t y) {
    uint32_t r = 0;
    for (; y != 0; y >>= 1, x <<= 1)
      if (y & 1) r ^= x;
    return r;
  }

  static linear_system system_of(uint32_t q, int d) {
    const auto times = [&](uint32_t x, uint32_t y) {
      uint64_t r = 0;
      for (int i = 0; i < d; ++i)
        if (y >> i & 1) r ^= uint64_t{x} << i;
      for (int i = 2 * d - 2; i >= d; --i)
        if (r >> i & 1) r ^= uint64_t{q} << (i - d);
      return static_cast<uint32_t>(r);
    };
    const auto power = [&](uint32_t x, uint32_t e) {
      uint32_t r = 1;
      for (; e != 0; e >>= 1, x = times(x, x))
        if (e & 1) r = times(r, x);
      return r;
    };
    const uint32_t x = d == 1 ? 1 : 2;
    const uint32_t u = power(x, ring) ^ power(x, middle), inverse = power(x, (uint32_t{1} << d) - 2);
    linear_system s{};
    for (size_t i = 0; i < s.residue.size(); ++i) {
      const auto [j, k] = affine_terms[i];
      s.residue[i] = times(power(u, static_cast<uint32_t>(j)), power(inverse, static_cast<uint32_t>(k)));
    }
    for (int i = 0; i < free_bits; ++i) {
      equation e{s.residue[16 + i], uint32_t{1} << i};
      for (const auto& row : s.echelon)
        if (e.value & std::bit_floor(row.value)) {
          e.value ^= row.value;
          e.bits ^= row.bits;
        }
      if (e.value == 0) {
        s.kernel.push_back(e.bits);
        continue;
      }
      s.echelon.push_back(e);
      std::sort(s.echelon.begin(), s.echelon.end(), [](auto& a, auto& b) { return a.value > b.value; });
    }
    return s;
  }

  std::vector<linear_system> systems_;
};
