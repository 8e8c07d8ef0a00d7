// SPDX-License-Identifier: Apache-2.0
// Two sets of observations become one by the pairwise formulas, on sums about the means of each. With weights
// Wa and Wb, W = Wa + Wb and d the distance between the means,
//   mean = mean_a + d Wb / W,   cross_ij = cross_ij(a) + cross_ij(b) + d_i d_j Wa Wb / W,
// and the corresponding formulas for the third and fourth powers.
#include <cmath>

#include "stats/pooled/sums.hpp"

namespace tmk::stats::pooled {

namespace {

// (sb + ob) - (sa + oa), where the shifts may be large and close to each other.
double distance(double sa, double oa, double sb, double ob) {
  const double high = sb - sa, back = high + sa;
  const double low = (sb - back) + ((back - high) - sa);  // high + low is the exact difference
  return high + ((ob - oa) + low);
}

// Means that are infinite or NaN have no finite distance; their sum then is the mean of both sets.
double joined_offset(double oa, double ob, double d, double share) {
  return std::isfinite(d) ? oa + d * share : oa + ob;
}

// mean_weight is the mean of the weights, weighted by themselves, and merges as a mean of values does: no
// square leaves the range of double, and where all weights are 1 it stays 1.
template <class Sums>
void join_weights(Sums& a, const Sums& b, double weight, double share_b) {
  a.n += b.n;
  a.weight = weight;
  a.mean_weight += (b.mean_weight - a.mean_weight) * share_b;
}

void merge(variable_sums& a, const variable_sums& b) {
  if (b.n == 0) return;
  if (a.n == 0) {
    a = b;
    return;
  }
  const double weight = a.weight + b.weight, share_a = a.weight / weight, share_b = b.weight / weight;
  const double d = distance(a.shift, a.offset, b.shift, b.offset), d2 = d * d;
  const double both = a.weight * share_b;  // Wa Wb / W
  // From the highest power down: each needs the lower ones before they change.
  a.c4 += b.c4 + d2 * d2 * both * (share_a * share_a - share_a * share_b + share_b * share_b) +
          6 * d2 * (b.c2 * share_a * share_a + a.c2 * share_b * share_b) +
          4 * d * (b.c3 * share_a - a.c3 * share_b);
  a.c3 += b.c3 + d2 * d * both * (share_a - share_b) + 3 * d * (b.c2 * share_a - a.c2 * share_b);
  a.c2 += b.c2 + d2 * both;
  a.offset = joined_offset(a.offset, b.offset, d, share_b);
  join_weights(a, b, weight, share_b);
  // A NaN among the extrema stays.
  if (b.min < a.min || std::isnan(b.min)) a.min = b.min;
  if (b.max > a.max || std::isnan(b.max)) a.max = b.max;
}

void merge(joint_sums& a, const joint_sums& b) {
  if (b.n == 0) return;
  if (a.n == 0) {
    a = b;
    return;
  }
  const size_t p = a.shift.size();
  std::vector<double> d(p);
  for (size_t j = 0; j < p; ++j) d[j] = distance(a.shift[j], a.offset[j], b.shift[j], b.offset[j]);
  const double weight = a.weight + b.weight, share_b = b.weight / weight, both = a.weight * share_b;
  double* into = a.cross.data();
  const double* from = b.cross.data();
  for (size_t i = 0; i < p; ++i) {
    const double scaled = d[i] * both;
    for (size_t j = 0; j <= i; ++j) into[j] += from[j] + scaled * d[j];
    into += i + 1;
    from += i + 1;
  }
  for (size_t j = 0; j < p; ++j) a.offset[j] = joined_offset(a.offset[j], b.offset[j], d[j], share_b);
  join_weights(a, b, weight, share_b);
}

}  // namespace

// The joint sums first: they need memory, and without it nothing has changed yet.
void merge(moment_sums& a, const moment_sums& b) {
  merge(a.joint, b.joint);
  for (size_t j = 0; j < a.variables.size(); ++j) merge(a.variables[j], b.variables[j]);
}

}  // namespace tmk::stats::pooled
