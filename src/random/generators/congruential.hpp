// SPDX-License-Identifier: Apache-2.0
// Multiplicative congruential generators, x <- a x mod m: the state holds the next element, and a jump
// multiplies it by a power of a.
#pragma once

#include <cstdint>

#include "random/generators/requests.hpp"

namespace tmk::rng {

// base^e by squaring from the low bit of e; 1 when e is 0.
template <class Word, class Multiply>
constexpr Word power(Word base, uint64_t e, Multiply multiply) {
  Word result = 1;
  for (; e != 0; e >>= 1, base = multiply(base, base))
    if (e & 1) result = multiply(result, base);
  return result;
}

// multiply(a, x) is the product modulo m; reduce(n, words) makes an element of a seed, which is 1 where that
// gives 0.
template <class State, class Multiply, class Reduce>
int32_t answer_congruential_request(State& s, int32_t method, int32_t n, const uint32_t* params,
                                    decltype(State::a) multiplier, Multiply multiply, Reduce reduce) {
  const auto skip = [&](uint64_t count) -> int32_t {
    s.x = multiply(power(s.a, count, multiply), s.x);
    return VTS_STATUS_OK;
  };
  return answer_request(
      method, n, params,
      [&](int32_t count, const uint32_t* words) -> int32_t {
        const auto x = reduce(count, words);
        s = {x == 0 ? 1 : x, multiplier};
        return VTS_STATUS_OK;
      },
      [&](uint32_t k, uint64_t nstreams) -> int32_t {
        skip(k);
        s.a = power(s.a, nstreams, multiply);
        return VTS_STATUS_OK;
      },
      skip);
}

}  // namespace tmk::rng
