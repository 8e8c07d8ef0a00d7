// SPDX-License-Identifier: Apache-2.0
#include "stats_peers.hpp"

#include <gsl/gsl_rstat.h>
#include <gsl/gsl_statistics_double.h>

#include <Eigen/Core>
#include <boost/accumulators/accumulators.hpp>
#include <boost/accumulators/statistics.hpp>
#include <boost/accumulators/statistics/weighted_variance.hpp>
#include <vector>

extern "C" void dsyrk_(const char*, const char*, const int*, const int*, const double*, const double*,
                       const int*, const double*, double*, const int*);

namespace tmk::bench {
namespace {

namespace acc = boost::accumulators;

// One matrix of observations by variables over either layout, whose order the type knows.
template <class Work>
void with_view(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, Work work) {
  using by_variable = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::ColMajor>;
  using by_observation = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  if (rows || p == 1)
    work(Eigen::Map<const by_variable>(x, n, p));
  else
    work(Eigen::Map<const by_observation>(x, n, p));
}

// Feeds an accumulator per variable in the order of memory; finish(accumulator, place of its results).
template <class Accumulator, class Add, class Finish>
void accumulate(ptrdiff_t n, ptrdiff_t p, bool rows, Add add, Finish finish) {
  std::vector<Accumulator> all(p);
  if (rows)
    for (ptrdiff_t j = 0; j < p; ++j)
      for (ptrdiff_t i = 0; i < n; ++i) add(all[j], j * n + i, i);
  else
    for (ptrdiff_t i = 0; i < n; ++i)
      for (ptrdiff_t j = 0; j < p; ++j) add(all[j], i * p + j, i);
  for (ptrdiff_t j = 0; j < p; ++j) finish(all[j], j);
}

struct running {
  gsl_rstat_workspace* workspace = gsl_rstat_alloc();
  ~running() { gsl_rstat_free(workspace); }
};

}  // namespace

double plain_sum(const double* x, ptrdiff_t n) { return Eigen::Map<const Eigen::ArrayXd>(x, n).sum(); }

void eigen_variance(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r) {
  with_view(x, n, p, rows, [&](const auto& view) {
    Eigen::Map<Eigen::RowVectorXd> mean(r, p), variance(r + p, p);
    mean = view.colwise().mean();
    variance = (view.rowwise() - mean).colwise().squaredNorm() / static_cast<double>(n - 1);
  });
}

void gsl_variance(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r) {
  const size_t stride = rows ? 1 : p;
  for (ptrdiff_t j = 0; j < p; ++j) {
    const double* variable = x + (rows ? j * n : j);
    r[j] = gsl_stats_mean(variable, stride, n);
    r[p + j] = gsl_stats_variance_m(variable, stride, n, r[j]);
  }
}

void boost_variance(const double* x, const double* w, ptrdiff_t n, ptrdiff_t p, bool rows, double* r) {
  if (w == nullptr) {
    using moments = acc::accumulator_set<double, acc::stats<acc::tag::mean, acc::tag::lazy_variance>>;
    accumulate<moments>(
        n, p, rows, [&](moments& a, ptrdiff_t at, ptrdiff_t) { a(x[at]); },
        [&](moments& a, ptrdiff_t j) { r[j] = acc::mean(a), r[p + j] = acc::variance(a); });
  } else {
    using moments =
        acc::accumulator_set<double, acc::stats<acc::tag::weighted_mean, acc::tag::lazy_weighted_variance>,
                             double>;
    accumulate<moments>(
        n, p, rows, [&](moments& a, ptrdiff_t at, ptrdiff_t i) { a(x[at], acc::weight = w[i]); },
        [&](moments& a, ptrdiff_t j) { r[j] = acc::weighted_mean(a), r[p + j] = acc::weighted_variance(a); });
  }
}

void eigen_moments(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r) {
  with_view(x, n, p, rows, [&](const auto& view) {
    for (ptrdiff_t j = 0; j < p; ++j, r += 4) {
      const auto variable = view.col(j).array();
      const double mean = variable.mean(), c2 = (variable - mean).square().mean(),
                   c3 = (variable - mean).cube().mean(), c4 = (variable - mean).square().square().mean();
      r[0] = mean, r[1] = c2, r[2] = c3 / std::sqrt(c2 * c2 * c2), r[3] = c4 / (c2 * c2) - 3;
    }
  });
}

void gsl_moments(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r) {
  accumulate<running>(
      n, p, rows, [&](running& a, ptrdiff_t at, ptrdiff_t) { gsl_rstat_add(x[at], a.workspace); },
      [&](running& a, ptrdiff_t j) {
        r[4 * j] = gsl_rstat_mean(a.workspace), r[4 * j + 1] = gsl_rstat_variance(a.workspace);
        r[4 * j + 2] = gsl_rstat_skew(a.workspace), r[4 * j + 3] = gsl_rstat_kurtosis(a.workspace);
      });
}

void boost_moments(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r) {
  using moments = acc::accumulator_set<
      double, acc::stats<acc::tag::mean, acc::tag::variance, acc::tag::skewness, acc::tag::kurtosis>>;
  accumulate<moments>(
      n, p, rows, [&](moments& a, ptrdiff_t at, ptrdiff_t) { a(x[at]); },
      [&](moments& a, ptrdiff_t j) {
        r[4 * j] = acc::mean(a), r[4 * j + 1] = acc::variance(a);
        r[4 * j + 2] = acc::skewness(a), r[4 * j + 3] = acc::kurtosis(a);
      });
}

void boost_quartiles(const double* x, ptrdiff_t n, double* r) {
  const std::vector<double> orders{0.25, 0.5, 0.75};
  acc::accumulator_set<double, acc::stats<acc::tag::extended_p_square_quantile>> a(
      acc::extended_p_square_probabilities = orders);
  for (ptrdiff_t i = 0; i < n; ++i) a(x[i]);
  for (const double order : orders) *r++ = acc::quantile(a, acc::quantile_probability = order);
}

void eigen_covariance(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r) {
  with_view(x, n, p, rows, [&](const auto& view) {
    const Eigen::MatrixXd centred = view.rowwise() - view.colwise().mean();
    Eigen::Map<Eigen::MatrixXd> cov(r, p, p);
    cov.setZero();
    cov.template selfadjointView<Eigen::Upper>().rankUpdate(centred.adjoint(),
                                                            1 / static_cast<double>(n - 1));
  });
}

void bare_rank_update(const double* x, ptrdiff_t n, ptrdiff_t p, bool rows, double* r) {
  const int order = static_cast<int>(p), count = static_cast<int>(n), leading = rows ? count : order;
  const double one = 1, zero = 0;
  dsyrk_("U", rows ? "T" : "N", &order, &count, &one, x, &leading, &zero, r, &order);
}

}  // namespace tmk::bench
