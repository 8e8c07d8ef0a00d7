// SPDX-License-Identifier: Apache-2.0
#include "measure.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <thread>

#include "complex_values.hpp"
#include "oracle/batch.hpp"

namespace tmk::accuracy {

void tally::add(const vector_function& f, const arguments& x, const exact_result& exact,
                const std::array<double, 2>& got) {
  const double error = result_error(f, exact, got);
  ++count;
  if (std::isfinite(error)) error_sum += error;
  if (error > worst.error) worst = {error, x, got, exact};
  const double smallest_normal =
      f.is_single() ? double{std::numeric_limits<float>::min()} : std::numeric_limits<double>::min();
  const auto is_normal = [&](const exact_value& e) {
    return std::isfinite(e.rounded) && std::abs(e.rounded) >= smallest_normal;
  };
  bool all_rounded = true;
  for (const std::size_t part : {0, 1}) {
    const double rounded = exact[part].rounded;
    all_rounded &= got[part] == rounded || (std::isnan(got[part]) && std::isnan(rounded));
    if (is_normal(exact[part]) && !f.has_complex_result())
      worst_relative = std::max(worst_relative, relative_error(exact[part], got[part]));
  }
  if (f.has_complex_result() && std::ranges::any_of(exact, is_normal))
    worst_relative = std::max(worst_relative, modulus_relative_error(exact, got));
  correctly_rounded += all_rounded;
}

void tally::merge(const tally& later) {
  if (later.worst.error > worst.error) worst = later.worst;
  error_sum += later.error_sum;
  worst_relative = std::max(worst_relative, later.worst_relative);
  count += later.count;
  correctly_rounded += later.correctly_rounded;
}

std::vector<measurement> list_kernels(const std::vector<vector_function>& functions,
                                      const std::vector<int>& tiers, const std::vector<int>& slots) {
  std::vector<measurement> all;
  for (const vector_function& f : functions) {
    measurement& m = all.emplace_back(measurement{&f});
    for (tools::kernel& kernel : tools::distinct_kernels(f, tiers, slots))
      m.kernels.push_back({std::move(kernel), {}});
  }
  return all;
}

void run_parallel(std::int64_t count, int threads, const std::function<void(std::int64_t)>& task) {
  std::atomic<std::int64_t> next = 0;
  std::vector<std::jthread> pool;
  for (int i = 0; i < threads; ++i) {
    pool.emplace_back([&] {
      _vtmSetMode(VTM_HA | VTM_ERRMODE_IGNORE);
      for (std::int64_t k; (k = next++) < count;) task(k);
    });
  }
}

namespace {

// The exact values of a batch, quick ones where the function has them. One in a thousand of these is compared
// with the oracle, and so is whatever becomes the worst.
class known_values {
 public:
  known_values(const vector_function& f, std::span<const arguments> inputs)
      : inputs_(inputs), exact_(f.name), values_(inputs.size()), is_quick_(inputs.size()) {
    const quick_value quick = find_quick_value(f);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      const auto value = quick == nullptr ? std::nullopt : quick(inputs[i]);
      is_quick_[i] = value.has_value();
      values_[i] = value ? *value : exact_(inputs[i]);
    }
    if (!inputs.empty()) confirm(0);
  }
  const exact_result& operator[](std::size_t i) const { return values_[i]; }

  void confirm(std::size_t i) {
    if (!is_quick_[i]) return;
    const exact_result value = exact_(inputs_[i]);
    if (!agree(values_[i], value)) throw std::logic_error("a quick value is wrong");
    values_[i] = value;
    is_quick_[i] = false;
  }

 private:
  std::span<const arguments> inputs_;
  oracle exact_;
  std::vector<exact_result> values_;
  std::vector<bool> is_quick_;
};

template <class Real>
std::vector<tally> measure_batch(const measurement& m, std::uint64_t seed) {
  const vector_function& f = *m.function;
  const auto sample = std::make_unique<batch<Real>>(f, seed);
  known_values values(f, sample->inputs());

  std::vector<tally> tallies(m.kernels.size());
  for (std::size_t k = 0; k < m.kernels.size(); ++k) {
    sample->run(m.kernels[k].address);
    for (std::int32_t i = 0; i < batch<Real>::size; ++i) {
      const auto got = sample->result(i);
      if (result_error(f, values[i], got) > tallies[k].worst.error) values.confirm(i);
      tallies[k].add(f, sample->inputs()[i], values[i], got);
    }
  }
  return tallies;
}

template <class Real>
void judge_in(measurement& m, std::size_t kernel, std::span<const arguments> inputs) {
  const oracle exact(m.function->name);
  tally found;
  for (std::size_t begin = 0; begin < inputs.size(); begin += batch<Real>::size) {
    const auto sample = std::make_unique<batch<Real>>(*m.function, inputs.subspan(begin));
    sample->run(m.kernels[kernel].address);
    for (std::size_t i = 0; i < sample->inputs().size(); ++i)
      found.add(*m.function, sample->inputs()[i], exact(sample->inputs()[i]),
                sample->result(static_cast<std::int32_t>(i)));
  }
  tally& all = m.kernels[kernel].errors;
  if (found.worst.error > all.worst.error) all.worst = found.worst;
  all.worst_relative = std::max(all.worst_relative, found.worst_relative);
}

}  // namespace

void judge_arguments(measurement& m, std::size_t kernel, std::span<const arguments> inputs) {
  m.function->is_single() ? judge_in<float>(m, kernel, inputs) : judge_in<double>(m, kernel, inputs);
}

void measure(measurement& m, std::int64_t samples, std::uint64_t seed, int threads) {
  const bool is_costly = m.function->is_complex() && find_quick_value(*m.function) == nullptr;
  const std::int64_t own_samples = is_costly ? samples / samples_per_complex_sample : samples;
  const std::int64_t batches = (own_samples + batch<float>::size - 1) / batch<float>::size;
  // Merged in the order of batches, so that the outcome does not depend on which thread was faster.
  std::vector<std::vector<tally>> parts(static_cast<std::size_t>(batches));
  run_parallel(batches, threads, [&](std::int64_t i) {
    const std::uint64_t batch_seed = seed + static_cast<std::uint64_t>(i);
    parts[static_cast<std::size_t>(i)] =
        m.function->is_single() ? measure_batch<float>(m, batch_seed) : measure_batch<double>(m, batch_seed);
  });
  for (const auto& tallies : parts)
    for (std::size_t k = 0; k < tallies.size(); ++k) m.kernels[k].errors.merge(tallies[k]);
}

}  // namespace tmk::accuracy
