// SPDX-License-Identifier: Apache-2.0
// tmk-accuracy: the error of every kernel, by function, level and tier.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "exhaustive.hpp"
#include "measure.hpp"
#include "report.hpp"
#include "search.hpp"

using namespace tmk::accuracy;
using namespace tmk::tools;

namespace {

// "sExp", or "Exp" for all its precisions.
std::vector<vector_function> functions_named(const std::string& name) {
  auto functions = functions_with_value();
  if (!name.empty())
    std::erase_if(functions, [&](const vector_function& f) { return f.name != name && f.stem != name; });
  return functions;
}

int slot_of(const std::string& level) {
  return static_cast<int>(std::ranges::find(level_names, level) - std::begin(level_names));
}

}  // namespace

int main(int argc, char** argv) {
  std::string function, level, tier;
  std::int64_t samples = 0;
  std::uint64_t seed = 1;
  int threads = static_cast<int>(std::thread::hardware_concurrency());
  bool exhaustive = false;
  std::string effort_name = "auto", hard_inputs, record_path;

  CLI::App app("Errors of the vector functions in ulp, against MPFR");
  app.add_option("function", function,
                 "one function (sExp) or all precisions of a stem (Exp); all by default");
  auto* one_level =
      app.add_option("--level", level, "one accuracy level")->check(CLI::IsMember({"LA", "HA", "EP"}));
  app.add_option("--tier", tier, "one tier")->check(CLI::IsMember({"W7", "V3", "V4"}));
  app.add_option("--samples", samples, "samples per function; 2^16 for all functions, 2^20 for one");
  app.add_option("--seed", seed, "seed of the samples");
  app.add_option("--threads", threads, "threads");
  app.add_option("--search", effort_name,
                 "how far to climb from the worst samples: none, brief, thorough, or auto, which is "
                 "thorough for functions with kernels of their own")
      ->check(CLI::IsMember({"none", "brief", "thorough", "auto"}));
  app.add_option("--inputs", hard_inputs, "a file of hard arguments to judge as well: function a [b] a line")
      ->check(CLI::ExistingFile);
  app.add_flag("--exhaustive", exhaustive,
               "every number of the format, for single-precision functions of one argument that have "
               "kernels of their own and a filter; the others are sampled");
  app.add_option("--record", record_path, "put the figures into this file, as docs/accuracy.tsv has them")
      ->excludes(one_level);
  CLI11_PARSE(app, argc, argv);

  const auto functions = functions_named(function);
  if (functions.empty()) {
    std::fprintf(stderr, "no function %s\n", function.c_str());
    return 2;
  }
  if (samples <= 0) samples = function.empty() ? 1 << 16 : 1 << 20;

  auto tiers = available_tiers();
  std::vector<int> slots{TMK_SLOT_LA, TMK_SLOT_HA, TMK_SLOT_EP};
  for (int t : all_tiers)
    if (std::ranges::find(tiers, t) == tiers.end())
      std::fprintf(stderr, "skipped: this processor or TMK_TIER has no %s\n", tmk_tier_name(t));
  if (!tier.empty()) std::erase_if(tiers, [&](int t) { return tmk_tier_name(t) != tier; });
  if (!level.empty()) slots = {slot_of(level)};
  if (tiers.empty()) return 1;

  auto all = list_kernels(functions, tiers, slots);
  print_heading(stdout);
  for (measurement& m : all) {
    if (!exhaustive || !measure_exhaustively(m, threads)) {
      measure(m, samples, seed, threads);
      if (!hard_inputs.empty() && !judge_listed(m, hard_inputs)) return 2;
      const bool far = effort_name == "thorough" || (effort_name == "auto" && m.function->vectorized);
      if (effort_name != "none") climb(m, far ? thorough : brief, seed, threads);
    }
    print_lines(stdout, m);
    if (!function.empty()) print_source_comments(stdout, m);
    std::fflush(stdout);
    if (!record_path.empty() && !record(record_path, m, tiers, effort_name != "none")) {
      std::fprintf(stderr, "%s: cannot be written\n", record_path.c_str());
      return 1;
    }
  }
}
