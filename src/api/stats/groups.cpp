// SPDX-License-Identifier: Apache-2.0
// Covariance within groups: the moments of each group's observations, which are gathered in blocks.
#include <algorithm>
#include <cmath>

#include "api/stats/checks.hpp"

namespace tmk {

namespace {

constexpr auto function = "pooled_covariance";

using rows = std::vector<std::size_t>;

// The rows that count in the order of their labels, and where each label begins.
struct grouping {
  rows order;
  std::vector<std::int64_t> labels;
  std::vector<std::size_t> first;  // and the count of all rows at the end
};

bool has_nan(const data_view& x, std::size_t row) {
  return std::visit(
      [row](const auto& view) {
        for (std::size_t j = 0; j < view.cols(); ++j)
          if (std::isnan(view(row, j))) return true;
        return false;
      },
      x);
}

// Sorted by label; of equal labels in the order of the rows. `counts` leaves out rows, but no label.
template <class Counts>
grouping group_rows(const label_view& groups, const Counts& counts) {
  return std::visit(
      [&](const auto& labels) {
        grouping r;
        for (const std::size_t i : sort_index(labels)) {
          if (r.labels.empty() || r.labels.back() != labels[i]) {
            r.labels.push_back(labels[i]);
            r.first.push_back(r.order.size());
          }
          if (counts(i)) r.order.push_back(i);
        }
        r.first.push_back(r.order.size());
        return r;
      },
      groups);
}

// A group's moments, and what the covariance divides by.
struct group_sums {
  moments values;
  double weight = 0, squares = 0;

  double divisor(bool counts) const { return weight > 0 ? weight - (counts ? 1 : squares / weight) : 0; }
};

void add_rows(group_sums& sums, const data_view& x, std::span<const std::size_t> members,
              const pooled_options& options) {
  constexpr std::size_t block_values = 1 << 18;
  const std::size_t cols = detail::cols_of(x), block = std::max<std::size_t>(1, block_values / cols);
  std::vector<double> values, weights;
  for (std::size_t from = 0; from < members.size(); from += block) {
    const auto part = members.subspan(from, std::min(block, members.size() - from));
    values.resize(part.size() * cols), weights.clear();
    std::visit(
        [&](const auto& view) {
          for (std::size_t k = 0; k < part.size(); ++k)
            for (std::size_t j = 0; j < cols; ++j) values[k * cols + j] = view(part[k], j);
        },
        x);
    for (const std::size_t i : part) weights.push_back(options.weights ? (*options.weights)[i] : 1);
    for (const double w : weights) sums.weight += w, sums.squares += w * w;
    sums.values.add(matrix_view<const double>(values.data(), part.size(), cols),
                    options.weights ? weight_view(weights) : weight_view(), options.threads);
  }
}

// Adds a group to what is pooled.
void pool(const group_sums& sums, bool counts, const matrix& cross, pooled_estimates& r, double& divisor) {
  const std::vector<double> mean = sums.values.mean();
  for (std::size_t j = 0; j < mean.size(); ++j) {
    r.mean[j] += sums.weight * mean[j];
    for (std::size_t k = 0; k < mean.size(); ++k) r.covariance(j, k) += cross(j, k);
  }
  divisor += sums.divisor(counts);
}

// The C interface looks at the weights of an addition.
void check_weight_values(std::span<const double> weights, bool counts) {
  const TmkSSOptions options{0, TMK_SS_NAN_PROPAGATE, counts};
  TmkSSMoments* probe = nullptr;
  detail::check_status(function, tmk_ss_pooled_moments_new(&probe, 1, &options));
  const detail::data_call c(matrix_view<const double>(weights), weights, 1);
  const int32_t status = tmk_ss_pooled_moments_add(probe, c.data(), c.threading());
  tmk_ss_pooled_moments_delete(&probe);
  c.check(function, status, counts);
}

void check(const data_view& x, const label_view& groups, const pooled_options& options) {
  detail::check_data(function, x, false);
  const std::size_t cols = detail::cols_of(x), n = detail::rows_of(x);
  const std::size_t labels = std::visit([](const auto& view) { return view.size(); }, groups);
  detail::refuse_unless_in(function, "x.rows", n, 1, INT32_MAX);
  if (labels != n) detail::refuse_value(function, "groups.size", detail::number(labels), detail::number(n));
  detail::check_weights(function, options.weights, n);
  detail::refuse_below(function, "threads", options.threads, 1);
  detail::check_policy(function, "nan", options.nan);
  detail::refuse_unless_in(function, "x.cols", cols, 1, detail::most_matrix_cols);
  const detail::data_call c(x, options.weights, options.threads);
  std::int64_t row, col;
  if (options.nan == nan_policy::raise && tmk_ss_pooled_find_nan(c.data(), &row, &col) == 1)
    c.check(function, TMK_SS_NAN, options.weights_are_counts);
  if (options.weights) check_weight_values(*options.weights, options.weights_are_counts);
}

}  // namespace

pooled_estimates pooled_covariance(const data_view& x, const label_view& groups,
                                   const pooled_options& options) {
  check(x, groups, options);
  const std::size_t cols = detail::cols_of(x);
  const bool omits = options.nan == nan_policy::omit, counts = options.weights_are_counts;
  const grouping found = group_rows(groups, [&](std::size_t i) {
    return (!options.weights || (*options.weights)[i] > 0) && !(omits && has_nan(x, i));
  });
  const std::size_t count = found.labels.size();
  pooled_estimates r{.labels = found.labels,
                     .n = {},
                     .weight = {},
                     .means = matrix(count, cols),
                     .covariances = {},
                     .mean = std::vector<double>(cols),
                     .covariance = matrix(cols, cols)};
  group_sums sums{moments(cols, {true, nan_policy::propagate, counts})};
  double weight = 0, divisor = 0;
  for (std::size_t g = 0; g < count; ++g) {
    sums.values.reset();
    sums.weight = sums.squares = 0;
    add_rows(sums, x, std::span(found.order).subspan(found.first[g], found.first[g + 1] - found.first[g]),
             options);
    r.n.push_back(static_cast<std::int64_t>(found.first[g + 1] - found.first[g]));
    r.weight.push_back(sums.weight);
    std::ranges::copy(sums.values.mean(), r.means.row(g).begin());
    r.covariances.push_back(sums.values.covariance());
    if (r.n.back() == 0) continue;
    weight += sums.weight;
    pool(sums, counts, sums.values.cross_product(), r, divisor);
  }
  for (double& m : r.mean) m /= weight;
  for (std::size_t j = 0; j < cols; ++j)
    for (double& c : r.covariance.row(j)) c /= divisor;
  return r;
}

}  // namespace tmk
