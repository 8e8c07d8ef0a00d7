// SPDX-License-Identifier: Apache-2.0
// Indices by weight, permutations and samples.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <tmk/sampling.hpp>
#include <unordered_set>

#include "api/call/refuse.hpp"

namespace tmk {

namespace {

// The sum of weights that are none of them negative and not all zero.
double sum_of(const char* function, std::span<const double> weights) {
  detail::check_data(function, {"weights", {weights.data(), weights.size()}, sizeof(double)});
  double sum = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (!(weights[i] >= 0) || !std::isfinite(weights[i]))
      detail::refuse_value(function, detail::place("weights", i), detail::number(weights[i]),
                           "a finite number, 0 or more");
    sum += weights[i];
  }
  if (!(sum > 0))
    detail::refuse(function, "weights", weights.empty() ? "none" : "all zero", "hold nothing to choose from");
  if (!std::isfinite(sum)) detail::refuse(function, "weights", "", "have a sum that overflows");
  return sum;
}

}  // namespace

discrete::discrete(std::span<const double> weights) {
  const double sum = sum_of("discrete", weights);
  detail::refuse_unless_in("discrete", "weights.size()", weights.size(), 1, std::size_t{INT32_MAX});
  const std::size_t n = weights.size();
  probabilities_.resize(n);
  std::transform(weights.begin(), weights.end(), probabilities_.begin(), [=](double w) { return w / sum; });

  // What is less than a cell's width is filled up from what is more.
  cells_.resize(n);
  std::vector<std::int32_t> less, more;
  for (std::size_t i = 0; i < n; ++i) {
    const auto index = static_cast<std::int32_t>(i);
    cells_[i] = {probabilities_[i] * static_cast<double>(n), index};
    (cells_[i].share < 1 ? less : more).push_back(index);
  }
  const auto at = [&](std::int32_t i) -> cell& { return cells_[static_cast<std::size_t>(i)]; };
  while (!less.empty() && !more.empty()) {
    const std::int32_t from = more.back();
    cell& to_fill = at(less.back());
    less.pop_back();
    to_fill.alias = from;
    at(from).share -= 1 - to_fill.share;
    if (at(from).share >= 1) continue;
    more.pop_back();
    less.push_back(from);
  }
  // Rounding has left a few that are full but for that.
  for (const auto* left : {&less, &more})
    for (const std::int32_t i : *left)
      if (probabilities_[static_cast<std::size_t>(i)] > 0) at(i) = {1, i};
}

double discrete::probability(std::size_t index) const {
  if (index >= size())
    detail::refuse_value("discrete::probability", "index", detail::number(index),
                         "less than " + detail::number(size()));
  return probabilities_[index];
}

void discrete::operator()(stream& g, std::span<std::int32_t> r) const {
  detail::check_data("discrete", {"r", {r.data(), r.size()}, sizeof(std::int32_t)});
  constexpr std::size_t longest = 512;
  const double width = static_cast<double>(size());
  double u[longest];
  for (std::size_t count; !r.empty(); r = r.subspan(count)) {
    count = std::min(r.size(), longest);
    fill(g, std::span(u).first(count), distribution::uniform());
    for (std::size_t i = 0; i < count; ++i) {
      const double x = u[i] * width;
      const auto index = static_cast<std::int32_t>(x);
      const cell& c = cells_[static_cast<std::size_t>(index)];
      // A branch on chance would be mispredicted every other time.
      r[i] = c.alias + (index - c.alias) * static_cast<std::int32_t>(x - index < c.share);
    }
  }
}

std::uint64_t detail::long_index_below(stream& g, std::uint64_t bound) {
  const int unused = std::countl_zero(bound - 1);
  for (;;) {
    const std::uint64_t upper = g();
    const std::uint64_t index = (upper << 32 | g()) >> unused;
    if (index < bound) return index;
  }
}

std::vector<std::size_t> permutation(stream& g, std::size_t n) {
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  shuffle(g, order);
  return order;
}

namespace {

using indices = std::vector<std::size_t>;

indices equal_with_replacement(stream& g, std::size_t n, std::size_t count) {
  indices picked(count);
  for (std::size_t& i : picked) i = static_cast<std::size_t>(detail::index_below(g, n));
  return picked;
}

// R. W. Floyd's algorithm (J. Bentley, CACM 30, 1987) gives a set; the order is drawn afterwards.
indices few_of_many(stream& g, std::size_t n, std::size_t count) {
  std::unordered_set<std::size_t> seen(2 * count);
  indices picked;
  picked.reserve(count);
  for (std::size_t last = n - count; last < n; ++last) {
    const auto i = static_cast<std::size_t>(detail::index_below(g, last + 1));
    picked.push_back(seen.insert(i).second ? i : last);
    seen.insert(picked.back());
  }
  shuffle(g, picked);
  return picked;
}

indices equal_without_replacement(stream& g, std::size_t n, std::size_t count) {
  constexpr std::size_t many = 32;
  if (count < n / many) return few_of_many(g, n, count);
  indices picked(n);
  std::iota(picked.begin(), picked.end(), std::size_t{0});
  for (std::size_t i = 0; i < count; ++i)
    std::swap(picked[i], picked[i + static_cast<std::size_t>(detail::index_below(g, n - i))]);
  picked.resize(count);
  return picked;
}

// The first to come of exponential times with the weights as rates.
indices weighted_without_replacement(stream& g, std::span<const double> weights, std::size_t count) {
  std::vector<double> time(weights.size());
  exponential(g, time);
  for (std::size_t i = 0; i < time.size(); ++i) time[i] = weights[i] > 0 ? time[i] / weights[i] : HUGE_VAL;
  indices order(weights.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(count), order.end(),
                    [&](std::size_t i, std::size_t k) { return time[i] < time[k]; });
  order.resize(count);
  return order;
}

}  // namespace

std::vector<std::size_t> choice(stream& g, std::size_t n, std::size_t count, const choice_options& options) {
  const std::span<const double> weights = options.weights;
  std::size_t there = n;
  if (!weights.empty()) {
    if (weights.size() != n)
      detail::refuse_value("choice", "weights.size()", detail::number(weights.size()), detail::number(n));
    sum_of("choice", weights);
    there = n - static_cast<std::size_t>(std::ranges::count(weights, 0.0));
  }
  if (options.replace ? count > 0 && there == 0 : count > there)
    detail::refuse_value("choice", "count", detail::number(count), detail::number(there) + " or less");
  if (count == 0) return {};
  if (weights.empty())
    return options.replace ? equal_with_replacement(g, n, count) : equal_without_replacement(g, n, count);
  if (!options.replace) return weighted_without_replacement(g, weights, count);
  std::vector<std::int32_t> r(count);
  const discrete law(weights);
  law(g, r);
  return {r.begin(), r.end()};
}

}  // namespace tmk
