// SPDX-License-Identifier: Apache-2.0
// Groups of indices, orders and points through the C++ API, and of fills on two threads.
#include <algorithm>
#include <boost/random/sobol.hpp>
#include <memory>
#include <numeric>
#include <random>
#include <span>
#include <tmk/sampling.hpp>

#include "random_subjects.hpp"

namespace tmk::bench {

namespace {

std::span<double> all_doubles() { return {doubles(), n}; }
std::span<int32_t> all_integers() { return {reinterpret_cast<int32_t*>(room()), n}; }

// Ours on every tier, from one stream that continues.
template <class Draw>
group from_stream(std::string name, Draw draw, const std::vector<subject>& peers) {
  return {std::move(name), n, [=] {
            std::vector<subject> all =
                by_tier([=, g = std::make_shared<stream>(generator::mt19937, 7)] { draw(*g); });
            all.insert(all.end(), peers.begin(), peers.end());
            return all;
          }};
}

group indices_by_weight() {
  std::vector<double> weights(1000);
  std::iota(weights.begin(), weights.end(), 1.0);
  return from_stream(
      "indices of 1000 weights", [law = discrete(weights)](stream& g) { law(g, all_integers()); },
      {drawn_by<std::mt19937>("std", std::discrete_distribution<int>(weights.begin(), weights.end()))});
}

group orders() {
  return from_stream("shuffle", [](stream& g) { shuffle(g, all_integers()); },
                     {{"std", [engine = std::mt19937(7)]() mutable {
                         const auto r = all_integers();
                         std::shuffle(r.begin(), r.end(), engine);
                       }}});
}

constexpr int dimensions = 10;

group points(const char* name, scrambling how, const std::vector<subject>& peers) {
  return from_stream(
      name,
      [=](stream&) {
        sobol_points(all_doubles(), dimensions, {how, 7});
      },
      peers);
}

// Arrays so long that threads and jumps pay; the rows of one and of two threads are to be compared.
group on_threads(const char* name, const distribution::continuous& law, int threads) {
  constexpr std::size_t length = 4'000'000;
  return {name + std::string(threads == 1 ? ", one thread" : ", two threads"), length, [=] {
            return by_tier([=, g = std::make_shared<stream>(generator::philox4x32x10, 7)] {
              static std::vector<double> r(length);
              fill_parallel(*g, r, law, threads);
            });
          }};
}

}  // namespace

void add_sampling(std::vector<group>& groups) {
  groups.push_back(indices_by_weight());
  groups.push_back(orders());
  groups.push_back(points("Sobol points of 10 dimensions", scrambling::none,
                          {serial("boost", [engine = boost::random::sobol(dimensions)]() mutable {
                            return static_cast<double>(engine()) * 0x1p-64;
                          })}));
  groups.push_back(points("the same with Owen's scrambling", scrambling::owen, {}));
  for (const int threads : {1, 2}) {
    groups.push_back(on_threads("4,000,000 uniforms", distribution::uniform{}, threads));
    groups.push_back(on_threads("4,000,000 gamma variates", distribution::gamma{2.5}, threads));
  }
}

}  // namespace tmk::bench
