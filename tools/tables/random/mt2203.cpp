// SPDX-License-Identifier: Apache-2.0
// Prints the constants of the 6024 small twisters: half an hour of one core. With --check it searches some
// sets anew, tests the period of every tenth and checks what is cheap for all of them; with --check-all it
// leaves nothing out.
//
// Twist constants differ in their lower halves, the odd numbers in rising order; upper halves are tried in a
// fixed pseudo-random order until tempering masks lower the defect of the equidistribution to 720, or the
// best of six is taken. Sets 0 to 2 are given.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

#include "../../../src/random/generators/mt2203_data.hpp"
#include "mt2203_tempering.hpp"

namespace {

constexpr int sets = 6024, acceptable_defect = 720, most_candidates = 6, greatest_small_factor = 18;

struct row {
  uint32_t a;
  masks m;
  bool operator==(const row&) const = default;
};
constexpr row given[] = {{0xAF81055F, {0xDD7EEF80, 0xEFD78000}},
                         {0x832604E1, {0x66AD7F80, 0xEBD58000}},
                         {0x92F70739, {0x656D7780, 0xEFC50000}}};

uint32_t lower_half(int set) {
  uint32_t half = 1;
  for (int left = set - static_cast<int>(std::size(given));; half += 2) {
    const bool taken =
        std::any_of(std::begin(given), std::end(given), [&](const row& g) { return (g.a & 0xFFFF) == half; });
    if (!taken && left-- == 0) return half;
  }
}

row search(int set) {
  if (set < static_cast<int>(std::size(given))) return given[set];
  static const small_factor_sieve sieve(greatest_small_factor);
  const uint32_t lower = lower_half(set);
  const auto bad = sieve.bad_upper_halves(lower);
  row best{};
  int best_defect = 1 << 30, candidates = 0;
  uint32_t upper = (lower * 40503 + 12345) % 32768;
  for (int tried = 0; tried < 32768 && candidates < most_candidates && best_defect > acceptable_defect;
       ++tried, upper = (upper * 5 + 0x2D35) % 32768) {
    const uint32_t a = 0x80000000 | upper << 16 | lower;
    if (bad[upper] || !is_irreducible(characteristic_polynomial(a))) continue;
    ++candidates;
    int defect;
    const masks m = best_masks(a, defect);
    if (defect >= best_defect) continue;
    best_defect = defect;
    best = {a, m};
  }
  return best;
}

row row_of_table(int set) {
  const uint32_t* words = tmk::rng::mt2203_rows + 3 * set;
  return {words[0], {words[1], words[2]}};
}

int check(int searched_step, int tested_step) {
  std::set<uint32_t> lower_halves;
  for (int set = 0; set < sets; ++set) {
    const row r = row_of_table(set);
    const bool sound =
        lower_halves.insert(r.a & 0xFFFF).second && r.a >> 31 == 1 && r.m.b % 128 == 0 && r.m.c % 32768 == 0;
    const bool irreducible = set % tested_step != 0 || is_irreducible(characteristic_polynomial(r.a));
    const bool found = set % searched_step != 0 || search(set) == r;
    if (sound && irreducible && found) continue;
    std::fprintf(stderr, "mt2203: set %d is not what the search finds\n", set);
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--check") == 0) return check(1000, 10);
  if (argc > 1 && std::strcmp(argv[1], "--check-all") == 0) return check(1, 1);
  std::puts(
      "// Made by tools/tables/random/mt2203.cpp: twist constant and two tempering masks of each set.\n"
      "#pragma once\n\n#include <cstdint>\n\nnamespace tmk::rng {\n\nconstexpr uint32_t mt2203_rows[6024 "
      "* 3] = "
      "{");
  for (int set = 0; set < sets; ++set) {
    const row r = search(set);
    std::printf("%s0x%08X, 0x%08X, 0x%08X,%s", set % 3 == 0 ? "    " : " ", r.a, r.m.b, r.m.c,
                set % 3 == 2 ? "\n" : "");
  }
  std::puts("};\n\n}  // namespace tmk::rng");
}
