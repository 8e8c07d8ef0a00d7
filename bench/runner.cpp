// SPDX-License-Identifier: Apache-2.0
#include "groups.hpp"

#include <cstdio>
#include <regex>

#include "common/kernels.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::bench {
namespace {

struct row {
  std::string ours, theirs;
};

row measured(const group& g) {
  const std::vector<subject> subjects = g.prepare();
  std::vector<std::function<void()>> calls;
  for (const subject& s : subjects) calls.push_back(s.run);
  std::vector<double> times = median_seconds(calls);
  for (double& t : times) t *= 1e9 / static_cast<double>(g.count);

  const auto is_ours = [&](size_t i) { return subjects[i].name.starts_with("tmk"); };
  double best = 0;
  for (size_t i = 0; i < times.size(); ++i)
    if (is_ours(i)) best = best == 0 ? times[i] : std::min(best, times[i]);
  row r;
  for (size_t i = 0; i < times.size(); ++i) {
    char text[120];
    const std::string name =
        is_ours(i) && subjects[i].name.size() > 4 ? subjects[i].name.substr(4) : subjects[i].name;
    if (is_ours(i))
      std::snprintf(text, sizeof text, "%s %.4g", name.c_str(), times[i]);
    else
      std::snprintf(text, sizeof text, "%s %.4g (%.2g)", name.c_str(), times[i], times[i] / best);
    std::string& cell = is_ours(i) ? r.ours : r.theirs;
    cell += (cell.empty() ? "" : ", ") + std::string(text);
  }
  return r;
}

}  // namespace

int run_groups(const std::vector<group>& groups, const options& wish, const char* heading) {
  if (wish.markdown) {
    std::printf(heading, processor_name().c_str(), wish.repetitions);
    std::puts("| what | tmk, by tier | peers |\n|---|---|---|");
  }
  const std::regex wanted(wish.filter);
  bool any = false;
  for (const group& g : groups) {
    if (!std::regex_search(g.name, wanted)) continue;
    any = true;
    const row r = measured(g);
    std::printf(wish.markdown ? "| %s | %s | %s |\n" : "%-44s %-40s %s\n", g.name.c_str(), r.ours.c_str(),
                r.theirs.c_str());
    std::fflush(stdout);
  }
  if (any) return 0;
  std::fprintf(stderr, "nothing matches %s\n", wish.filter.c_str());
  return 2;
}

std::vector<subject> by_tier(const std::function<void()>& call) {
  std::vector<subject> subjects;
  for (const int tier : tools::available_tiers())
    subjects.push_back({std::string("tmk ") + tmk_tier_name(tier), [tier, call] {
                          tmk_select_tier(tier);
                          call();
                        }});
  return subjects;
}

}  // namespace tmk::bench
