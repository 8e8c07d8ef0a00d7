// SPDX-License-Identifier: Apache-2.0
// tmk-bench-rare: what elements out of the ordinary cost. An array of usual arguments has every tenth
// replaced by a zero, a NaN and so on, or all of them drawn over the function's whole domain; the figure is
// its time divided by that of the usual array. Of a complex element one part is replaced, the real and the
// imaginary one in turn.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "calls.hpp"
#include "oracle/batch.hpp"
#include "runner.hpp"

using namespace tmk;
using namespace tmk::bench;

namespace {

constexpr std::int32_t count = 1000;

struct mix {
  const char* name;
  double (*element)(bool single);  // null: all elements over the whole domain
};
template <double Float, double Double>
double by_precision(bool single) {
  return single ? Float : Double;
}
constexpr mix mixes[] = {
    {"usual", nullptr},
    {"0", by_precision<0.0, 0.0>},
    {"NaN", [](bool) { return std::numeric_limits<double>::quiet_NaN(); }},
    {"subnormal", by_precision<0x1.8p-130, 0x1.8p-1030>},
    {"tiny", by_precision<0x1.8p-120, 0x1.8p-1010>},
    {"small", by_precision<0x1.8p-30, 0x1.8p-60>},
    {"large", by_precision<0x1.8p30, 0x1.8p60>},
    {"huge", by_precision<0x1.8p120, 0x1.8p1010>},
    {"infinite", by_precision<HUGE_VAL, HUGE_VAL>},
    {"whole domain", nullptr},
};

// The arrays of one mix, laid into `argument` (0 or 1); both arguments over the whole domain.
class arrays {
 public:
  arrays(const tools::vector_function& f, const mix& m, int argument) {
    f.is_single() ? fill<float>(f, m, argument) : fill<double>(f, m, argument);
  }
  call of() { return {count, a_.data(), b_.data(), r_.data(), r2_.data()}; }

 private:
  template <class Real>
  void fill(const tools::vector_function& f, const mix& m, int argument) {
    std::mt19937_64 generate(1);
    const bool whole = &m == &mixes[std::size(mixes) - 1];
    for (const int own : {0, 1}) {
      const accuracy::domain& d = accuracy::find_domain(f.letter, f.stem, own);
      constexpr double largest = std::numeric_limits<Real>::max();
      const auto place = [&](double x) {
        return accuracy::place_of(static_cast<Real>(std::clamp(x, -largest, largest)));
      };
      std::uniform_int_distribution draw_place(place(d.full.low), place(d.full.high));
      std::uniform_real_distribution<double> draw(d.core.low, d.core.high);
      const int parts = f.is_complex() && f.shape != call_shape::real_argument ? 2 : 1;
      for (int i = 0; i < parts * count; ++i) {
        double x = whole ? accuracy::at_place<Real>(draw_place(generate)) : draw(generate);
        const int element = i / parts, part = i % parts;
        const bool is_replaced = element % 10 == 3 && part == element / 10 % parts;
        if (own == argument && m.element != nullptr && is_replaced) x = m.element(f.is_single());
        if (own == 1 && f.shape == call_shape::scalar_exponent) x = part == 0 ? -1.25 : 0.5;
        const Real value = static_cast<Real>(x);
        std::memcpy((own == 0 ? a_ : b_).data() + static_cast<std::size_t>(i) * sizeof value, &value,
                    sizeof value);
      }
    }
  }

  std::vector<std::byte> a_ = std::vector<std::byte>(2 * count * sizeof(double)), b_ = a_, r_ = a_, r2_ = a_;
};

group group_of(const tools::vector_function& f, int argument, int tier, int slot) {
  std::string name = std::string(f.name) + (argument == 1 ? " b/" : "/") + tmk_tier_name(tier) + "/" +
                     std::string(tools::level_names[slot]);
  return {std::move(name), count, [=] {
            tmk_select_tier(tier);
            const auto run = call_of(f, f.record->kernel[slot]);
            std::vector<subject> subjects;
            for (const mix& m : mixes) {
              const auto data = std::make_shared<arrays>(f, m, argument);
              subjects.push_back({.name = m.name, .run = [=] { run(data->of()); }});
            }
            return subjects;
          }};
}

void print_ratios(const measured_group& g, const options& wish) {
  std::printf(wish.markdown ? "| %s | %.3g" : "%-18s %6.3g ns", g.name.c_str(), g.subjects[0].nanoseconds);
  for (std::size_t i = 1; i < g.subjects.size(); ++i) {
    const double ratio = g.subjects[i].nanoseconds / g.subjects[0].nanoseconds;
    std::printf(wish.markdown ? " | %.2g" : "  %5.2f", ratio);
  }
  std::puts(wish.markdown ? " |" : "");
  std::fflush(stdout);
}

constexpr const char* heading = R"(<!-- Made by `./dev bench rare --markdown`: do not edit. -->
# What rare elements cost

%s.

Nanoseconds per element of an array of 1000 usual arguments; then, as multiples of that time, an array of which every
tenth element is the one named, or, of complex numbers, has it as its real or its imaginary part in turn, and one drawn
over the function's whole domain, each binade alike. `b`: in the second argument. Infinities, and numbers out of the
domain, are reported; the mode is to ignore reports. Medians of %d repetitions in one process.

| function | ns | 0 | NaN | subnormal | tiny: 2^-120, 2^-1010 | small: 2^-30, 2^-60 | large: 2^30, 2^60 | huge: 2^120, 2^1010 | infinite | whole domain |
|---|---|---|---|---|---|---|---|---|---|---|)";

}  // namespace

int main(int argc, char** argv) {
  const options wish = start(argc, argv, "sExp/V3/HA");
  _vtmSetMode(VTM_HA | VTM_ERRMODE_IGNORE);
  std::vector<group> groups;
  for (const tools::vector_function& f : tools::functions_with_value()) {
    const bool is_complex_shape = f.shape == call_shape::real_result || f.shape == call_shape::real_argument;
    if ((f.shape > call_shape::two_results && !is_complex_shape) || !f.vectorized) continue;
    for (int argument = 0; argument <= (f.shape == call_shape::binary ? 1 : 0); ++argument)
      for (int tier : tools::available_tiers())
        for (int slot : {TMK_SLOT_LA, TMK_SLOT_HA})
          if (slot == TMK_SLOT_HA || !f.is_complex()) groups.push_back(group_of(f, argument, tier, slot));
  }
  run_groups(groups, wish, page_heading(wish, heading), print_ratios);
}
