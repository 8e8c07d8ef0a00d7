// SPDX-License-Identifier: Apache-2.0
// tmk-bench: kernels beside their peers, function by function, ratios from one run.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/kernels.hpp"
#include "oracle/domains.hpp"
#include "peers.hpp"
#include "results.hpp"
#include "timing.hpp"

using namespace tmk;
using namespace tmk::bench;

namespace {

constexpr std::int32_t sizes[] = {8, 1000, 4'000'000};
constexpr std::int32_t largest_size = 4'000'000;

// One allocation for all functions, so that all subjects meet the same pages.
struct arrays {
  std::vector<std::byte> a = std::vector<std::byte>(largest_size * sizeof(double));
  std::vector<std::byte> r = std::vector<std::byte>(largest_size * sizeof(double));

  template <class Real>
  void fill(const accuracy::interval& usual) {
    std::mt19937_64 generate(1);
    std::uniform_real_distribution<double> draw(usual.low, usual.high);
    Real* first = reinterpret_cast<Real*>(a.data());
    std::generate_n(first, largest_size, [&] { return static_cast<Real>(draw(generate)); });
  }
};

struct candidate {
  subject about;
  array_function run;
};

using peer_source = peer_list (*)();
constexpr peer_source peers_by_tier[] = {peers_W7, peers_V3, peers_V4};

bool has_peer(const tools::vector_function& f) {
  const peer_list peers = peers_by_tier[0]();
  return std::any_of(peers.rows, peers.rows + peers.count,
                     [&](const peer& p) { return p.function == f.name; });
}

std::vector<candidate> candidates_for(const tools::vector_function& f, const std::vector<int>& tiers) {
  std::vector<candidate> all;
  for (const tools::kernel& kernel :
       tools::distinct_kernels(f, tiers, {TMK_SLOT_LA, TMK_SLOT_HA, TMK_SLOT_EP})) {
    const int tier = kernel.uses.front().tier;
    std::string levels;
    for (const tools::kernel_use& use : kernel.uses)
      if (use.tier == tier) levels += (levels.empty() ? "" : "=") + std::string(tools::level_names[use.slot]);
    all.push_back(
        {{subject_kind::kernel, tier, levels, 0}, reinterpret_cast<array_function>(kernel.address)});
  }
  for (int tier : tiers) {
    const peer_list peers = peers_by_tier[tier]();
    for (const peer* p = peers.rows; p != peers.rows + peers.count; ++p) {
      if (p->function != f.name) continue;
      const bool copies = p->name == std::string(copy_name) || p->name == std::string("memcpy");
      all.push_back({{copies ? subject_kind::copy : subject_kind::peer, tier, p->name, 0}, p->run});
    }
  }
  return all;
}

// Whether results agree to what the coarsest level promises: a peer of another function would be no peer.
template <class Real>
bool agree(const void* first, const void* second, std::int32_t n) {
  const auto alike = [](Real x, Real y) { return std::abs(x - y) <= 0x1p-9 * std::abs(y) + 0x1p-9; };
  const Real* x = static_cast<const Real*>(first);
  return std::equal(x, x + n, static_cast<const Real*>(second), alike);
}

// Every candidate but the copies must compute what the first does.
void check(const tools::vector_function& f, const std::vector<candidate>& candidates, arrays& data) {
  constexpr std::int32_t n = 1000;
  std::vector<double> expected(n);
  candidates[0].run(n, data.a.data(), expected.data());
  for (const candidate& c : candidates) {
    if (c.about.kind == subject_kind::copy) continue;
    c.run(n, data.a.data(), data.r.data());
    if (f.is_single() ? agree<float>(data.r.data(), expected.data(), n)
                      : agree<double>(data.r.data(), expected.data(), n))
      continue;
    throw std::runtime_error(std::string(f.name) + ": " + c.about.name + " computes something else");
  }
}

// Measures all candidates of one function and size; their repetitions are shuffled.
group measure(const tools::vector_function& f, std::int32_t n, const std::vector<int>& tiers, arrays& data) {
  group g{std::string(f.name), n, false, f.worked, {}};
  const auto candidates = candidates_for(f, tiers);
  check(f, candidates, data);
  std::vector<std::function<void()>> calls;
  for (const candidate& c : candidates)
    calls.emplace_back([&c, &data, n] { c.run(n, data.a.data(), data.r.data()); });
  const std::vector<double> seconds = median_seconds(calls);
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    g.subjects.push_back(candidates[i].about);
    g.subjects.back().nanoseconds = seconds[i] * 1e9 / n;
    g.is_bound_by_memory |= candidates[i].about.kind == subject_kind::copy;
  }
  return g;
}

}  // namespace

int main(int argc, char** argv) {
  const options wish = start(argc, argv, "sExp/1000");
  const std::regex wanted(wish.filter);

  const auto tiers = tools::available_tiers();
  const auto functions = tools::functions_with_value();
  const auto data = std::make_unique<arrays>();
  std::vector<group> groups;
  for (const tools::vector_function& f : functions) {
    if (f.shape != tools::call_shape::unary || f.is_complex() || !(f.worked || has_peer(f))) continue;
    // None of the usual arguments is a rare case.
    const accuracy::interval& usual = accuracy::find_domain(f.letter, f.stem, 0).core;
    bool filled = false;
    for (std::int32_t n : sizes) {
      if (!std::regex_search(std::string(f.name) + "/" + std::to_string(n), wanted)) continue;
      if (!filled) f.is_single() ? data->fill<float>(usual) : data->fill<double>(usual);
      filled = true;
      groups.push_back(measure(f, n, tiers, *data));
      print(wish.markdown ? stderr : stdout, groups.back());
    }
  }
  if (groups.empty()) {
    std::fprintf(stderr, "nothing matches %s\n", wish.filter.c_str());
    return 2;
  }
  if (wish.markdown) print_markdown(stdout, groups, tiers, processor_name(), wish.repetitions);
}
