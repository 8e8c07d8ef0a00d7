// SPDX-License-Identifier: Apache-2.0
// tmk-bench: kernels compared with their peers, function by function, ratios from one run.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/kernels.hpp"
#include "oracle/domains.hpp"
#include "peers.hpp"
#include "vector_page.hpp"

using namespace tmk;
using namespace tmk::bench;

namespace {

constexpr std::int32_t sizes[] = {8, 1000, 4'000'000};
constexpr std::int32_t largest_size = 4'000'000;

// One allocation for all functions, so that all subjects meet the same pages.
struct arrays {
  std::vector<std::byte> a = std::vector<std::byte>(largest_size * sizeof(double));
  std::vector<std::byte> r = std::vector<std::byte>(largest_size * sizeof(double));
  std::string_view filled_for;

  // None of the usual arguments is a rare case.
  void fill_for(const tools::vector_function& f) {
    if (filled_for == f.name) return;
    filled_for = f.name;
    const accuracy::interval& usual = accuracy::find_domain(f.letter, f.stem, 0).core;
    f.is_single() ? fill<float>(usual) : fill<double>(usual);
  }

 private:
  template <class Real>
  void fill(const accuracy::interval& usual) {
    std::mt19937_64 generate(1);
    std::uniform_real_distribution<double> draw(usual.low, usual.high);
    Real* first = reinterpret_cast<Real*>(a.data());
    std::generate_n(first, largest_size, [&] { return static_cast<Real>(draw(generate)); });
  }
};

struct candidate {
  std::string name;
  array_function run;
  subject_kind kind;
  int tier;
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
    all.push_back({levels, reinterpret_cast<array_function>(kernel.address), subject_kind::ours, tier});
  }
  for (int tier : tiers) {
    const peer_list peers = peers_by_tier[tier]();
    for (const peer* p = peers.rows; p != peers.rows + peers.count; ++p) {
      if (p->function != f.name) continue;
      const bool copies = p->name == std::string(copy_name) || p->name == std::string("memcpy");
      all.push_back({p->name, p->run, copies ? subject_kind::copy : subject_kind::peer, tier});
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
    if (c.kind == subject_kind::copy) continue;
    c.run(n, data.a.data(), data.r.data());
    if (f.is_single() ? agree<float>(data.r.data(), expected.data(), n)
                      : agree<double>(data.r.data(), expected.data(), n))
      continue;
    throw std::runtime_error(std::string(f.name) + ": " + c.name + " computes something else");
  }
}

constexpr const char* heading = R"(<!-- Made by `./dev bench --markdown`: do not edit. -->
# Performance

%s.

Nanoseconds per element of processor time on one core; the median of %d repetitions, those of the function's
kernels and peers in random order, in one process, on the same arrays.
%s
The peer is the fastest one in the same instruction set.

Peers: the C library's vector functions (libmvec, up to 4 ulp), SLEEF (u10: 1.0 ulp, u35: 3.5 ulp), Eigen's
array expressions, and the plain loop over the C library's scalar function. Kernels are called through the
dispatch record; a column without a figure shares the kernel of a narrower tier. Functions with * have no
kernels of their own yet: they run in extended precision at every level.)";

group group_of(const tools::vector_function& f, std::int32_t n, const std::vector<int>& tiers,
               const std::shared_ptr<arrays>& data) {
  return {std::string(f.name) + "/" + std::to_string(n), n, [=] {
            data->fill_for(f);
            const auto candidates = candidates_for(f, tiers);
            check(f, candidates, *data);
            std::vector<subject> subjects;
            subjects.reserve(candidates.size());
            for (const candidate& c : candidates)
              subjects.push_back({.name = c.name,
                                  .run = [=] { c.run(n, data->a.data(), data->r.data()); },
                                  .kind = c.kind,
                                  .tier = c.tier});
            return subjects;
          }};
}

}  // namespace

int main(int argc, char** argv) {
  const options wish = start(argc, argv, "sExp/1000");
  const auto tiers = tools::available_tiers();
  const auto functions = tools::functions_with_value();
  const auto data = std::make_shared<arrays>();
  std::vector<group> groups;
  for (const tools::vector_function& f : functions)
    for (std::int32_t n : sizes)
      if (f.shape == tools::call_shape::unary && !f.is_complex() && (f.vectorized || has_peer(f)))
        groups.push_back(group_of(f, n, tiers, data));
  const auto measured = run_groups(groups, wish, page_heading(wish, heading), print_lines);
  if (wish.markdown) print_tables(measured);
}
