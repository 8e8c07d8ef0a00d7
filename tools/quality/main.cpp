// SPDX-License-Identifier: Apache-2.0
// tmk-quality: generators before the batteries of TestU01 (P. L'Ecuyer, R. Simard, TestU01: a C library for
// empirical testing of random number generators, ACM TOMS 33 (2007)).
//   tmk-quality --list [filter]        the subjects, one a line
//   tmk-quality --row subject          runs a battery on one and prints its row of the page
//   tmk-quality --page < rows          the page
// A battery keeps its state in global variables, so that several run at a time as several processes only.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <iostream>
#include <regex>
#include <string>
#include <tmk/random.hpp>
#include <vector>

extern "C" {
#include <testu01/bbattery.h>
#include <testu01/swrite.h>
#include <testu01/unif01.h>
}

namespace {

using tmk::generator;
using tmk::stream;

constexpr std::uint64_t seed = 2026;
constexpr int parts = 16;

const std::pair<const char*, generator> generators[] = {
    {"mt19937", generator::mt19937},   {"sfmt19937", generator::sfmt19937},
    {"mt2203", generator::mt2203},     {"philox4x32x10", generator::philox4x32x10},
    {"ars5", generator::ars5},         {"mrg32k3a", generator::mrg32k3a},
    {"r250", generator::r250},         {"mcg59", generator::mcg59},
    {"mcg31m1", generator::mcg31m1},   {"wh", generator::wh},
    {"hardware", generator::hardware},
};

// The one subject of the process: 32-bit words or doubles, from a block that is drawn ahead.
std::function<void(std::span<std::uint32_t>)> next_words;
std::function<void(std::span<double>)> next_doubles;

template <class T>
T next_of(const std::function<void(std::span<T>)>& refill) {
  static std::array<T, 4096> block;
  static std::size_t taken = block.size();
  if (taken == block.size()) {
    refill(block);
    taken = 0;
  }
  return block[taken++];
}
unsigned int word() { return next_of(next_words); }
double uniform() { return next_of(next_doubles); }

// Words of one stream, and of several in turn.
void take_words(stream s) {
  next_words = [s = std::move(s)](std::span<std::uint32_t> r) mutable {
    for (std::uint32_t& x : r) x = s();
  };
}
void take_turns(std::vector<stream> all) {
  next_words = [all = std::move(all)](std::span<std::uint32_t> r) mutable {
    for (std::size_t i = 0; i < r.size(); ++i) r[i] = all[i % all.size()]();
  };
}

struct subject {
  std::string name;
  std::function<void()> prepare;
  bool doubles = false;
};

std::vector<stream> of_seeds(generator g) {
  std::vector<stream> all;
  for (int k = 0; k < parts; ++k) all.emplace_back(g, k);
  return all;
}

std::vector<subject> subjects() {
  std::vector<subject> all;
  for (const auto& [text, g_of] : generators) {
    const std::string name = text;
    const generator g = g_of;
    all.push_back({name + ", words", [=] { take_words(stream(g, seed)); }});
    all.push_back(
        {name + ", doubles",
         [=] { next_doubles = [s = stream(g, seed)](std::span<double> r) mutable { tmk::uniform(s, r); }; },
         true});
    if (g == generator::hardware) continue;
    all.push_back({name + ", 16 parts in turn", [=] { take_turns(tmk::streams(g, seed, parts)); }});
    all.push_back({name + ", seeds 0 to 15 in turn", [=] { take_turns(of_seeds(g)); }});
    if (g != generator::wh && g != generator::mt2203) continue;
    for (int set = 0; set < parts; ++set)
      all.push_back({name + ", set " + std::to_string(set), [=] { take_words(stream(g, seed, set)); }});
  }
  return all;
}

// The statistics whose probability is below `suspect` on either side.
std::string suspects() {
  constexpr double suspect = 1e-4;
  std::string text;
  for (int i = 0; i < bbattery_NTests; ++i) {
    const double p = bbattery_pVal[i];
    if (p >= suspect && p <= 1 - suspect) continue;
    char value[64];
    if (p < 0.5)
      std::snprintf(value, sizeof value, " %.1e", p);
    else
      std::snprintf(value, sizeof value, " 1 - %.1e", 1 - p);
    text += (text.empty() ? "" : ", ") + std::string(bbattery_TestNames[i]) + value;
  }
  return text.empty() ? "none" : text;
}

void print_row(const subject& s, bool crush) {
  s.prepare();
  std::string name = s.name;
  unif01_Gen* g = s.doubles ? unif01_CreateExternGen01(name.data(), uniform)
                            : unif01_CreateExternGenBits(name.data(), word);
  swrite_Basic = FALSE;
  // The batteries print a summary of their own.
  std::FILE* const quiet = std::freopen("/dev/null", "w", stdout);
  crush ? bbattery_Crush(g) : bbattery_SmallCrush(g);
  if (quiet != nullptr) std::fflush(quiet);
  std::cerr << "| " << s.name << " | " << bbattery_NTests << " | " << suspects() << " |\n";
}

constexpr char head[] =
    R"(<!-- Made by `./dev quality --markdown`: do not edit. -->
# Statistical quality of the generators

Battery of TestU01 1.2.3 (P. L'Ecuyer, R. Simard, ACM TOMS 33, 2007): %s.
Seed 2026, or as the row says. *Words* are those of `stream::operator()`; *doubles* are `tmk::uniform`, of which the
tests use the upper bits; *in turn* means one word of each stream, again and again: of the 16 parts that `tmk::streams`
gives, or of the streams of seeds 0 to 15.
Listed are the statistics whose probability is below 10^-4 or above 1 - 10^-4: of a perfect source, one in five
thousand. A generator has failed where it is below 10^-10.

| subject | statistics | suspect |
|---|---|---|
)";

constexpr char tail[] = R"(
## Weaknesses that are known

| generator | weakness | source |
|---|---|---|
| mt19937, sfmt19937, mt2203, r250 | linear over GF(2): binary matrix rank of large matrices and linear complexity tests fail (the Crush batteries have them) | P. L'Ecuyer, R. Simard 2007 |
| mt19937 | slow to leave states that are almost all zero; hashed seeds do not give such | F. Panneton, P. L'Ecuyer, M. Matsumoto, ACM TOMS 32 (2006) |
| r250 | three-point correlations: x[i] is the exclusive or of two earlier words, which the gap test sees; wrong results in cluster simulations | A. M. Ferrenberg, D. P. Landau, Y. J. Wong, Phys. Rev. Lett. 69 (1992) |
| mcg31m1, mcg59 | points on a lattice: birthday spacings fail from a few times the cube root of the period on, a few thousand numbers of mcg31m1, some million of mcg59 | P. L'Ecuyer, R. Simard, Math. Comput. Simul. 55 (2001) |
| mcg59 | low bits have short periods; elements at distances that are multiples of high powers of two are related | A. De Matteis, S. Pagnutti, Numer. Math. 53 (1988) |
| wh | 24 bits of resolution; four small moduli | B. A. Wichmann, I. D. Hill, Appl. Stat. 31 (1982) |
)";

void print_page(bool crush) {
  std::printf(head, crush ? "Crush, 96 tests" : "SmallCrush, 10 tests with 15 statistics");
  std::vector<std::string> rows;
  for (std::string line; std::getline(std::cin, line);)
    if (line.starts_with("| ")) rows.push_back(line);
  for (const subject& s : subjects())
    for (const std::string& row : rows)
      if (row.starts_with("| " + s.name + " |")) std::printf("%s\n", row.c_str());
  std::printf("%s", tail);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Generators of tmk before the batteries of TestU01");
  std::string filter, row;
  bool list = false, page = false, crush = false;
  app.add_flag("--list", list, "the subjects");
  app.add_option("filter", filter, "of the subjects, as a regular expression");
  app.add_option("--row", row, "runs the battery on this subject");
  app.add_flag("--page", page, "the page, of rows from the standard input");
  app.add_flag("--crush", crush, "Crush (an hour a subject) in place of SmallCrush (10 s)");
  CLI11_PARSE(app, argc, argv);

  if (page) print_page(crush);
  for (const subject& s : subjects()) {
    if (list && std::regex_search(s.name, std::regex(filter))) std::printf("%s\n", s.name.c_str());
    if (s.name == row) print_row(s, crush);
  }
}
