// SPDX-License-Identifier: Apache-2.0
// Prints 273 sets of four moduli and multipliers. In a set the moduli are primes in falling order with
// coprime (m - 1)/2, so that the periods multiply; each multiplier is the largest primitive root from 112 to
// 127 that the set does not use yet; and the lattices of the components and of their combination pass
// spectral tests. Sets 0 to 5 and 272 are given and obey the rule; the others follow greedily from the
// largest primes, but for 271, which starts at the smallest.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <numeric>
#include <optional>
#include <vector>

#include "lattice.hpp"

namespace {

constexpr int count = 273, lowest = 16718909, highest = 16776971, least_root = 112, greatest_root = 127;
constexpr double component_threshold = 0.35, combination_threshold = 0.25;  // of the figures of merit

struct parameter_set {
  std::array<int, 4> modulus, multiplier;
  bool operator==(const parameter_set&) const = default;
};

const std::map<int, parameter_set> given = {
    {0, {{16770647, 16770643, 16770623, 16770617}, {125, 117, 127, 126}}},
    {1, {{16770311, 16770283, 16770263, 16770209}, {127, 126, 125, 123}}},
    {2, {{16769807, 16769771, 16769749, 16769663}, {125, 119, 123, 126}}},
    {3, {{16769591, 16769537, 16769479, 16769387}, {123, 125, 122, 126}}},
    {4, {{16765883, 16765877, 16765807, 16765739}, {125, 126, 117, 127}}},
    {5, {{16764731, 16764647, 16764623, 16764619}, {120, 126, 127, 119}}},
    {272, {{16766363, 16766359, 16766327, 16766231}, {126, 127, 125, 124}}}};

std::vector<int> prime_factors(int n) {
  std::vector<int> factors;
  for (int p = 2; p * p <= n; ++p) {
    if (n % p != 0) continue;
    factors.push_back(p);
    while (n % p == 0) n /= p;
  }
  if (n > 1) factors.push_back(n);
  return factors;
}

int64_t power_mod(int64_t base, int64_t e, int64_t m) {
  int64_t r = 1;
  for (; e > 0; e >>= 1, base = base * base % m)
    if (e & 1) r = r * base % m;
  return r;
}

// Of every prime of the range, the primitive roots among the multipliers, the largest first.
const std::map<int, std::vector<int>, std::greater<>>& roots() {
  static const auto all = [] {
    std::map<int, std::vector<int>, std::greater<>> of;
    for (int m = lowest; m <= highest; ++m) {
      if (prime_factors(m).front() != m) continue;
      const auto factors = prime_factors(m - 1);
      auto& list = of[m];
      for (int a = greatest_root; a >= least_root; --a)
        if (std::none_of(factors.begin(), factors.end(),
                         [&](int p) { return power_mod(a, (m - 1) / p, m) == 1; }))
          list.push_back(a);
    }
    return of;
  }();
  return all;
}

// The distance between the hyperplanes of all t-tuples compared with the least that any lattice of this
// density has: powers[i] is a^i mod m.
double figure_of_merit(integer m, const std::vector<integer>& powers, size_t t) {
  constexpr double hermite[] = {0, 1, 4.0 / 3, 2, 4, 8, 64.0 / 3};  // constants to the power t
  basis b(t, std::vector<integer>(t));
  b[0][0] = m;
  for (size_t i = 1; i < t; ++i) {
    b[i][0] = -powers[i];
    b[i][i] = 1;
  }
  const auto dimension = static_cast<double>(t);
  return std::exp(0.5 * std::log(static_cast<double>(shortest_vector(b).squared())) -
                  (0.5 * std::log(hermite[t]) + std::log(static_cast<double>(m))) / dimension);
}

bool component_passes(int m, int a) {
  static std::map<std::pair<int, int>, bool> known;
  const auto [at, fresh] = known.try_emplace({m, a});
  if (fresh) {
    std::vector<integer> powers;
    for (int i = 0; i < 6; ++i) powers.push_back(power_mod(a, i, m));
    at->second = true;
    for (const size_t t : {4, 5, 6})
      at->second = at->second && figure_of_merit(m, powers, t) >= component_threshold;
  }
  return at->second;
}

// The combination is a generator modulo the product; its powers come from the components' by remainders.
bool combination_passes(const std::vector<int>& moduli, const std::vector<int>& multipliers) {
  integer product = 1;
  std::vector<integer> powers(6);
  for (size_t j = 0; j < moduli.size(); ++j) {
    const int64_t m = moduli[j];
    const int64_t inverse = power_mod(static_cast<int64_t>(product % m), m - 2, m);
    for (size_t i = 0; i < powers.size(); ++i) {
      const int64_t gap =
          (power_mod(multipliers[j], static_cast<int64_t>(i), m) - static_cast<int64_t>(powers[i] % m) + m) %
          m;
      powers[i] += product * (gap * inverse % m);
    }
    product *= m;
  }
  for (const size_t t : {2, 3, 4, 5, 6})
    if (figure_of_merit(product, powers, t) < combination_threshold) return false;
  return true;
}

// Multipliers of moduli in falling order; fewer when roots run out.
std::vector<int> multipliers_of(const std::vector<int>& moduli) {
  std::vector<int> chosen;
  for (const int m : moduli)
    for (const int a : roots().at(m))
      if (std::find(chosen.begin(), chosen.end(), a) == chosen.end()) {
        chosen.push_back(a);
        break;
      }
  return chosen;
}

bool obeys_rule(const std::vector<int>& falling) {
  for (size_t i = 0; i < falling.size(); ++i)
    for (size_t j = 0; j < i; ++j)
      if (std::gcd((falling[i] - 1) / 2, (falling[j] - 1) / 2) != 1) return false;
  const auto multipliers = multipliers_of(falling);
  if (multipliers.size() != falling.size()) return false;
  for (size_t i = 0; i < falling.size(); ++i)
    if (!component_passes(falling[i], multipliers[i])) return false;
  return falling.size() < 4 || combination_passes(falling, multipliers);
}

// A set from the first of the candidates and the next ones that fit, among 400.
std::optional<parameter_set> build(const std::vector<int>& candidates) {
  std::vector<int> moduli;
  for (size_t i = 0; i < std::min<size_t>(400, candidates.size()); ++i) {
    std::vector<int> tried = moduli;
    tried.push_back(candidates[i]);
    std::sort(tried.rbegin(), tried.rend());
    if (i > 0 && !obeys_rule(tried)) continue;
    moduli = tried;
    if (moduli.size() < 4) continue;
    parameter_set set;
    std::copy_n(moduli.begin(), 4, set.modulus.begin());
    std::copy_n(multipliers_of(moduli).begin(), 4, set.multiplier.begin());
    return set;
  }
  return std::nullopt;
}

void remove(std::vector<int>& pool, const parameter_set& set) {
  std::erase_if(
      pool, [&](int m) { return std::find(set.modulus.begin(), set.modulus.end(), m) != set.modulus.end(); });
}

std::map<int, parameter_set> generate() {
  std::map<int, parameter_set> sets = given;
  std::vector<int> pool;
  for (const auto& [m, list] : roots())
    if (!list.empty()) pool.push_back(m);
  for (const auto& [index, set] : given) remove(pool, set);
  const auto add = [&](int index, const parameter_set& set) {
    sets[index] = set;
    remove(pool, set);
  };
  add(271, *build({pool.rbegin(), pool.rend()}));
  for (int index = 6; index < 271;) {
    if (const auto set = build(pool))
      add(index++, *set);
    else
      pool.erase(pool.begin());
  }
  return sets;
}

// What the library relies on, of the given sets too.
bool is_sound(const std::map<int, parameter_set>& sets) {
  std::vector<int> all;
  for (const auto& [index, set] : sets) {
    const std::vector<int> falling(set.modulus.begin(), set.modulus.end());
    const auto multipliers = multipliers_of(falling);
    if (!std::is_sorted(falling.rbegin(), falling.rend()) || !obeys_rule(falling)) return false;
    if (!std::equal(multipliers.begin(), multipliers.end(), set.multiplier.begin())) return false;
    all.insert(all.end(), falling.begin(), falling.end());
  }
  std::sort(all.begin(), all.end());
  return sets.size() == count && std::adjacent_find(all.begin(), all.end()) == all.end();
}

template <class Row>
void print(const char* declaration, const std::map<int, parameter_set>& sets, Row parameter_set::*row,
           int per_line) {
  std::printf("%s = {\n", declaration);
  for (const auto& [index, set] : sets) {
    const Row& r = set.*row;
    std::printf("%s{%d, %d, %d, %d},%s", index % per_line == 0 ? "    " : " ", r[0], r[1], r[2], r[3],
                index % per_line == per_line - 1 || index == count - 1 ? "\n" : "");
  }
  std::puts("};");
}

}  // namespace

int main() {
  const auto sets = generate();
  if (!is_sound(sets)) {
    std::fputs("wh: a set does not obey the rule\n", stderr);
    return EXIT_FAILURE;
  }
  std::puts(
      "// Made by tools/tables/random/wh.cpp: 273 sets of four prime moduli and their multipliers.\n"
      "#pragma once\n\n#include <cstdint>\n\nnamespace tmk::rng {\n");
  print("constexpr uint32_t wh_moduli[273][4]", sets, &parameter_set::modulus, 2);
  std::puts("");
  print("constexpr uint8_t wh_multipliers[273][4]", sets, &parameter_set::multiplier, 4);
  std::puts("\n}  // namespace tmk::rng");
}
