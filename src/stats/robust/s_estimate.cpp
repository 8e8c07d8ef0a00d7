// SPDX-License-Identifier: Apache-2.0
#include "stats/robust/s_estimate.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "stats/robust/matrix.hpp"
#include "stats/robust/median.hpp"
#include "stats/robust/ogk.hpp"
#include "stats/robust/starts.hpp"

namespace tmk::stats::robust {
namespace {

// Brings the determinant to 1; false for a matrix without one.
bool normalise(std::vector<double>& c, size_t p) {
  const double log_determinant = log_determinant_of(static_cast<int32_t>(p), c.data());
  if (!std::isfinite(log_determinant)) return false;
  const double factor = std::exp(-log_determinant / static_cast<double>(p));
  for (double& x : c) x *= factor;
  return true;
}

struct m_sums {
  double rho, slope;
};

// Of rho(d / s) and of w(d / s) (d / s)^2, in blocks that compile to vector code, so that their partial sums
// are added in one order.
m_sums sum_rho(const std::vector<double>& d, const biweight& w, double s) {
  constexpr size_t block = 64;
  double rho[block] = {}, slope[block] = {}, rest[block] = {};
  const double inverse = 1 / s;
  const size_t whole = d.size() / block * block;
  std::copy(d.begin() + static_cast<ptrdiff_t>(whole), d.end(), rest);
  for (size_t i = 0; i <= whole; i += block) {
    const double* const from = i < whole ? d.data() + i : rest;
    for (size_t k = 0; k < block; ++k) {
      const double t = from[k] * inverse;
      rho[k] += w.rho(t);
      slope[k] += w.weight(t) * t * t;
    }
  }
  return {std::accumulate(rho, rho + block, 0.0), std::accumulate(slope, slope + block, 0.0)};
}

// The s with mean rho(d / s) = E rho, by Newton's method on a function that falls with s.
double m_scale(const std::vector<double>& d, const tuned_biweight& w, double s, int most_rounds) {
  const auto n = static_cast<double>(d.size());
  for (int round = 0; round < most_rounds; ++round) {
    const m_sums sums = sum_rho(d, w.w, s);
    const double excess = sums.rho / n - w.mean_rho, step = excess / (sums.slope / n);
    const double factor = step > -0.5 && step < 1 ? 1 + step : excess > 0 ? 2 : 0.5;
    s *= factor;
    if (std::fabs(factor - 1) < 1e-12) break;
  }
  return s;
}

}  // namespace

s_state from_half(const TmkSSData& data, const std::vector<double>& d2, const ThreadingService* threading) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  s_state state;
  state.d.resize(n);
  state.weights.resize(n);
  const double limit = ranked(d2.data(), n, (n + p + 1) / 2 - 1, state.d.data());
  for (size_t i = 0; i < n; ++i) state.weights[i] = d2[i] <= limit ? 1 : 0;
  state.e = weighted_estimate(data, state.weights.data(), nullptr, threading);
  state.regular = normalise(state.e.covariance, p);
  return state;
}

namespace {

// False where the covariance has no inverse.
bool invert_both(const estimate& e, std::vector<double>& inverse) {
  const auto p = static_cast<int32_t>(e.mean.size());
  inverse = e.covariance;
  if (invert(p, inverse.data()) != 0) return false;
  mirror(p, inverse.data());
  return true;
}

double root_mean_square(double squares, size_t n) { return std::sqrt(squares / static_cast<double>(n)); }

}  // namespace

double s_step(const TmkSSData& data, const tuned_biweight& w, s_state& state,
              const ThreadingService* threading) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  std::vector<double> inverse;
  state.regular = invert_both(state.e, inverse);
  if (!state.regular) return 0;
  distances(data, state.e.mean.data(), inverse.data(), state.d.data(), threading);
  double guess = state.scale;
  if (!(guess > 0)) {
    std::vector<double> work(n);
    guess = median(state.d.data(), n, work.data()) / std::sqrt(static_cast<double>(p));
  }
  state.scale = m_scale(state.d, w, guess, 100);
  double moved = 0;
  for (size_t i = 0; i < n; ++i) {
    const double weight = w.w.weight(state.d[i] / state.scale), change = weight - state.weights[i];
    moved += change * change;
    state.weights[i] = weight;
  }
  state.e = weighted_estimate(data, state.weights.data(), state.e.mean.data(), threading);
  state.regular = normalise(state.e.covariance, p);
  return root_mean_square(moved, n);
}

double quick_step(const TmkSSData& data, const tuned_biweight& w, s_state& state,
                  const ThreadingService* threading) {
  const size_t n = pooled::rows_of(data), p = pooled::columns_of(data);
  std::vector<double> inverse, before = state.weights;
  state.regular = invert_both(state.e, inverse);
  if (!state.regular) return 0;
  const double scale = state.scale;
  const auto sums = scan(data, state.e.mean.data(), inverse.data(), true, threading,
                         [&](size_t first, size_t count, const double* d2, double* weights) {
                           for (size_t k = 0; k < count; ++k) {
                             const double d = state.d[first + k] = std::sqrt(d2[k]);
                             weights[k] = state.weights[first + k] = w.w.weight(d / scale);
                           }
                         });
  state.e = finish(p, sums, state.e.mean.data());
  state.regular = normalise(state.e.covariance, p);
  state.scale = m_scale(state.d, w, scale, 2);  // the next round goes on
  double moved = 0;
  for (size_t i = 0; i < n; ++i) moved += (state.weights[i] - before[i]) * (state.weights[i] - before[i]);
  return root_mean_square(moved, n);
}

