// SPDX-License-Identifier: Apache-2.0
// What the groups of tmk-bench-random share: runs of n elements, ours on every tier, and peers that draw one
// element after the other. Each file of laws adds its groups to the list.
#pragma once

#include <gsl/gsl_rng.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "runner.hpp"
#include "tmk/abi/vts.h"

namespace tmk::bench {

constexpr int32_t n = 100'000;

// Room for n elements of the widest output.
inline uint64_t* room() {
  static std::vector<uint64_t> memory(2 * n);
  return memory.data();
}
inline double* doubles() { return reinterpret_cast<double*>(room()); }

inline VtsStreamHandle new_stream(int32_t brng) {
  const uint32_t seed = 7;
  VtsStreamHandle stream = nullptr;
  if (__vtsNewStreamEx(&stream, brng, 1, &seed) != VTS_STATUS_OK) std::abort();
  return stream;
}

// Ours on every tier, then the peers.
template <class Draw>
group drawn(std::string name, int32_t count, int32_t brng, Draw draw, const std::vector<subject>& peers) {
  return {std::move(name), count, [=] {
            std::vector<subject> all = by_tier([=, stream = new_stream(brng)] { draw(stream); });
            all.insert(all.end(), peers.begin(), peers.end());
            return all;
          }};
}

template <class Next>
subject serial(const char* name, Next next) {
  return {name, [=]() mutable {
            auto* r = reinterpret_cast<decltype(next())*>(room());
            for (int32_t i = 0; i < n; ++i) r[i] = next();
          }};
}

template <class Engine, class Distribution>
subject drawn_by(const char* name, Distribution distribution) {
  return serial(name, [engine = Engine(7), distribution]() mutable { return distribution(engine); });
}

inline gsl_rng* gsl_generator() {
  gsl_rng* g = gsl_rng_alloc(gsl_rng_mt19937);
  gsl_rng_set(g, 7);
  return g;
}
template <class Variate>
subject drawn_by_gsl(Variate variate) {
  return serial("GSL", [g = gsl_generator(), variate]() mutable { return variate(g); });
}

void add_continuous(std::vector<group>& groups);
void add_discrete(std::vector<group>& groups);
void add_sampling(std::vector<group>& groups);

}  // namespace tmk::bench
