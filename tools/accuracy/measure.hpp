// SPDX-License-Identifier: Apache-2.0
// Errors of the kernels of a function, over samples of its domain.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "oracle/oracle.hpp"
#include "tools/common/kernels.hpp"

namespace tmk::accuracy {

using tools::vector_function;

// What became of one result.
struct finding {
  double error = -1;  // ulp; infinite for a special where a number belongs, or the reverse
  arguments where{};
  std::array<double, 2> got{};
  exact_result want{};
};

struct tally {
  finding worst;
  double error_sum = 0;       // of finite errors
  double worst_relative = 0;  // where the exact value is a normal number; of the modulus, if complex
  std::int64_t count = 0;
  std::int64_t correctly_rounded = 0;

  void add(const vector_function& f, const arguments& x, const exact_result& exact,
           const std::array<double, 2>& got);
  void merge(const tally& later);
};

struct measured_kernel : tools::kernel {
  tally errors;
};

struct measurement {
  const vector_function* function;
  std::vector<measured_kernel> kernels{};
};

// The distinct kernels of the functions in these tiers and slots, nothing measured yet. Selects the tiers in
// turn.
std::vector<measurement> list_kernels(const std::vector<vector_function>& functions,
                                      const std::vector<int>& tiers, const std::vector<int>& slots);

// Exact complex values cost a hundred times what real ones do, so they are drawn more sparingly.
constexpr std::int64_t samples_per_complex_sample = 8;

// Measures the function's kernels over as many samples (over an eighth of them where complex values have no
// quick way, see complex_values.hpp).
void measure(measurement& m, std::int64_t samples, std::uint64_t seed, int threads);

// Judges a kernel at these arguments: its worst error may rise, its means do not change.
void judge_arguments(measurement& m, std::size_t kernel, std::span<const arguments> inputs);

// Runs task(0) ... task(count - 1), in this order of beginning, on threads whose errors are not reported.
void run_parallel(std::int64_t count, int threads, const std::function<void(std::int64_t)>& task);

}  // namespace tmk::accuracy
