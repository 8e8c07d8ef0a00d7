// SPDX-License-Identifier: Apache-2.0
#include "search.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <unordered_set>

#include "filters.hpp"
#include "oracle/batch.hpp"

namespace tmk::accuracy {
namespace {

struct candidate {
  double error;
  arguments x;
};

// The `limit` worst so far, the least of them at the front.
class hall_of_fame {
 public:
  explicit hall_of_fame(std::size_t limit) : limit_(limit) {}

  void offer(double error, const arguments& x) {
    if (!(error > 0.5) && members_.size() >= limit_) return;
    if (members_.size() == limit_) {
      if (!(error > members_.front().error)) return;
      std::ranges::pop_heap(members_, std::greater(), &candidate::error);
      members_.pop_back();
    }
    members_.push_back({error, x});
    std::ranges::push_heap(members_, std::greater(), &candidate::error);
  }
  void merge(const hall_of_fame& other) {
    for (const candidate& c : other.members_) offer(c.error, c.x);
  }
  // An argument found from two sides would crowd out others.
  void remove_repeated() {
    const auto key = [](const candidate& c) {
      return std::tuple(c.x.a.real(), c.x.a.imag(), c.x.b.real(), c.x.b.imag());
    };
    std::ranges::sort(members_, std::less(), key);
    const auto repeated = std::ranges::unique(members_, std::equal_to(), key);
    members_.erase(repeated.begin(), repeated.end());
    std::ranges::make_heap(members_, std::greater(), &candidate::error);
  }
  const std::vector<candidate>& members() const { return members_; }
  std::size_t limit() const { return limit_; }

 private:
  std::size_t limit_;
  std::vector<candidate> members_;
};

// The error of a result in ulp by the filter's value y; 0 where y or the result is no finite number.
template <class Real, class Wide>
double estimated_error(Wide y, Real got) {
  using limits = std::numeric_limits<Real>;
  if (!std::isfinite(y) || !std::isfinite(got) || y == 0) return 0;
  const int exponent = std::max(std::ilogb(y), limits::min_exponent - 1);
  return static_cast<double>(std::ldexp(std::abs(Wide(got) - y), limits::digits - 1 - exponent));
}

template <class Real>
class judge {
 public:
  explicit judge(const measurement& m) : function_(*m.function), exact_(m.function->name) {
    // The extended-precision kernels are the same formulas as the filters, which cannot judge them.
    const bool one_result = function_.shape == call_shape::unary || function_.shape == call_shape::binary;
    const bool filtered = function_.vectorized && one_result && !function_.is_complex();
    const filter* f = filtered ? find_filter(function_.stem) : nullptr;
    if (f != nullptr) value_ = pick<Real>(*f);
  }

  bool has_filter() const { return value_ != nullptr; }

  // Offers the batch's arguments to the kernels' halls.
  void offer(batch<Real>& sample, const measurement& m, std::vector<hall_of_fame>& halls) const {
    const auto inputs = sample.inputs();
    std::vector<wide> y(inputs.size());
    std::vector<exact_result> exact(has_filter() ? 0 : inputs.size());
    for (std::size_t i = 0; i < inputs.size(); ++i)
      has_filter() ? void(y[i] = value_(wide(inputs[i].a.real()), wide(inputs[i].b.real())))
                   : void(exact[i] = exact_(inputs[i]));
    for (std::size_t k = 0; k < m.kernels.size(); ++k) {
      sample.run(m.kernels[k].address);
      for (std::size_t i = 0; i < inputs.size(); ++i) {
        const auto got = sample.result(static_cast<std::int32_t>(i));
        const double error = has_filter() ? estimated_error(y[i], static_cast<Real>(got[0]))
                                          : result_error(function_, exact[i], got);
        if (std::isfinite(error)) halls[k].offer(error, inputs[i]);
      }
    }
  }

 private:
  using wide = std::conditional_t<sizeof(Real) == 4, double, long double>;
  template <class T>
  static wide (*pick(const filter& f))(wide, wide) {
    if constexpr (sizeof(T) == 4)
      return f.in_double;
    else
      return f.in_extended;
  }

