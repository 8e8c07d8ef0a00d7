// SPDX-License-Identifier: Apache-2.0
#include "vector_page.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "common/kernels.hpp"
#include "peers.hpp"
#include "tmk/abi/vtm.h"

namespace tmk::bench {
namespace {

std::string function_of(const measured_group& g) { return g.name.substr(0, g.name.find('/')); }

template <class Matches>
const measurement* find(const measured_group& g, subject_kind kind, int tier, Matches matches) {
  const auto found = std::ranges::find_if(
      g.subjects, [&](const measurement& m) { return m.kind == kind && m.tier == tier && matches(m.name); });
  return found == g.subjects.end() ? nullptr : &*found;
}

// The kernel that serves a level ("HA"): its name lists the levels it serves.
const measurement* find_level(const measured_group& g, int tier, const char* level) {
  return find(g, subject_kind::ours, tier,
              [&](const std::string& name) { return name.find(level) != std::string::npos; });
}

const measurement* find_copy(const measured_group& g, int tier) {
  return find(g, subject_kind::copy, tier, [](const std::string& name) { return name == copy_name; });
}

// An error below this is what a user who needs accuracy accepts.
constexpr double accurate = 1.1;

// The fastest peer in the tier's instruction set with at most that error; null where there is none.
const measurement* best_peer(const measured_group& g, int tier, double largest_error) {
  const measurement* best = nullptr;
  for (const measurement& m : g.subjects)
    if (m.kind == subject_kind::peer && m.tier == tier && m.error <= largest_error &&
        (best == nullptr || m.nanoseconds < best->nanoseconds))
      best = &m;
  return best;
}

// The peers that a kernel is compared with: the fastest one, and the fastest accurate one if that is another.
std::vector<const measurement*> peers_of(const measured_group& g, int tier) {
  std::vector<const measurement*> peers;
  for (const double largest_error : {HUGE_VAL, accurate}) {
    const measurement* peer = best_peer(g, tier, largest_error);
    if (peer != nullptr && (peers.empty() || peers[0] != peer)) peers.push_back(peer);
  }
  return peers;
}

std::string time_text(const measurement& m) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3g", m.nanoseconds);
  return text;
}

std::string kernel_cell(const measured_group& g, int tier, const char* level) {
  const measurement* kernel = find_level(g, tier, level);
  if (kernel == nullptr) return "";
  std::string ratios;
  for (const measurement* peer : peers_of(g, tier))
    ratios += (ratios.empty() ? " (" : "; ") + ratio_text(speed_ratio(*kernel, *peer));
  return time_text(*kernel) + ratios + (ratios.empty() ? "" : ")");
}

std::string peer_cell(const measured_group& g, int tier) {
  std::string cell;
  for (const measurement* peer : peers_of(g, tier))
    cell += (cell.empty() ? "" : "; ") + peer->name + " " + time_text(*peer);
  return cell;
}

std::string copy_cell(const measured_group& g, int tier) {
  const measurement *kernel = find_level(g, tier, "HA"), *copy = find_copy(g, tier);
  return kernel != nullptr && copy != nullptr ? ratio_text(speed_ratio(*kernel, *copy)) : "";
}

bool has_kernels_of_its_own(const std::string& function) {
  const auto functions = tools::functions_with_value();
  return std::ranges::any_of(functions, [&](const auto& f) { return f.name == function && f.vectorized; });
}

void print_table(const std::vector<measured_group>& groups, int64_t size, const std::vector<int>& tiers) {
  std::printf("\n## %lld elements\n\n| function |", static_cast<long long>(size));
  for (int tier : tiers) {
    const char* name = tmk_tier_name(tier);
    std::printf(" %s LA | %s HA | %s EP | %s peers |", name, name, name, name);
  }
  std::printf("\n|---|");
  for (std::size_t i = 0; i < 4 * tiers.size(); ++i) std::printf("---|");
  std::printf("\n");
  for (const measured_group& g : groups) {
    if (g.count != size) continue;
    const std::string function = function_of(g);
    std::printf("| `%s`%s |", function.c_str(), has_kernels_of_its_own(function) ? "" : " *");
    for (int tier : tiers) {
      for (const char* level : {"LA", "HA", "EP"}) std::printf(" %s |", kernel_cell(g, tier, level).c_str());
      std::printf(" %s |", peer_cell(g, tier).c_str());
    }
    std::printf("\n");
  }
}

// Functions that wait for memory.
void print_copies(const std::vector<measured_group>& groups, const std::vector<int>& tiers) {
  std::printf(
      "\n## Compared with the copy of the array\n\n"
      "Time of a copy through registers of the same width divided by that of the `HA` kernel.\n\n"
      "| function | elements |");
  for (int tier : tiers) std::printf(" %s |", tmk_tier_name(tier));
  std::printf("\n|---|---|");
  for (std::size_t i = 0; i < tiers.size(); ++i) std::printf("---|");
  std::printf("\n");
  for (const measured_group& g : groups) {
    if (std::ranges::none_of(g.subjects, [](const auto& m) { return m.kind == subject_kind::copy; }))
      continue;
    std::printf("| `%s` | %lld |", function_of(g).c_str(), static_cast<long long>(g.count));
    for (int tier : tiers) std::printf(" %s |", copy_cell(g, tier).c_str());
    std::printf("\n");
  }
}

}  // namespace

void print_lines(const measured_group& g, const options& wish) {
  std::FILE* const out = wish.markdown ? stderr : stdout;
  for (const measurement& m : g.subjects) {
    const bool is_ours = m.kind == subject_kind::ours;
    std::fprintf(out, "%-16s  %s  %-10s %9.3f ns", g.name.c_str(), tmk_tier_name(m.tier),
                 is_ours ? ("tmk " + m.name).c_str() : m.name.c_str(), m.nanoseconds);
    if (m.kind != subject_kind::copy) std::fprintf(out, "  %9.3g ulp", m.error);
    const measurement* copy = find_copy(g, m.tier);
    if (is_ours)
      for (const measurement* peer : peers_of(g, m.tier))
        std::fprintf(out, "  %s times as fast as %s", ratio_text(speed_ratio(m, *peer)).c_str(),
                     peer->name.c_str());
    if (is_ours && copy != nullptr)
      std::fprintf(out, "  %s times as fast as the copy", ratio_text(speed_ratio(m, *copy)).c_str());
    std::fprintf(out, "\n");
  }
  std::fflush(out);
}

void print_tables(const std::vector<measured_group>& groups) {
  const std::vector<int> tiers = tools::available_tiers();
  for (int tier : {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4})
    if (std::ranges::find(tiers, tier) == tiers.end())
      std::printf("\nThe tier %s was not measured: the processor does not have it.\n", tmk_tier_name(tier));
  std::vector<int64_t> sizes;
  for (const measured_group& g : groups)
    if (std::ranges::find(sizes, g.count) == sizes.end()) sizes.push_back(g.count);
  for (int64_t size : sizes) print_table(groups, size, tiers);
  print_copies(groups, tiers);
}

}  // namespace tmk::bench
