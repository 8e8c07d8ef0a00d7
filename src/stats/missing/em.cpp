// SPDX-License-Identifier: Apache-2.0
#include "stats/missing/em.hpp"

#include "platform/guarded.hpp"

namespace tmk::stats::missing {
namespace {

// Over means and lower triangle, of b - a and of c - 2 b + a.
struct step_norms {
  double first = 0, second = 0, curvature = 0;

  step_norms(const square<double>& a, const square<double>& b, const square<double>& c) {
    for (ptrdiff_t i = 0; i < a.order; ++i)
      for (ptrdiff_t j = 0; j <= i; ++j) {
        const double r = b[i][j] - a[i][j], s = c[i][j] - b[i][j];
        first += r * r, second += s * s, curvature += (s - r) * (s - r);
      }
    first = std::sqrt(first), second = std::sqrt(second), curvature = std::sqrt(curvature);
  }
};

class run {
 public:
  run(likelihood& l, const TmkSSEmOptions& options) : l_(l), options_(options), sums_(l.p()) {}

  em_result operator()() {
    square<double> theta = standard_model<double>(l_.p()), first = theta, second = theta, beyond = theta;
    while (!over()) {
      step(theta, first);
      if (over()) return result(first);
      const double reached = step(first, second);
      const step_norms norms(theta, first, second);
      converged_ = is_near(norms);
      if (over()) return result(second);
      extrapolate(theta, first, second, norms, beyond);
      if (!try_step(beyond, reached, theta)) theta = second;
    }
    return result(theta);
  }

 private:
  bool over() const { return converged_ || stopped_ || rounds_ >= options_.rounds; }

  // The first changes after an extrapolation may be of directions that settle fast: the slowest rate is given
  // up by degrees. Closer to 1 no rate can be distinguished from the roundings of a change.
  bool is_near(const step_norms& norms) {
    slowest_ = std::min(std::max(norms.second / norms.first, 1 - 2 * (1 - slowest_)), 0.9999);
    return change_ == 0 || change_ * slowest_ / (1 - slowest_) <= options_.tolerance;
  }

  // One step of EM; returns the log likelihood before it.
  double step(const square<double>& from, square<double>& to) {
    double log_likelihood;
    if (!l_.expect(from, sums_, log_likelihood)) throw failed{TMK_SS_NOT_REGULAR};
    finish(from, to);
    return log_likelihood;
  }

  bool try_step(const square<double>& from, double reached, square<double>& to) {
    double log_likelihood;
    const double rounding = 1e-13 * std::fabs(reached);
    const bool good = l_.expect(from, sums_, log_likelihood) && log_likelihood >= reached - rounding;
    if (good)
      finish(from, to);
    else
      ++rounds_, longest_ = 1;
    return good;
  }

  void finish(const square<double>& from, square<double>& to) {
    maximise(sums_, to);
    change_ = largest_difference(from, to);
    ++rounds_;
    if (options_.progress != nullptr)
      stopped_ |= options_.progress(options_.context, -1, rounds_, change_) != 0;
  }

  // Steps grow by degrees: the first changes say little about the last.
  void extrapolate(const square<double>& theta, const square<double>& first, const square<double>& second,
                   const step_norms& norms, square<double>& beyond) {
    double length = norms.curvature > 0 ? norms.first / norms.curvature : 1;
    if (length >= longest_) length = longest_, longest_ *= 4;
    length = std::max(length, 1.0);
    for (size_t i = 0; i < theta.values.size(); ++i) {
      const double r = first.values[i] - theta.values[i];
      const double v = second.values[i] - first.values[i] - r;
      beyond.values[i] = theta.values[i] + 2 * length * r + length * length * v;
    }
  }

  em_result result(const square<double>& theta) {
    double log_likelihood;
    if (!l_.expect(theta, sums_, log_likelihood)) throw failed{TMK_SS_NOT_REGULAR};
    return {theta, log_likelihood, rounds_, converged_, stopped_};
  }

  likelihood& l_;
  const TmkSSEmOptions& options_;
  square<double> sums_;
  double change_ = 0, longest_ = 1, slowest_ = 0;
  int64_t rounds_ = 0;
  bool converged_ = false, stopped_ = false;
};

}  // namespace

em_result maximise_likelihood(likelihood& l, const TmkSSEmOptions& options) { return run(l, options)(); }

}  // namespace tmk::stats::missing
