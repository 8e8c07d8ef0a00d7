// tmk-bench-random: raw words, uniforms and variates beside what a program would otherwise take, in one
// process.
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <array>
#include <boost/random/exponential_distribution.hpp>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/normal_distribution.hpp>
#include <boost/random/uniform_real_distribution.hpp>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "common/kernels.hpp"
#include "timing.hpp"
#include "tmk/abi/vtm.h"
#include "tmk/abi/vts.h"

using namespace tmk::bench;

namespace {

constexpr int32_t n = 100'000;

struct subject {
  std::string name;
  std::function<void()> run;
};
struct group {
  std::string name;
  int32_t count;  // elements of one run; 1 where the call itself is timed
  std::vector<subject> subjects;
};

// Room for n elements of the widest output.
uint64_t* room() {
  static std::vector<uint64_t> memory(2 * n);
  return memory.data();
}
double* doubles() { return reinterpret_cast<double*>(room()); }

VtsStreamHandle new_stream(int32_t brng) {
  const uint32_t seed = 7;
  VtsStreamHandle stream = nullptr;
  if (__vtsNewStreamEx(&stream, brng, 1, &seed) != VTS_STATUS_OK) std::abort();
  return stream;
}

// A subject per tier that the processor has.
template <class Draw>
void add_tiers(group& g, int32_t brng, Draw draw) {
  for (const int tier : tmk::tools::available_tiers()) {
    g.subjects.push_back({std::string("tmk ") + tmk_tier_name(tier), [=, stream = new_stream(brng)] {
                            tmk_select_tier(tier);
                            draw(stream);
                          }});
  }
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

gsl_rng* gsl_generator() {
  gsl_rng* g = gsl_rng_alloc(gsl_rng_mt19937);
  gsl_rng_set(g, 7);
  return g;
}
template <class Variate>
subject drawn_by_gsl(Variate variate) {
  return serial("GSL", [g = gsl_generator(), variate] { return variate(g); });
}

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
  for (const auto& g : generators) {
    groups.push_back({g.name, n, {}});
    add_tiers(groups.back(), g.brng, words);
    groups.back().subjects.insert(groups.back().subjects.end(), g.peers.begin(), g.peers.end());
  }

  const struct {
    const char* name;
    void (*draw)(VtsStreamHandle);
    std::vector<subject> peers;
  } laws[] = {
      {"uniform doubles",
       [](VtsStreamHandle s) { _vtsdRngUniform(0, s, n, doubles(), 0, 1); },
       {drawn_by<std::mt19937>("std", std::uniform_real_distribution<double>()),
        drawn_by<boost::random::mt19937>("boost", boost::random::uniform_real_distribution<double>()),
        drawn_by_gsl(gsl_rng_uniform)}},
      {"exponential doubles",
       [](VtsStreamHandle s) { _vtsdRngExponential(0, s, n, doubles(), 0, 1); },
       {drawn_by<std::mt19937>("std", std::exponential_distribution<double>()),
        drawn_by<boost::random::mt19937>("boost", boost::random::exponential_distribution<double>()),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_exponential(g, 1); })}},
      {"Laplace doubles",
       [](VtsStreamHandle s) { _vtsdRngLaplace(0, s, n, doubles(), 0, 1); },
       {drawn_by<std::mt19937>("std exponential", std::exponential_distribution<double>()),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_laplace(g, 1); })}},
      {"Gumbel doubles",
       [](VtsStreamHandle s) { _vtsdRngGumbel(0, s, n, doubles(), 0, 1); },
       {drawn_by<std::mt19937>("std exponential", std::exponential_distribution<double>()),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_gumbel1(g, 1, 1); })}},
      {"Gaussian doubles, Box-Muller",
       [](VtsStreamHandle s) { _vtsdRngGaussian(1, s, n, doubles(), 0, 1); },
       {drawn_by<std::mt19937>("std", std::normal_distribution<double>()),
        drawn_by<boost::random::mt19937>("boost", boost::random::normal_distribution<double>()),
        drawn_by_gsl([](gsl_rng* g) { return gsl_ran_gaussian_ziggurat(g, 1); })}},
  };
  for (const auto& law : laws) {
    groups.push_back({law.name, n, {}});
    add_tiers(groups.back(), VTS_BRNG_MT19937, law.draw);
    groups.back().subjects.insert(groups.back().subjects.end(), law.peers.begin(), law.peers.end());
  }

  const auto skip = [](VtsStreamHandle s) { __vtsSkipAheadStream(s, 1'000'000'000'000); };
  for (const auto& [name, brng] : {std::pair("MT19937 skip of 10^12", VTS_BRNG_MT19937),
                                   std::pair("SFMT19937 skip of 10^12", VTS_BRNG_SFMT19937)}) {
    groups.push_back({name, 1, {}});
    add_tiers(groups.back(), brng, skip);
  }
  groups.push_back({"MT19937 creation",
                    1,
                    {{"tmk",
                      [] {
                        VtsStreamHandle s = new_stream(VTS_BRNG_MT19937);
                        __vtsDeleteStream(&s);
                      }},
                     {"std::mt19937", [] {
                        std::mt19937 engine(7);
                        room()[0] = engine();
                      }}}});
  return groups;
}

}  // namespace

int main(int argc, char** argv) {
  const options wish = start(argc, argv, "MT19937 words");
  const std::regex wanted(wish.filter);
  if (wish.markdown)
    std::printf(
        "<!-- Made by `./dev bench random --markdown`: do not edit. -->\n# Performance of random streams\n\n"
        "%s. Nanoseconds per element (per call for skips and creation), median of %d repetitions in random\n"
        "order in one process, runs of %d elements; in brackets how many times faster than the peer tmk is.\n"
        "The peers that draw use their own mt19937; variates of tmk are drawn from MT19937.\n\n"
        "| what | tmk, by tier | peers |\n|---|---|---|\n",
        processor_name().c_str(), wish.repetitions, n);
  bool any = false;
  for (group& g : all_groups()) {
    if (!std::regex_search(g.name, wanted)) continue;
    any = true;
    std::vector<std::function<void()>> calls;
    for (subject& s : g.subjects) calls.push_back(s.run);
    std::vector<double> times = median_seconds(calls);
    for (double& t : times) t *= 1e9 / g.count;

    std::string ours, theirs;
    double best = 0;
    for (size_t i = 0; i < times.size(); ++i) {
      char text[80];
      const bool is_ours = g.subjects[i].name.starts_with("tmk");
      if (is_ours) {
        best = best == 0 ? times[i] : std::min(best, times[i]);
        std::snprintf(text, sizeof text, "%s %.4g",
                      g.subjects[i].name.c_str() + (g.subjects[i].name.size() > 3 ? 4 : 0), times[i]);
      } else {
        std::snprintf(text, sizeof text, "%s %.4g (%.1f)", g.subjects[i].name.c_str(), times[i],
                      times[i] / best);
      }
      std::string& cell = is_ours ? ours : theirs;
      cell += (cell.empty() ? "" : ", ") + std::string(text);
    }
    std::printf(wish.markdown ? "| %s | %s | %s |\n" : "%-30s %-48s %s\n", g.name.c_str(), ours.c_str(),
                theirs.c_str());
    std::fflush(stdout);
  }
  if (any) return 0;
  std::fprintf(stderr, "nothing matches %s\n", wish.filter.c_str());
  return 2;
}
