// SPDX-License-Identifier: Apache-2.0
// tmk-bench: kernels compared with their peers, function by function, ratios from one run.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "calls.hpp"
#include "common/kernels.hpp"
#include "oracle/domains.hpp"
#include "oracle/oracle.hpp"
#include "peers.hpp"
#include "vector_page.hpp"

using namespace tmk;
using namespace tmk::bench;

namespace {

constexpr std::int32_t sizes[] = {8, 1000, 4'000'000};
constexpr std::int32_t largest_size = 4'000'000;

using tools::call_shape;

// One allocation for all functions, so that all subjects meet the same pages.
class arrays {
 public:
  call of(std::int32_t n) { return {n, a_.data(), b_.data(), r_.data(), r2_.data()}; }

  // None of the usual arguments is a rare case. All elements have one scalar exponent.
  void fill_for(const tools::vector_function& f) {
    if (filled_for_ == f.name) return;
    filled_for_ = f.name;
    f.is_single() ? fill<float>(f) : fill<double>(f);
    if (!f.has_value()) fill_places(f.shape);
  }

 private:
  using bytes = std::vector<std::byte>;

  template <class Real>
  void fill(const tools::vector_function& f) {
    std::mt19937_64 generate(1);
    for (const int argument : {0, 1}) {
      const auto [low, high] = accuracy::find_domain(f.letter, f.stem, argument).core;
      std::uniform_real_distribution<double> draw(low, high);
      Real* first = reinterpret_cast<Real*>(argument == 0 ? a_.data() : b_.data());
      if (argument == 1 && f.shape == call_shape::scalar_exponent)
        for (int i = 0; i < 2 * largest_size; ++i)
          first[i] = f.is_complex() && i % 2 == 1 ? Real(0.5) : Real(-1.25);
      else
        std::generate_n(first, 2 * largest_size, [&] { return static_cast<Real>(draw(generate)); });
    }
  }

  // A mask of which every other element is set at random, or indices that go through the array with small
  // steps forth and back.
  void fill_places(call_shape shape) {
    std::mt19937_64 generate(1);
    std::int32_t* first = reinterpret_cast<std::int32_t*>(b_.data());
    const bool is_mask = shape == call_shape::pack_mask || shape == call_shape::unpack_mask;
    for (std::int32_t i = 0; i < largest_size; ++i) first[i] = is_mask ? generate() % 2 : i ^ 3;
  }

