// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/biweight.hpp"

#include <algorithm>
#include <cmath>

#include "tmk/abi/ss_robust.h"

namespace tmk::stats::robust {
namespace {

constexpr int most_rounds = 100;
constexpr double close = 0.0001;

// E d^k for d^2 chi-square with p degrees of freedom; times F_(p + k) it is the moment below a bound.
double raw_moment(double p, int k) {
  return std::exp2(0.5 * k) * std::exp(__vtsdLGamma((p + k) / 2) - __vtsdLGamma(p / 2));
}

// The part of E d^k from one distance to another.
struct partial_moments {
  double p, low2, high2;

  double operator()(int k) const {
    const double share = __vtsdChi2CDF(p + k, high2) - __vtsdChi2CDF(p + k, low2);
    return k == 0 ? share : raw_moment(p, k) * share;
  }
};

// Where rejection of all beyond x alone has the breakdown point: Newton's method on x times
// E min(d^2, x^2) - b x^2.
double hard_cut(double p, double b) {
  const double g2 = raw_moment(p, 2) / 2;
  double x = 2 * p;
  for (int round = 0; round < most_rounds; ++round) {
    const double x2 = x * x, t = (1 - __vtsdChi2CDF(p, x2) - b) * x;
    const double f = x * t + 2 * g2 * __vtsdChi2CDF(p + 2, x2);
    const double slope = 2 * t + 4 * x * g2 * __vtsdChi2PDF(p + 2, x2) - 2 * x * x2 * __vtsdChi2PDF(p, x2);
    if (slope == 0) {
      x /= 2;
    } else {
      const double next = x - f / slope;
      x = next < 0 ? x / 2 : next;
    }
    if (!(std::fabs(f) > close)) break;
  }
  return x;
}

double beyond(double p, double d) { return 1 - __vtsdChi2CDF(p, d * d); }

// How much of rho's range normal data use: the point of breakdown by outliers, and 1 less that by inliers.
double share(int32_t p, const biweight& w) { return mean_rho(p, w) / w.top(); }

template <class Wanted>
double bisect(double low, double high, const Wanted& is_below) {
  for (int round = 0; round < 200 && high - low > 1e-15 * high; ++round) {
    const double middle = 0.5 * (low + high);
    (is_below(middle) ? low : high) = middle;
  }
  return 0.5 * (low + high);
}

}  // namespace

double mean_rho(int32_t order, const biweight& w) {
  const double p = order, M = w.M, c = w.c, M2 = M * M, c2 = c * c, c4 = c2 * c2;
  const double below = 0.5 * partial_moments{p, 0, M2}(2);
  if (!(c > 0)) return below + M2 / 2 * beyond(p, M);
  const partial_moments I{p, M2, (M + c) * (M + c)};
  return below + (M2 / 2 - M2 * (M2 * M2 - 5 * M2 * c2 + 15 * c4) / (30 * c4)) * I(0) +
         (M2 * M2 / (2 * c4) + 0.5 - M2 / c2) * I(2) + (4 * M / (3 * c2) - 4 * M2 * M / (3 * c4)) * I(3) +
         (3 * M2 / (2 * c4) - 1 / (2 * c2)) * I(4) - 4 * M / (5 * c4) * I(5) + I(6) / (6 * c4) +
         w.top() * beyond(p, M + c);
}

biweight task_biweight(int32_t p, double b, double a) {
  const double q = std::sqrt(__vtsdChi2ICDF(p, 1 - a));
  if (!(beyond(p, hard_cut(p, b)) > a)) return {q, 0};
  biweight w{std::sqrt(static_cast<double>(p)), 0};
  w.c = q - w.M;
  for (int round = 0; round < most_rounds; ++round) {
    const double rho = mean_rho(p, w), g = rho - b * w.top();
    const double by_M = (mean_rho(p, {w.M + close, w.c}) - rho) / close;
    const double by_c = (mean_rho(p, {w.M, w.c + close}) - rho) / close;
    const double before = w.M;
    w.M -= g / (by_M - b * (0.2 * w.c + w.M * (7.0 / 15)) - by_c);
    if (!(w.M < q && w.M > 0)) w.M = (before + q) / 2;
    w.c = q - w.M;
    if (!(std::fabs(g) > close)) return w;
  }
  return {q, 0};
}

tuned_biweight tune_biweight(int32_t p, double b, double a) {
  const auto tuned = [p](const biweight& w) {
    const double used = share(p, w);
    return tuned_biweight{w, std::min(used, 1 - used), beyond(p, w.M + w.c), mean_rho(p, w)};
  };
  const double q = std::sqrt(__vtsdChi2ICDF(p, 1 - a));
  if (share(p, {0, q}) < b) {
    // A shorter range uses more of rho.
    return tuned({0, bisect(1e-3 * q, q, [&](double c) { return share(p, {0, c}) > b; })});
  }
  // A narrower transition uses less. Where it is narrow its moments cancel, and rejection at once is as good.
  constexpr double narrowest = 0.02;
  if (share(p, {(1 - narrowest) * q, narrowest * q}) > b) return tuned({q, 0});
  const double M = bisect(0, (1 - narrowest) * q, [&](double at) { return share(p, {at, q - at}) > b; });
  return tuned({M, q - M});
}

}  // namespace tmk::stats::robust
