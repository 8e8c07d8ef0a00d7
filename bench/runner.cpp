// SPDX-License-Identifier: Apache-2.0
#include "runner.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <regex>

#include "common/kernels.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::bench {
namespace {

measured_group measured(const group& g) {
  const std::vector<subject> subjects = g.prepare();
  std::vector<std::function<void()>> calls;
  calls.reserve(subjects.size());
  for (const subject& s : subjects) calls.push_back(s.run);
  const std::vector<double> seconds = median_seconds(calls);
  measured_group m{g.name, g.count, {}};
  for (std::size_t i = 0; i < subjects.size(); ++i)
    m.subjects.push_back({subjects[i].name, subjects[i].kind, subjects[i].tier,
                          seconds[i] * 1e9 / static_cast<double>(g.count), subjects[i].error});
  return m;
}

const measurement& fastest_of_ours(const measured_group& g) {
  const auto time = [](const measurement& m) {
    return m.kind == subject_kind::ours ? m.nanoseconds : std::numeric_limits<double>::infinity();
  };
  return *std::ranges::min_element(g.subjects, {}, time);
}

void append(std::string& cell, const std::string& text) { cell += (cell.empty() ? "" : ", ") + text; }

std::string time_text(const measurement& m) {
  char text[120];
  std::snprintf(text, sizeof text, "%s %.4g", m.name.c_str(), m.nanoseconds);
  return text;
}

// How busy the machine was otherwise: processor time is counted, but caches and memory are shared.
double load_average() {
  double load = 0;
  return getloadavg(&load, 1) == 1 ? load : 0;
}

std::string today() {
  const std::time_t now = std::time(nullptr);
  char text[16];
  std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&now));
  return text;
}

}  // namespace

std::string page_heading(const options& wish, const char* format) {
  char machine[200], text[3000];
  std::snprintf(machine, sizeof machine, "%s, %s, load average %.1f", processor_name().c_str(),
                today().c_str(), load_average());
  std::snprintf(text, sizeof text, format, machine, wish.repetitions,
                "In brackets: the time of the peer divided by that of tmk; above 1, tmk is faster.");
  return text;
}

std::string ratio_text(double ratio) {
  char text[32];
  std::snprintf(text, sizeof text, ratio < 9.95 ? "%#.2g" : "%.0f", ratio);
  return text;
}

void print_row(const measured_group& g, const options& wish) {
  const measurement& best = fastest_of_ours(g);
  std::string ours, peers;
  for (const measurement& m : g.subjects)
    if (m.kind == subject_kind::ours)
      append(ours, time_text(m));
    else
      append(peers, time_text(m) + " (" + ratio_text(speed_ratio(best, m)) + ")");
  std::printf(wish.markdown ? "| %s | %s | %s |\n" : "%-44s %-40s %s\n", g.name.c_str(), ours.c_str(),
              peers.c_str());
  std::fflush(stdout);
}

std::vector<measured_group> run_groups(const std::vector<group>& groups, const options& wish,
                                       const std::string& heading, group_printer print) {
  if (wish.markdown) {
    std::puts(heading.c_str());
    if (print == print_row) std::puts("| what | tmk, by tier | peers |\n|---|---|---|");
  }
  const std::regex wanted(wish.filter);
  std::vector<measured_group> all;
  for (const group& g : groups) {
    if (!std::regex_search(g.name, wanted)) continue;
    all.push_back(measured(g));
    print(all.back(), wish);
  }
  if (!all.empty()) return all;
  std::fprintf(stderr, "nothing matches %s\n", wish.filter.c_str());
  std::exit(2);
}

std::vector<subject> by_tier(const std::function<void()>& call) {
  std::vector<subject> subjects;
  for (const int tier : tools::available_tiers())
    subjects.push_back({.name = tmk_tier_name(tier),
                        .run =
                            [tier, call] {
                              tmk_select_tier(tier);
                              call();
                            },
                        .kind = subject_kind::ours,
                        .tier = tier});
  return subjects;
}

void expect_success(int32_t status) {
  if (status == 0) return;
  std::fprintf(stderr, "a call failed with status %d\n", status);
  std::exit(1);
}

}  // namespace tmk::bench