  // Room for every other complex element.
  bytes a_ = bytes(4 * largest_size * sizeof(double)), b_ = a_, r_ = a_, r2_ = a_;
  std::string_view filled_for_;
};

struct candidate {
  std::string name;
  std::function<void(const call&)> run;
  subject_kind kind;
  int tier;
  double error = 0;
};

#define TMK_PEER_SOURCES(tier) \
  { real_peers_##tier, complex_peers_##tier, gather_peers_##tier }
constexpr peer_list (*peers_by_tier[][3])() = {TMK_PEER_SOURCES(W7), TMK_PEER_SOURCES(V3),
                                               TMK_PEER_SOURCES(V4)};

std::vector<peer> peers_of(const tools::vector_function& f, int tier) {
  std::vector<peer> own;
  for (const auto source : peers_by_tier[tier]) {
    const peer_list all = source();
    std::copy_if(all.rows, all.rows + all.count, std::back_inserter(own),
                 [&](const peer& p) { return p.function == f.name; });
  }
  return own;
}

std::vector<candidate> candidates_for(const tools::vector_function& f, const std::vector<int>& tiers) {
  std::vector<candidate> all;
  for (const tools::kernel& kernel :
       tools::distinct_kernels(f, tiers, {TMK_SLOT_LA, TMK_SLOT_HA, TMK_SLOT_EP})) {
    const int tier = kernel.uses.front().tier;
    std::string levels;
    for (const tools::kernel_use& use : kernel.uses)
      if (use.tier == tier) levels += (levels.empty() ? "" : "=") + std::string(tools::level_names[use.slot]);
    all.push_back({levels, call_of(f, kernel.address), subject_kind::ours, tier});
  }
  for (int tier : tiers) {
    for (const peer& p : peers_of(f, tier)) {
      const bool copies = p.name == std::string(copy_name) || p.name == std::string("memcpy");
      all.push_back({p.name, p.run, copies ? subject_kind::copy : subject_kind::peer, tier});
    }
  }
  return all;
}

// Where the parts of arguments and results are: `parts` numbers to an element.
template <class Real>
struct numbers {
  const Real* first;
  int parts;
  std::complex<double> operator[](std::int32_t i) const {
    return {first[parts * i], parts == 2 ? first[parts * i + 1] : Real(0)};
  }
};

// The largest error of each candidate but the copies, in ulp over the first arguments. A peer of another
// function would be no peer.
template <class Real>
void measure_errors(const tools::vector_function& f, std::vector<candidate>& candidates, arrays& data) {
  constexpr std::int32_t n = 4000;
  const accuracy::oracle exact(f.name);
  const call c = data.of(n);
  const int argument_parts = f.is_complex() && f.shape != call_shape::real_argument ? 2 : 1;
  const int result_parts = f.is_complex() && f.shape != call_shape::real_result ? 2 : 1;
  const numbers<Real> a{static_cast<const Real*>(c.a), argument_parts},
      b{static_cast<const Real*>(c.b), argument_parts}, r{static_cast<const Real*>(c.r), result_parts},
      r2{static_cast<const Real*>(c.r2), 1};
  std::vector<accuracy::exact_result> values;
  const auto& s = fraction_scalars;
  for (std::int32_t i = 0; i < n; ++i)
    values.push_back(exact(accuracy::arguments{a[i], b[i], s[0], s[1], s[2], s[3]}));
  for (candidate& subject : candidates) {
    if (subject.kind == subject_kind::copy) continue;
    subject.run(c);
    double largest = 0, coarsest = 0;
    for (std::int32_t i = 0; i < n; ++i) {
      const auto& [first, second] = values[static_cast<std::size_t>(i)];
      const std::complex<double> got =
          f.shape == call_shape::two_results ? std::complex(r[i].real(), r2[i].real()) : r[i];
      largest = std::max(
          {largest, accuracy::ulp_error(first, got.real()), accuracy::ulp_error(second, got.imag())});
      const std::complex<double> want(first.rounded, second.rounded);
      coarsest = std::max(coarsest, std::min(std::abs(got - want), std::abs(got - want) / std::abs(want)));
    }
    subject.error = largest;
    if (!(coarsest <= 0x1p-9))
      throw std::runtime_error(std::string(f.name) + ": " + subject.name + " computes something else");
  }
}

constexpr const char* heading = R"(<!-- Made by `./dev bench --markdown`: do not edit. -->
# Performance

%s.

Nanoseconds per element of processor time on one core; the median of %d repetitions, those of the function's
kernels and peers in random order, in one process, on the same arrays.
%s
Two peers in the same instruction set are given, where there are two: the fastest, and the fastest whose
largest error is at most 1.1 ulp, measured against MPFR on 4000 of the same arguments.

Peers: the C library's vector functions (libmvec, up to 4 ulp), SLEEF (u05: 0.5 ulp, u10: 1.0 ulp, u35: 3.5
ulp), Eigen's array expressions, xsimd, and the plain loop over the C library's scalar function or the language's
operation. The error of a complex result is that of its worse part. Kernels are called through the
dispatch record; a column without a figure shares the kernel of a narrower tier. Functions with * have no
kernels of their own yet: they run in extended precision at every level.)";

group group_of(const tools::vector_function& f, std::int32_t n, const std::vector<int>& tiers,
               const std::shared_ptr<arrays>& data) {
  return {std::string(f.name) + "/" + std::to_string(n), n, [=] {
            data->fill_for(f);
            auto candidates = candidates_for(f, tiers);
            if (f.has_value())
              f.is_single() ? measure_errors<float>(f, candidates, *data)
                            : measure_errors<double>(f, candidates, *data);
            std::vector<subject> subjects;
            subjects.reserve(candidates.size());
            for (const candidate& c : candidates)
              subjects.push_back({.name = c.name,
                                  .run = [=] { c.run(data->of(n)); },
                                  .kind = c.kind,
                                  .tier = c.tier,
                                  .error = c.error});
            return subjects;
          }};
}

}  // namespace

int main(int argc, char** argv) {
  const options wish = start(argc, argv, "sExp/1000");
  const auto tiers = tools::available_tiers();
  const auto functions = tools::all_functions();
  const auto data = std::make_shared<arrays>();
  std::vector<group> groups;
  for (const tools::vector_function& f : functions)
    for (std::int32_t n : sizes)
      if (f.vectorized || !peers_of(f, TMK_TIER_W7).empty()) groups.push_back(group_of(f, n, tiers, data));
  const auto measured = run_groups(groups, wish, page_heading(wish, heading), print_lines);
  if (wish.markdown) print_tables(measured);
}
