// SPDX-License-Identifier: Apache-2.0
#include "results.hpp"

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "peers.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::bench {
namespace {

const subject* find(const group& g, subject_kind kind, int tier, const std::string& name) {
  const auto matches = [&](const subject& s) { return s.kind == kind && s.tier == tier && s.name == name; };
  const auto found = std::ranges::find_if(g.subjects, matches);
  return found == g.subjects.end() ? nullptr : &*found;
}

// The kernel that serves a level ("HA"): its name lists the levels it serves.
const subject* find_level(const group& g, int tier, const char* level) {
  const auto serves = [&](const subject& s) {
    return s.kind == subject_kind::kernel && s.tier == tier && s.name.find(level) != std::string::npos;
  };
  const auto found = std::ranges::find_if(g.subjects, serves);
  return found == g.subjects.end() ? nullptr : &*found;
}

// How busy the machine was besides: processor time is counted, but caches and memory are shared.
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

// Nanoseconds per element and, in brackets, what part of the best peer's time that is.
std::string cell(const group& g, int tier, const char* level) {
  const subject* kernel = find_level(g, tier, level);
  if (kernel == nullptr) return "";
  char text[64];
  const subject* peer = best_peer(g, tier);
  if (peer == nullptr)
    std::snprintf(text, sizeof text, "%.3g", kernel->nanoseconds);
  else
    std::snprintf(text, sizeof text, "%.3g (%.2f)", kernel->nanoseconds,
                  kernel->nanoseconds / peer->nanoseconds);
  return text;
}

std::string peer_cell(const group& g, int tier) {
  const subject* peer = best_peer(g, tier);
  if (peer == nullptr) return "";
  char text[64];
  std::snprintf(text, sizeof text, "%s %.3g", peer->name.c_str(), peer->nanoseconds);
  return text;
}

void print_table(std::FILE* out, const std::vector<group>& groups, std::int32_t size,
                 const std::vector<int>& tiers) {
  std::fprintf(out, "\n## %d elements\n\n| function |", size);
  for (int tier : tiers) {
    const char* name = tmk_tier_name(tier);
    std::fprintf(out, " %s LA | %s HA | %s EP | %s best peer |", name, name, name, name);
  }
  std::fprintf(out, "\n|---|");
  for (std::size_t i = 0; i < 4 * tiers.size(); ++i) std::fprintf(out, "---|");
  std::fprintf(out, "\n");
  for (const group& g : groups) {
    if (g.size != size) continue;
    std::fprintf(out, "| `%s`%s |", g.function.c_str(), g.worked ? "" : " *");
    for (int tier : tiers) {
      for (const char* level : {"LA", "HA", "EP"}) std::fprintf(out, " %s |", cell(g, tier, level).c_str());
      std::fprintf(out, " %s |", peer_cell(g, tier).c_str());
    }
    std::fprintf(out, "\n");
  }
}

// Memory-bound functions against the copy of the array.
void print_copies(std::FILE* out, const std::vector<group>& groups, const std::vector<int>& tiers) {
  std::fprintf(out,
               "\n## Beside the copy of the array\n\n"
               "Time of the `HA` kernel divided by that of a copy through registers of the same width.\n\n"
               "| function | elements |");
  for (int tier : tiers) std::fprintf(out, " %s |", tmk_tier_name(tier));
  std::fprintf(out, "\n|---|---|");
  for (std::size_t i = 0; i < tiers.size(); ++i) std::fprintf(out, "---|");
  std::fprintf(out, "\n");
  for (const group& g : groups) {
    if (!g.is_bound_by_memory) continue;
    std::fprintf(out, "| `%s` | %d |", g.function.c_str(), g.size);
    for (int tier : tiers) {
      const subject *kernel = find_level(g, tier, "HA"), *copy = find(g, subject_kind::copy, tier, copy_name);
      if (kernel == nullptr || copy == nullptr)
        std::fprintf(out, " |");
      else
        std::fprintf(out, " %.2f |", kernel->nanoseconds / copy->nanoseconds);
    }
    std::fprintf(out, "\n");
  }
}

}  // namespace

const subject* best_peer(const group& g, int tier) {
  const subject* best = nullptr;
  for (const subject& s : g.subjects)
    if (s.kind == subject_kind::peer && s.tier == tier &&
        (best == nullptr || s.nanoseconds < best->nanoseconds))
      best = &s;
  return best;
}

void print(std::FILE* out, const group& g) {
  for (const subject& s : g.subjects) {
    const bool is_kernel = s.kind == subject_kind::kernel;
    std::fprintf(out, "%-9s %8d  %s  %-10s %9.3f ns", g.function.c_str(), g.size, tmk_tier_name(s.tier),
                 is_kernel ? ("tmk " + s.name).c_str() : s.name.c_str(), s.nanoseconds);
    const subject* peer = best_peer(g, s.tier);
    if (is_kernel && peer != nullptr)
      std::fprintf(out, "  %5.2f of %s", s.nanoseconds / peer->nanoseconds, peer->name.c_str());
    const subject* copy = find(g, subject_kind::copy, s.tier, copy_name);
    if (is_kernel && copy != nullptr)
      std::fprintf(out, "  %5.2f of the copy", s.nanoseconds / copy->nanoseconds);
    std::fprintf(out, "\n");
  }
  std::fflush(out);
}

void print_markdown(std::FILE* out, const std::vector<group>& groups, const std::vector<int>& tiers,
                    const std::string& processor, int repetitions) {
  std::fprintf(out, R"(<!-- Made by `./dev bench --markdown`: do not edit. -->
# Performance

%s, %s, load average %.1f. Nanoseconds per element of processor time on one core; the median of %d
repetitions, those of the function's kernels and peers in random order, in one process, on the same arrays. In
brackets: the time divided by that of the fastest peer in the same instruction set, so below 1 the kernel is
faster.

Peers: the C library's vector functions (libmvec, up to 4 ulp), SLEEF (u10: 1.0 ulp, u35: 3.5 ulp), Eigen's
array expressions, and the plain loop over the C library's scalar function. Kernels are called through the
dispatch record; a column without a figure shares the kernel of a narrower tier. Functions with * have no
kernels of their own yet: they run in extended precision at every level.
)",
               processor.c_str(), today().c_str(), load_average(), repetitions);
  for (int tier : {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4})
    if (std::ranges::find(tiers, tier) == tiers.end())
      std::fprintf(out, "\nThe tier %s was not measured: the processor does not have it.\n",
                   tmk_tier_name(tier));
  std::vector<std::int32_t> sizes;
  for (const group& g : groups)
    if (std::ranges::find(sizes, g.size) == sizes.end()) sizes.push_back(g.size);
  for (std::int32_t size : sizes) print_table(out, groups, size, tiers);
  print_copies(out, groups, tiers);
}

}  // namespace tmk::bench
