// SPDX-License-Identifier: Apache-2.0
// tmk-bench-random: raw words, uniforms and variates compared with what a program would otherwise take, in
// one process.
#include "tmk/random.hpp"

#include <gsl/gsl_rng.h>

#include <array>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/uniform_real_distribution.hpp>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "random_subjects.hpp"

using namespace tmk::bench;

namespace {

// The recurrences of the small generators, one element after the other, as compilers make them.
struct mcg31_serial {
  uint64_t x = 7;
  uint32_t operator()() {
    const uint64_t now = x;
    x = x * 1132489760 % 2147483647;
    return static_cast<uint32_t>(now);
  }
};
struct mcg59_serial {
  uint64_t x = 7;
  uint64_t operator()() {
    const uint64_t now = x;
    x = x * 302875106592253 & 0x07FFFFFFFFFFFFFF;
    return now;
  }
};
struct wh_serial {
  std::array<uint32_t, 4> x{7, 1, 1, 1};
  std::array<uint32_t, 4> operator()() {
    constexpr uint32_t m[] = {16770647, 16770643, 16770623, 16770617}, a[] = {125, 117, 127, 126};
    const auto now = x;
    for (int j = 0; j < 4; ++j) x[j] = x[j] * a[j] % m[j];
    return now;
  }
};
struct mrg32k3a_serial {
  int64_t x[3] = {7, 1, 1}, y[3] = {1, 1, 1};
  uint32_t operator()() {
    constexpr int64_t m1 = 4294967087, m2 = 4294944443;
    int64_t p = (1403580 * x[1] - 810728 * x[0]) % m1;
    p += p < 0 ? m1 : 0;
    int64_t q = (527612 * y[2] - 1370589 * y[0]) % m2;
    q += q < 0 ? m2 : 0;
    x[0] = x[1], x[1] = x[2], x[2] = p;
    y[0] = y[1], y[1] = y[2], y[2] = q;
    return static_cast<uint32_t>(p - q + (p < q ? m1 : 0));
  }
};

std::vector<group> all_groups() {
  std::vector<group> groups;
  const subject std_words = serial("std::mt19937", std::mt19937(7));
  const auto words = [](VtsStreamHandle s) {
    _vtsiRngUniformBits(0, s, n, reinterpret_cast<uint32_t*>(room()));
  };

  const struct {
    const char* name;
    int32_t brng;
    std::vector<subject> peers;
  } generators[] = {
      {"MT19937 words",
       VTS_BRNG_MT19937,
       {std_words, serial("boost::mt19937", boost::random::mt19937(7)), drawn_by_gsl(gsl_rng_get)}},
      {"MT2203 words", VTS_BRNG_MT2203, {std_words}},
      {"SFMT19937 words", VTS_BRNG_SFMT19937, {std_words}},
      {"PHILOX4X32X10 words", VTS_BRNG_PHILOX4X32X10, {std_words}},
      {"ARS5 words", VTS_BRNG_ARS5, {std_words}},
      {"R250 words", VTS_BRNG_R250, {std_words}},
      {"MCG31M1 words", VTS_BRNG_MCG31M1, {serial("serial form", mcg31_serial())}},
      {"MCG59 words", VTS_BRNG_MCG59, {serial("serial form", mcg59_serial())}},
      {"WH words", VTS_BRNG_WH, {serial("serial form", wh_serial())}},
      {"MRG32K3A words", VTS_BRNG_MRG32K3A, {serial("serial form", mrg32k3a_serial())}},
  };
  for (const auto& g : generators) groups.push_back(drawn(g.name, n, g.brng, words, g.peers));
  // One word at a time, as the standard's distributions and std::shuffle take them.
  const struct {
    const char* name;
    tmk::generator id;
  } singly[] = {{"MT19937 words, one by one", tmk::generator::mt19937},
                {"PHILOX4X32X10 words, one by one", tmk::generator::philox4x32x10}};
  for (const auto& g : singly)
    groups.push_back({g.name, n, [=] {
                        auto all = by_tier([g = std::make_shared<tmk::stream>(g.id, 7)] {
                          auto* const words = reinterpret_cast<uint32_t*>(room());
                          for (int32_t i = 0; i < n; ++i) words[i] = (*g)();
                        });
                        all.push_back(std_words);
                        return all;
                      }});

  const struct {
    const char* name;
    void (*draw)(VtsStreamHandle);
    std::vector<subject> peers;
  } laws[] = {
      {"uniform doubles",
       [](VtsStreamHandle s) { tmk_vtsdRngUniform(s, n, doubles(), 0, 1); },
       {drawn_by<std::mt19937>("std", std::uniform_real_distribution<double>()),
        drawn_by<boost::random::mt19937>("boost", boost::random::uniform_real_distribution<double>()),
        drawn_by_gsl(gsl_rng_uniform)}},
      {"uniform doubles of 32 bits",
       [](VtsStreamHandle s) { _vtsdRngUniform(0, s, n, doubles(), 0, 1); },
       {}},
      {"integers from 1 to 6",
       [](VtsStreamHandle s) { tmk_vtsiRngUniform(s, n, reinterpret_cast<int32_t*>(room()), 1, 6); },
       {drawn_by<std::mt19937>("std", std::uniform_int_distribution<int>(1, 6)),
        drawn_by_gsl([](gsl_rng* g) { return gsl_rng_uniform_int(g, 6); })}},
  };
  for (const auto& law : laws) groups.push_back(drawn(law.name, n, VTS_BRNG_MT19937, law.draw, law.peers));
  add_continuous(groups);
  add_discrete(groups);
  add_sampling(groups);

  const auto skip = [](VtsStreamHandle s) { __vtsSkipAheadStream(s, 1'000'000'000'000); };
  for (const auto& [name, brng] : {std::pair("MT19937 skip of 10^12", VTS_BRNG_MT19937),
                                   std::pair("SFMT19937 skip of 10^12", VTS_BRNG_SFMT19937)})
    groups.push_back(drawn(name, 1, brng, skip, {}));
  groups.push_back({"MT19937 creation", 1, [] {
                      return std::vector<subject>{{"any tier",
                                                   [] {
                                                     VtsStreamHandle s = new_stream(VTS_BRNG_MT19937);
                                                     __vtsDeleteStream(&s);
                                                   },
                                                   subject_kind::ours},
                                                  {"std::mt19937", [] {
                                                     std::mt19937 engine(7);
                                                     room()[0] = engine();
                                                   }}};
                    }});
  return groups;
}

}  // namespace

int main(int argc, char** argv) {
  const options wish = start(argc, argv, "MT19937 words");
  run_groups(all_groups(), wish,
             page_heading(wish, R"(<!-- Made by `./dev bench random --markdown`: do not edit. -->
# Performance of random streams

%s.

Nanoseconds per element (per call for skips and creation), median of %d repetitions in random order in one
process, runs of 100000 elements.
%s
The peers that draw use their own mt19937; variates of tmk are drawn from MT19937.
)"));
}
