// SPDX-License-Identifier: Apache-2.0
// The estimates that are made of moments' sums.
#include <algorithm>
#include <cmath>
#include <limits>

#include "stats/pooled/handles.hpp"
#include "stats/pooled/sums.hpp"

namespace tmk::stats::pooled {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// What a sum of squares about the mean is divided by: n - 1 where all weights are 1.
template <class Sums>
double degrees_of_freedom(const Sums& s) {
  const double f = s.weight - s.mean_weight;
  return s.n > 1 && f > 0 ? f : nan;
}

double mean_of(const variable_sums& v) { return v.shift + v.offset; }
double variance_of(const variable_sums& v) { return v.c2 / degrees_of_freedom(v); }

double skewness_of(const variable_sums& v) {
  const double m2 = v.c2 / v.weight;
  return v.c3 / v.weight / m2 / std::sqrt(m2);
}

double kurtosis_of(const variable_sums& v) {
  const double m2 = v.c2 / v.weight;
  return v.c4 / v.weight / m2 / m2 - 3;
}

template <int order>
double central_of(const variable_sums& v) {
  const double sum[] = {0, v.c2, v.c3, v.c4};
  return sum[order - 1] / v.weight;
}

template <int order>
double raw_of(const variable_sums& v) {
  const double m = mean_of(v), m2 = v.c2 / v.weight, m3 = v.c3 / v.weight, m4 = v.c4 / v.weight;
  const double moment[] = {m, m2 + m * m, m3 + m * (3 * m2 + m * m),
                           m4 + m * (4 * m3 + m * (6 * m2 + m * m))};
  return moment[order - 1];
}

// Of a variable with observations.
struct vector_row {
  int32_t estimate;
  double (*of)(const variable_sums& v);
};
constexpr vector_row vector_rows[] = {
    {TMK_SS_POOLED_MEAN, mean_of},
    {TMK_SS_POOLED_VARIANCE, variance_of},
    {TMK_SS_POOLED_SD, [](const variable_sums& v) { return std::sqrt(variance_of(v)); }},
    {TMK_SS_POOLED_SKEWNESS, skewness_of},
    {TMK_SS_POOLED_KURTOSIS, kurtosis_of},
    {TMK_SS_POOLED_MINIMUM, [](const variable_sums& v) { return v.min; }},
    {TMK_SS_POOLED_MAXIMUM, [](const variable_sums& v) { return v.max; }},
    {TMK_SS_POOLED_RAW1, raw_of<1>},
    {TMK_SS_POOLED_RAW2, raw_of<2>},
    {TMK_SS_POOLED_RAW3, raw_of<3>},
    {TMK_SS_POOLED_RAW4, raw_of<4>},
    {TMK_SS_POOLED_CENTRAL1, central_of<1>},
    {TMK_SS_POOLED_CENTRAL2, central_of<2>},
    {TMK_SS_POOLED_CENTRAL3, central_of<3>},
    {TMK_SS_POOLED_CENTRAL4, central_of<4>},
};

// element(i, j) of the lower triangle, and of the upper one by symmetry.
template <class Element>
void fill_symmetric(size_t p, double* result, const Element& element) {
  for (size_t i = 0; i < p; ++i)
    for (size_t j = 0; j <= i; ++j) result[i * p + j] = result[j * p + i] = element(i, j);
}

double cross_of(const joint_sums& s, size_t i, size_t j) { return s.cross[i * (i + 1) / 2 + j]; }

void fill_correlation(const joint_sums& s, size_t p, double* result) {
  const double defined = degrees_of_freedom(s) > 0 ? 1 : nan;
  // Of mean products: the root of a sum would round otherwise for weights twice as large.
  const auto mean_product = [&](size_t i, size_t j) { return cross_of(s, i, j) / s.weight; };
  std::vector<double> length(p);
  for (size_t j = 0; j < p; ++j) length[j] = std::sqrt(mean_product(j, j));
  fill_symmetric(p, result, [&](size_t i, size_t j) {
    if (i == j) return std::isfinite(length[i]) ? defined : nan;
    return defined * std::clamp(mean_product(i, j) / length[i] / length[j], -1.0, 1.0);
  });
}

void fill_matrix(const joint_sums& s, size_t p, int32_t estimate, double* result) {
  if (estimate == TMK_SS_POOLED_CORRELATION) return fill_correlation(s, p, result);
  const bool sums = estimate == TMK_SS_POOLED_CROSS_PRODUCT;
  const double divisor = sums ? (s.n > 0 ? 1 : nan) : degrees_of_freedom(s);
  fill_symmetric(p, result, [&](size_t i, size_t j) { return cross_of(s, i, j) / divisor; });
}

int32_t estimate_of(const TmkSSMoments& m, int32_t estimate, double* result) {
  const std::vector<variable_sums>& variables = m.sums.variables;
  if (result == nullptr) return VTS_STATUS_SS_DATA_NULL;
  if (estimate == TMK_SS_POOLED_WEIGHT) {
    for (const variable_sums& v : variables) *result++ = v.weight;
    return 0;
  }
  for (const vector_row& row : vector_rows)
    if (row.estimate == estimate) {
      for (const variable_sums& v : variables) *result++ = v.n > 0 ? row.of(v) : nan;
      return 0;
    }
  if (estimate < TMK_SS_POOLED_CROSS_PRODUCT || estimate > TMK_SS_POOLED_CORRELATION)
    return TMK_SS_BAD_OPTIONS;
  if (m.options.crossProduct == 0) return TMK_SS_NO_CROSS_PRODUCT;
  fill_matrix(m.sums.joint, variables.size(), estimate, result);
  return 0;
}

}  // namespace

}  // namespace tmk::stats::pooled

int32_t tmk_ss_pooled_moments_estimate(const TmkSSMoments* moments, int32_t estimate, double* result) {
  using namespace tmk::stats::pooled;
  return with_handle(moments, [&] { return estimate_of(*moments, estimate, result); });
}
