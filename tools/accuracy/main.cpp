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

using namespace tmk::accuracy;

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
  std::string function, level, tier, page;
  std::int64_t samples = 0;
  std::uint64_t seed = 1;
  int threads = static_cast<int>(std::thread::hardware_concurrency());
  bool exhaustive = false;

  CLI::App app("Errors of the vector functions in ulp, against MPFR");
  app.add_option("function", function,
                 "one function (sExp) or all precisions of a stem (Exp); all by default");
  app.add_option("--level", level, "one accuracy level")->check(CLI::IsMember({"LA", "HA", "EP"}));
  app.add_option("--tier", tier, "one tier")->check(CLI::IsMember({"W7", "V3", "V4"}));
  app.add_option("--samples", samples, "samples per function; 2^16 for all functions, 2^20 for one");
  app.add_option("--seed", seed, "seed of the samples");
  app.add_option("--threads", threads, "threads");
  app.add_flag("--exhaustive", exhaustive,
               "every number of the format: single-precision functions of one argument");
  app.add_flag("--markdown{docs/accuracy.md}", page, "write the page of the documentation");
  CLI11_PARSE(app, argc, argv);

  const auto functions = functions_named(function);
  if (functions.empty()) {
    std::fprintf(stderr, "no function %s\n", function.c_str());
    return 2;
  }
  if (exhaustive && !page.empty()) {
    std::fprintf(stderr, "the page is made of sampled errors\n");
    return 2;
  }
  if (samples <= 0) samples = function.empty() ? 1 << 16 : 1 << 20;

  selection chosen{available_tiers(), {TMK_SLOT_LA, TMK_SLOT_HA, TMK_SLOT_EP}};
  for (int t : {TMK_TIER_W7, TMK_TIER_V3, TMK_TIER_V4})
    if (std::ranges::find(chosen.tiers, t) == chosen.tiers.end())
      std::fprintf(stderr, "skipped: this processor or TMK_TIER has no %s\n", tmk_tier_name(t));
  if (!tier.empty()) std::erase_if(chosen.tiers, [&](int t) { return tmk_tier_name(t) != tier; });
  if (!level.empty()) chosen.slots = {slot_of(level)};
  if (chosen.tiers.empty()) return 1;

  auto all = list_kernels(functions, chosen);
  print_heading(stdout);
  const auto show = [&](const measurement& m) {
    print_lines(stdout, m);
    if (!function.empty()) print_source_comments(stdout, m);
    std::fflush(stdout);
  };
  if (exhaustive) {
    for (measurement& m : all)
      if (measure_exhaustively(m, threads)) show(m);
  } else {
    measure(all, samples, seed, threads, show);
  }
  if (page.empty()) return 0;
  std::FILE* out = std::fopen(page.c_str(), "w");
  if (out == nullptr) {
    std::perror(page.c_str());
    return 1;
  }
  print_markdown(out, all, chosen.tiers, samples);
  std::fclose(out);
}
