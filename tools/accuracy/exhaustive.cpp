// SPDX-License-Identifier: Apache-2.0
// The double-precision value y of the function's filter, known to within |y| 2^-46, is 2^-22 ulp of a float
// off at most, so nearly every result can be judged by it. Multiple precision is asked only where that leaves
// a doubt: when the error may exceed the largest so far, when y is that close to the midpoint of two floats,
// and wherever y does not settle that the result is infinite. The bound on y is itself checked, at every
// 4099th argument: a function that breaks it once is refused.
#include "exhaustive.hpp"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>

#include "filters.hpp"

namespace tmk::accuracy {

using tools::call_shape;

// Compiled for each instruction set of this processor's family: these loops are most of a run.
#if defined(__x86_64__)
#define TMK_FOR_EACH_PROCESSOR [[gnu::target_clones("default", "arch=x86-64-v3", "arch=x86-64-v4")]]
#else
#define TMK_FOR_EACH_PROCESSOR
#endif

namespace {

constexpr double trust = 0x1p-46;            // relative error of a filter's value
constexpr double underflow_doubt = 0x1p-60;  // ulp of a float: more than a double loses where it underflows
constexpr std::int64_t check_every = 4099;
constexpr std::int64_t block_size = 4096;
constexpr std::int64_t task_size = std::int64_t{1} << 20;
constexpr std::int64_t all_arguments = std::int64_t{1} << 32;
constexpr double smallest_normal = std::numeric_limits<float>::min();
constexpr double beyond_floats = 0x1p128;

// 1 / the spacing of floats at y.
double units_per_one(double y) {
  const int exponent = static_cast<int>(std::bit_cast<std::uint64_t>(y) >> 52 & 0x7ff) - 1023;
  const int ulp_exponent = std::max(exponent, -126) - 23;
  return std::bit_cast<double>(static_cast<std::uint64_t>(1023 - ulp_exponent) << 52);
}

// What the filter's values of a block of arguments say, once for all kernels.
struct known_block {
  double y[block_size];              // 0 where the result is special
  double units[block_size];          // ulp of a float per one
  double per_magnitude[block_size];  // 1 / |y|, 0 where the result is subnormal
  double doubt[block_size];   // ulp; infinite where the filter does not settle how the result is rounded
  float rounded[block_size];  // a special, or the float nearest to y
};

TMK_FOR_EACH_PROCESSOR void complete(known_block& known, bool exact_filter) {
#pragma omp simd
  for (std::int64_t i = 0; i < block_size; ++i) {
    const double value = known.y[i], magnitude = std::abs(value);
    const float rounded = static_cast<float>(value);
    const bool special = !(magnitude < beyond_floats);
    const double units = special ? 0 : units_per_one(value);
    const double own_doubt = exact_filter ? 0 : magnitude * trust * units + underflow_doubt;
    const double to_midpoint = std::abs(std::abs(value - rounded) * units - 0.5);
    const bool settled = special ? !(magnitude <= beyond_floats * (1 + trust)) || exact_filter
                                 : to_midpoint > own_doubt || exact_filter;
    known.y[i] = special ? 0 : value;
    known.units[i] = units;
    known.per_magnitude[i] = magnitude >= smallest_normal && !special ? 1 / magnitude : 0;
    known.doubt[i] = settled ? (special ? 0 : own_doubt) : HUGE_VAL;
    known.rounded[i] = rounded;
  }
}

// Counts a block of results if all of them are settled and none is worse than the worst so far.
TMK_FOR_EACH_PROCESSOR bool settle_block(tally& t, const known_block& known, const float* got) {
  std::int64_t open = 0, correctly_rounded = 0;
  double error_sum = 0, worst_relative = 0;
  const double worst = t.worst.error;
#pragma omp simd reduction(+ : open, correctly_rounded, error_sum) reduction(max : worst_relative)
  for (std::int64_t i = 0; i < block_size; ++i) {
    const float want = known.rounded[i];
    const bool same = (got[i] == want) | ((got[i] != got[i]) & (want != want));
    const bool special = !(std::abs(want) <= std::numeric_limits<float>::max());
    const double distance = special ? (same ? 0 : HUGE_VAL) : std::abs(got[i] - known.y[i]);
    const double error = special ? distance : distance * known.units[i];
    open += error + known.doubt[i] <= worst ? 0 : 1;
    error_sum += error;
    correctly_rounded += same ? 1 : 0;
    const double relative = special ? 0 : distance * known.per_magnitude[i];
    worst_relative = relative > worst_relative ? relative : worst_relative;
  }
  if (open != 0) return false;
  t.count += block_size;
  t.error_sum += error_sum;
  t.correctly_rounded += correctly_rounded;
  t.worst_relative = std::max(t.worst_relative, worst_relative);
  return true;
}

// Counts the result if the filter's value y settles it and it is no worse than the worst so far.
bool settle(tally& t, double y, bool y_is_exact, double got) {
  if (std::isnan(y) && std::isnan(got)) {
    ++t.count;
    ++t.correctly_rounded;
    return true;
  }
  const double magnitude = std::abs(y);
  if (!(magnitude < beyond_floats) || !std::isfinite(got)) {
    if (!(magnitude > beyond_floats * (1 + trust)) || got != std::copysign(HUGE_VAL, y)) return false;
    ++t.count;
    ++t.correctly_rounded;
    return true;
  }
  const double rounded = static_cast<float>(y);
  if (!std::isfinite(rounded)) return false;
  const double units = units_per_one(y);
  const double error = std::abs(got - y) * units;
  const double doubt = y_is_exact ? 0 : magnitude * trust * units + underflow_doubt;
  if (error + doubt > t.worst.error) return false;
  if (!y_is_exact && std::abs(std::abs(y - rounded) * units - 0.5) <= doubt) return false;
  ++t.count;
  t.error_sum += error;
  t.correctly_rounded += got == rounded;
  if (magnitude >= smallest_normal)
    t.worst_relative = std::max(t.worst_relative, std::abs(got - y) / magnitude);
  return true;
}

// Whether y is as close to the exact value as a filter's value must be.
bool holds(const exact_value& exact, double y) {
  if (std::isnan(exact.rounded) || std::isnan(y)) return std::isnan(exact.rounded) && std::isnan(y);
  if (std::isinf(exact.rounded)) return std::abs(y) >= 0x1.ffffffp127 * (1 - trust);
  const double distance = std::abs(std::ldexp(y - exact.rounded, -exact.ulp_exponent) - exact.residual);
  return distance <= std::ldexp(std::abs(y), -exact.ulp_exponent) * trust + underflow_doubt;
}

}  // namespace

bool measure_exhaustively(measurement& m, int threads) {
  const vector_function& f = *m.function;
  const bool fits = f.letter == 's' && f.shape == call_shape::unary && f.vectorized;
  const filter* own_filter = fits ? find_filter(f.stem) : nullptr;
  if (own_filter == nullptr) return false;
  const oracle exact(f.name);

  // The worst of a sample to begin with: a low mark would send whole binades to multiple precision.
  measurement sampled = m;
  measure(sampled, 1 << 16, 1, threads);

  std::atomic<std::uint64_t> broken_at = ~std::uint64_t{0};
  constexpr std::int64_t tasks = all_arguments / task_size;
  std::vector<std::vector<tally>> parts(tasks);
  run_parallel(tasks, threads, [&](std::int64_t task) {
    std::vector<tally> tallies(m.kernels.size());
    for (std::size_t k = 0; k < tallies.size(); ++k) tallies[k].worst = sampled.kernels[k].errors.worst;
    float x[block_size], got[block_size];
    double y[block_size];
    const auto known = std::make_unique<known_block>();
    for (std::int64_t begin = task * task_size; begin < (task + 1) * task_size; begin += block_size) {
      if (broken_at != ~std::uint64_t{0}) return;
      for (std::int64_t i = 0; i < block_size; ++i) {
        x[i] = std::bit_cast<float>(static_cast<std::uint32_t>(begin + i));
        known->y[i] = y[i] = own_filter->in_double(x[i], 0);
        if ((begin + i) % check_every == 0 && !holds(exact(x[i]), y[i])) broken_at = begin + i;
      }
      complete(*known, own_filter->is_exact);
      for (std::size_t k = 0; k < tallies.size(); ++k) {
        reinterpret_cast<void (*)(std::int32_t, const float*, float*)>(m.kernels[k].address)(block_size, x,
                                                                                             got);
        if (settle_block(tallies[k], *known, got)) continue;
        for (std::int64_t i = 0; i < block_size; ++i)
          if (!settle(tallies[k], y[i], own_filter->is_exact, got[i]))
            tallies[k].add(f, arguments{x[i]}, exact(arguments{x[i]}), {got[i], 0});
      }
    }
    parts[task] = std::move(tallies);
  });
  if (broken_at != ~std::uint64_t{0}) {
    std::fprintf(stderr, "%s: its filter is not exact enough at %a\n", std::string(f.name).c_str(),
                 std::bit_cast<float>(static_cast<std::uint32_t>(broken_at)));
    return false;
  }
  for (const auto& tallies : parts)
    for (std::size_t k = 0; k < tallies.size(); ++k) m.kernels[k].errors.merge(tallies[k]);
  return true;
}

}  // namespace tmk::accuracy