  const vector_function& function_;
  oracle exact_;
  wide (*value_)(wide, wide) = nullptr;
};

// An argument near x: half the time within 64 numbers, else at a distance whose logarithm is drawn evenly.
template <class Real>
double neighbour(double x, std::mt19937_64& generate) {
  constexpr int farthest = std::numeric_limits<Real>::digits - 9;
  const int shift = generate() % 2 ? 6 : static_cast<int>(generate() % (farthest + 1));
  const auto distance = static_cast<bits_of<Real>>(generate() % ((std::uint64_t{1} << shift) + 1));
  const auto place = place_of(static_cast<Real>(x)) + (generate() % 2 ? distance : -distance);
  const auto last = place_of(std::numeric_limits<Real>::max());
  return at_place<Real>(std::clamp(place, static_cast<bits_of<Real>>(-last), last));
}

template <class Real>
arguments neighbour(const arguments& x, std::mt19937_64& generate) {
  arguments y = x;
  y.a = {neighbour<Real>(x.a.real(), generate), x.a.imag() == 0 ? 0 : neighbour<Real>(x.a.imag(), generate)};
  y.b = {neighbour<Real>(x.b.real(), generate), x.b.imag() == 0 ? 0 : neighbour<Real>(x.b.imag(), generate)};
  return y;
}

// Offers batches 0 ... count - 1 to the halls, in tasks of many batches, whose halls are merged in their
// order.
template <class Task>
void offer_batches(std::int64_t count, int threads, std::vector<hall_of_fame>& halls, Task offer_batch) {
  constexpr std::int64_t batches_per_task = 64;
  const std::int64_t tasks = (count + batches_per_task - 1) / batches_per_task;
  std::vector<std::vector<hall_of_fame>> parts(static_cast<std::size_t>(tasks));
  run_parallel(tasks, threads, [&](std::int64_t t) {
    std::vector<hall_of_fame> own(halls.size(), hall_of_fame(halls.front().limit()));
    for (std::int64_t b = t * batches_per_task; b < std::min(count, (t + 1) * batches_per_task); ++b)
      offer_batch(b, own);
    parts[static_cast<std::size_t>(t)] = std::move(own);
  });
  for (std::size_t k = 0; k < halls.size(); ++k) {
    for (const auto& part : parts) halls[k].merge(part[k]);
    halls[k].remove_repeated();
  }
}

template <class Real>
void climb_in(measurement& m, const effort& full, std::uint64_t seed, int threads) {
  const judge<Real> judge(m);
  const vector_function& f = *m.function;
  effort e = full;
  if (!judge.has_filter()) e = {full.samples / 32, full.worst / 2, full.neighbours / 4, full.rounds};
  // Pairs of singles cannot all be tried; tried they are quickly.
  else if (f.is_single() && f.shape == call_shape::binary)
    e.samples *= 10;
  const auto size = static_cast<std::int64_t>(batch<Real>::size);
  std::vector<hall_of_fame> halls(m.kernels.size(), hall_of_fame(static_cast<std::size_t>(e.worst)));
  for (std::size_t k = 0; k < halls.size(); ++k)
    halls[k].offer(m.kernels[k].errors.worst.error, m.kernels[k].errors.worst.where);

  offer_batches(e.samples / size, threads, halls, [&](std::int64_t t, auto& own) {
    const auto sample = std::make_unique<batch<Real>>(f, seed + 1'000'000 + static_cast<std::uint64_t>(t));
    judge.offer(*sample, m, own);
  });
  for (int round = 0; round < e.rounds; ++round) {
    std::vector<arguments> inputs;
    std::mt19937_64 generate(seed + static_cast<std::uint64_t>(round));
    for (const hall_of_fame& hall : halls)
      for (const candidate& c : hall.members())
        for (int i = 0; i < e.neighbours; ++i) inputs.push_back(neighbour<Real>(c.x, generate));
    const auto tasks = static_cast<std::int64_t>(inputs.size() / batch<Real>::size);
    offer_batches(tasks, threads, halls, [&](std::int64_t t, auto& own) {
      const auto sample =
          std::make_unique<batch<Real>>(f, std::span(inputs).subspan(static_cast<std::size_t>(t * size)));
      judge.offer(*sample, m, own);
    });
  }
  for (std::size_t k = 0; k < halls.size(); ++k) {
    std::vector<arguments> worst;
    for (const candidate& c : halls[k].members()) worst.push_back(c.x);
    judge_arguments(m, k, worst);
  }
}

}  // namespace

void climb(measurement& m, const effort& effort, std::uint64_t seed, int threads) {
  const call_shape shape = m.function->shape;
  if (shape == call_shape::scalar_exponent || shape == call_shape::linear_fraction) return;
  m.function->is_single() ? climb_in<float>(m, effort, seed, threads)
                          : climb_in<double>(m, effort, seed, threads);
}

bool judge_listed(measurement& m, const std::string& path) {
  std::ifstream file(path);
  std::string line;
  if (!file) std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    std::string name, word;
    std::vector<double> values;
    words >> name;
    bool sound = true;
    while (words >> word) {
      char* end = nullptr;
      values.push_back(std::strtod(word.c_str(), &end));
      sound &= *end == '\0';
    }
    if (name != m.function->name) continue;
    const std::optional<arguments> x = listed_arguments(*m.function, values);
    if (!sound || !x) {
      std::fprintf(stderr, "%s:%d: want a function and its arguments: %s\n", path.c_str(), number,
                   line.c_str());
      return false;
    }
    for (std::size_t k = 0; k < m.kernels.size(); ++k) judge_arguments(m, k, std::span(&*x, 1));
  }
  return file.eof();
}

}  // namespace tmk::accuracy
