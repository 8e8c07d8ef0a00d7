// SPDX-License-Identifier: Apache-2.0
#include "stats/missing/standardised.hpp"

#include "platform/checks.hpp"
#include "platform/guarded.hpp"
#include "stats/pooled/data.hpp"

namespace tmk::stats::missing {
namespace {

using pooled::columns_of;
using pooled::rows_of;

constexpr double smallest_spread = std::numeric_limits<double>::min();

// Observed values of each variable, and the observations that have any.
struct survey {
  std::vector<double> least, greatest;
  std::vector<int64_t> count;
  int64_t observations = 0;
  refusal infinite;

  template <class Values>
  survey(const Values& x, size_t n, size_t p)
      : least(p, std::numeric_limits<double>::infinity()), greatest(p, -least[0]), count(p) {
    for (size_t i = 0; i < n; ++i) {
      bool any = false;
      for (size_t j = 0; j < p; ++j) {
        const double value = x(i, j);
        if (std::isnan(value)) continue;
        if (std::isinf(value) && infinite.status == 0)
          infinite = {TMK_SS_INFINITE, static_cast<int64_t>(i), static_cast<int64_t>(j)};
        any = true;
        ++count[j];
        least[j] = std::min(least[j], value), greatest[j] = std::max(greatest[j], value);
      }
      observations += any;
    }
  }

  // The first variable that `bad` holds for.
  template <class Bad>
  refusal first_column(int32_t status, const Bad& bad) const {
    for (size_t j = 0; j < count.size(); ++j)
      if (bad(j)) return {status, -1, static_cast<int64_t>(j)};
    return {};
  }

  refusal judge() const {
    const refusal found[] = {
        infinite,
        first_column(TMK_SS_INFINITE,
                     [&](size_t j) { return std::isinf(greatest[j] - least[j]) && count[j] != 0; }),
        first_column(TMK_SS_NO_VALUES, [&](size_t j) { return count[j] == 0; }),
        first_column(TMK_SS_NO_SPREAD,
                     [&](size_t j) { return !(greatest[j] - least[j] >= smallest_spread); }),
    };
    for (const refusal& r : found)
      if (r.status != 0) return r;
    if (observations <= static_cast<int64_t>(count.size())) return {TMK_SS_FEW_ROWS, -1, -1};
    return {};
  }
};

// About a value of the variable and in units of its range, so that neither offset nor size costs digits.
template <class Values>
column_scale scale_of(const Values& x, size_t n, size_t j) {
  double least = std::numeric_limits<double>::infinity(), greatest = -least, count = 0;
  for (size_t i = 0; i < n; ++i)
    if (const double value = x(i, j); !std::isnan(value)) {
      least = std::min(least, value), greatest = std::max(greatest, value);
      ++count;
    }
  const double range = greatest - least;
  const auto sum = [&](const auto& term) {
    double total = 0;
    for (size_t i = 0; i < n; ++i)
      if (const double value = x(i, j); !std::isnan(value)) total += term((value - least) / range);
    return total;
  };
  const double mean = sum([](double v) { return v; }) / count;
  const double squares = sum([mean](double v) { return (v - mean) * (v - mean); });
  return {least + range * mean, range * std::sqrt(squares / count)};
}

}  // namespace

refusal find_refusal(const TmkSSData* data) {
  if (const int32_t status = pooled::check_shape(data, 1); status != 0) return {status, -1, -1};
  if (data->weights != nullptr) return {TMK_SS_BAD_WEIGHTS, -1, -1};
  return pooled::visit(*data,
                       [&](const auto& x) { return survey(x, rows_of(*data), columns_of(*data)).judge(); });
}

int64_t count_nans(const TmkSSData& data) {
  return pooled::visit(data, [&](const auto& x) {
    int64_t count = 0;
    for (size_t i = 0; i < rows_of(data); ++i)
      for (size_t j = 0; j < columns_of(data); ++j) count += std::isnan(x(i, j));
    return count;
  });
}

standardised_data standardise(const TmkSSData& data) {
  const size_t n = rows_of(data), p = columns_of(data);
  return pooled::visit(data, [&](const auto& x) {
    std::vector<column_scale> scales(p);
    for (size_t j = 0; j < p; ++j) scales[j] = scale_of(x, n, j);
    const auto at = [&](ptrdiff_t i, ptrdiff_t j) {
      return static_cast<double>(x(static_cast<size_t>(i), static_cast<size_t>(j)));
    };
    auto rows = sort_rows<double>(
        static_cast<ptrdiff_t>(n), static_cast<ptrdiff_t>(p),
        [&](ptrdiff_t i, ptrdiff_t j) { return std::isnan(at(i, j)); },
        [&](ptrdiff_t i, ptrdiff_t j) {
          const column_scale& s = scales[static_cast<size_t>(j)];
          return (at(i, j) - s.centre) / s.spread;
        });
    return standardised_data{std::move(scales), std::move(rows)};
  });
}

ptrdiff_t standardised_data::empty_rows() const {
  const pattern_list& patterns = rows.patterns;
  const uint64_t* const words = patterns[0];
  const bool empty = std::all_of(words, words + patterns.words, [](uint64_t word) { return word == 0; });
  return empty ? patterns.first[1] : 0;
}

double standardised_data::log_spread() const {
  double sum = 0;
  for (ptrdiff_t j = 0; j < rows.p; ++j) {
    ptrdiff_t count = 0;
    for (ptrdiff_t k = 0; k < rows.patterns.count(); ++k)
      if (has_variable(rows.patterns[k], j))
        count +=
            rows.patterns.first[static_cast<size_t>(k) + 1] - rows.patterns.first[static_cast<size_t>(k)];
    sum += static_cast<double>(count) * std::log(scales[static_cast<size_t>(j)].spread);
  }
  return sum;
}

}  // namespace tmk::stats::missing