namespace {

constexpr int scoring_steps = 4;

// The rows of a sample: one, drawn by a fixed sequence, from each of `count` stretches of equal length.
std::vector<double> sample_rows(const std::vector<double>& x, size_t n, size_t p, size_t count) {
  std::vector<double> r(count * p);
  uint64_t state = 0x9E3779B97F4A7C15u;
  for (size_t i = 0; i < count; ++i) {
    state = state * 6364136223846793005u + 1442695040888963407u;
    const double within = static_cast<double>(state >> 40) * 0x1p-24;
    const double at =
        (static_cast<double>(i) + within) * (static_cast<double>(n) / static_cast<double>(count));
    const size_t row = std::min(n - 1, static_cast<size_t>(at));
    for (size_t j = 0; j < p; ++j) r[j * count + i] = x[j * n + row];
  }
  return r;
}

template <class Step>
void run(const Step& step, const TmkSSData& data, const tuned_biweight& w, s_state& state,
         const s_rules& rules, s_result& result, const ThreadingService* threading, const progress& report) {
  result.converged = false;
  for (int64_t round = 0; round < rules.rounds && state.regular && !result.converged; ++round) {
    const double change = step(data, w, state, threading);
    result.converged = change <= rules.tolerance;
    if (!report(++result.rounds, change)) break;
  }
}

// How much the spread of a fit along its axes differs from the tau scale of the data there, as the largest
// absolute logarithm. A tight cluster that a fit has taken in stretches one axis far beyond that scale,
// though in many variables the fit's volume, and with it the M-scale, can be the smaller for it.
double mismatch(const std::vector<double>& x, size_t n, size_t p, const s_state& state,
                const ThreadingService* threading) {
  std::vector<double> values, d2(n);
  principal_axes a{state.e.covariance, std::vector<double>(p), std::vector<double>(p)};
  eigenvectors(p, a.axes, values);
  measure_along(x.data(), n, a, d2.data(), threading);
  double largest = 0;
  for (size_t k = 0; k < p; ++k)
    largest = std::max(largest, std::fabs(std::log(std::sqrt(values[k]) * state.scale / a.scale[k])));
  return largest;
}

// Runs the starts until they differ no more, each fixed point once.
std::vector<s_state> distinct_fits(const std::vector<double>& x, size_t n, size_t p, const tuned_biweight& w,
                                   const s_rules& rules, const ThreadingService* threading) {
  const TmkSSData data = column_data(x.data(), n, p);
  std::vector<s_state> states;
  for (const auto& d2 : start_distances(x, n, p, threading)) {
    s_state state = from_half(data, d2, threading);
    for (int k = 0; k < scoring_steps && state.regular; ++k) s_step(data, w, state, threading);
    const auto same = [&](const s_state& other) {
      return std::fabs(state.scale - other.scale) <= 1e-3 * other.scale;
    };
    if (!state.regular || !std::isfinite(state.scale)) continue;
    if (std::none_of(states.begin(), states.end(), same)) states.push_back(std::move(state));
  }
  for (auto& state : states) {
    s_result ignored;
    run(s_step, data, w, state, {1e-2, rules.rounds}, ignored, threading, {});
  }
  return states;
}

// Of the fits whose mismatch is near the least, the one of the least scale.
s_state best_start(const std::vector<double>& x, size_t n, size_t p, const tuned_biweight& w,
                   const s_rules& rules, const ThreadingService* threading) {
  constexpr double near = 0.02;
  std::vector<s_state> states = distinct_fits(x, n, p, w, rules, threading);
  std::vector<double> misfit;
  for (const auto& state : states)
    misfit.push_back(state.regular ? mismatch(x, n, p, state, threading) : HUGE_VAL);
  const double least = states.empty() ? HUGE_VAL : *std::min_element(misfit.begin(), misfit.end());
  size_t best = states.size();
  for (size_t k = 0; k < states.size(); ++k)
    if (misfit[k] <= least + near && (best == states.size() || states[k].scale < states[best].scale))
      best = k;
  if (best == states.size() || !states[best].regular) throw failed{VTS_STATUS_SS_NOT_POSITIVE};
  return std::move(states[best]);
}

}  // namespace

s_result s_estimate(const std::vector<double>& x, size_t n, size_t p, const tuned_biweight& w,
                    const s_rules& rules, const ThreadingService* threading, const progress& report) {
  const size_t count = std::max<size_t>(1000, 20 * p);
  const bool sampled = n > 2 * count;
  s_state state = sampled ? best_start(sample_rows(x, n, p, count), count, p, w, rules, threading)
                          : best_start(x, n, p, w, rules, threading);
  const TmkSSData data = column_data(x.data(), n, p);
  state.weights.resize(n);
  state.d.resize(n);
  s_result result;
  run(quick_step, data, w, state, rules, result, threading, report);
  if (!state.regular) throw failed{VTS_STATUS_SS_NOT_POSITIVE};
  result.e = std::move(state.e);
  for (double& c : result.e.covariance) c *= state.scale * state.scale;
  result.weights = std::move(state.weights);
  return result;
}

}  // namespace tmk::stats::robust
