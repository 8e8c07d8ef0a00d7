// SPDX-License-Identifier: Apache-2.0
#include "timing.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>

namespace tmk::bench {
namespace {

// Gathers the repetitions of each subject by the name under which it was registered.
class gathering_reporter : public ::benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs)
      if (run.run_type == Run::RT_Iteration && !run.error_occurred)
        seconds_[run.run_name.function_name].push_back(run.cpu_accumulated_time /
                                                       static_cast<double>(run.iterations));
  }

  double median_seconds(const std::string& name) {
    auto& times = seconds_.at(name);
    std::ranges::nth_element(times, times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2));
    return times[times.size() / 2];
  }

 private:
  std::map<std::string, std::vector<double>> seconds_;
};

}  // namespace

options start(int argc, char** argv, const char* shape) {
  options o;
  const std::string repetitions = "--repetitions=";
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--markdown")
      o.markdown = true;
    else if (word.starts_with(repetitions))
      o.repetitions = std::max(1, std::atoi(word.c_str() + repetitions.size()));
    else if (word.starts_with("-") || !o.filter.empty()) {
      std::fprintf(stderr, "usage: %s [regular expression of %s] [--markdown] [--repetitions=N]\n", argv[0],
                   shape);
      std::exit(2);
    } else
      o.filter = word;
  }
  std::string settings[] = {argv[0], "--benchmark_enable_random_interleaving=true",
                            "--benchmark_min_time=0.01",
                            "--benchmark_repetitions=" + std::to_string(o.repetitions)};
  std::vector<char*> arguments;
  for (std::string& setting : settings) arguments.push_back(setting.data());
  int count = static_cast<int>(arguments.size());
  ::benchmark::Initialize(&count, arguments.data());
  return o;
}

std::vector<double> median_seconds(const std::vector<std::function<void()>>& subjects) {
  const auto name_of = [](std::size_t i) { return "subject" + std::to_string(i); };
  ::benchmark::ClearRegisteredBenchmarks();
  for (std::size_t i = 0; i < subjects.size(); ++i)
    ::benchmark::RegisterBenchmark(name_of(i).c_str(), [&, i](::benchmark::State& state) {
      for ([[maybe_unused]] auto _ : state) {
        subjects[i]();
        ::benchmark::ClobberMemory();
      }
    });
  gathering_reporter times;
  ::benchmark::RunSpecifiedBenchmarks(&times);
  std::vector<double> seconds;
  for (std::size_t i = 0; i < subjects.size(); ++i) seconds.push_back(times.median_seconds(name_of(i)));
  return seconds;
}

std::string processor_name() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);)
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  return "unknown processor";
}

}  // namespace tmk::bench
