// SPDX-License-Identifier: Apache-2.0
// The C interface of EM and imputation: checks, standardisation and back, chains on threads.
#include <mutex>

#include "platform/checks.hpp"
#include "platform/guarded.hpp"
#include "stats/missing/chain.hpp"
#include "stats/missing/em.hpp"
#include "stats/pooled/run.hpp"

namespace tmk::stats::missing {
namespace {

bool is_valid(const TmkSSEmOptions& o) { return o.rounds >= 1 && o.tolerance > 0; }

em_result fit(const standardised_data& data, likelihood& l, const TmkSSEmOptions& options,
              TmkSSEmReport* report) {
  em_result fitted = maximise_likelihood(l, options);
  if (report != nullptr)
    *report = {fitted.log_likelihood - data.log_spread(), fitted.rounds, fitted.converged ? 1 : 0};
  return fitted;
}

void write_model(const standardised_data& data, const square<double>& theta, double* mean,
                 double* covariance) {
  const ptrdiff_t p = theta.p();
  for (ptrdiff_t j = 0; j < p; ++j) mean[j] = data.mean(theta, j);
  for (ptrdiff_t i = 0; i < p; ++i)
    for (ptrdiff_t j = 0; j < p; ++j) covariance[i * p + j] = data.covariance(theta, i, j);
}

// As pack_model, in the caller's units.
void write_packed(const standardised_data& data, const square<double>& theta, double* packed) {
  const ptrdiff_t p = theta.p();
  for (ptrdiff_t j = 0; j < p; ++j) *packed++ = data.mean(theta, j);
  for (ptrdiff_t i = 0; i < p; ++i)
    for (ptrdiff_t j = 0; j <= i; ++j) *packed++ = data.covariance(theta, i, j);
}

struct imputation_run {
  const TmkSSImputeOptions& options;
  const standardised_data& data;
  const square<double>& observed;
  const square<double>& start;
  const VtsStreamHandle* streams;
  double *imputed, *chain_out;
  std::mutex& reporting;

  void report(int64_t imputation, int64_t round, double change) const {
    if (options.em.progress == nullptr) return;
    const std::lock_guard lock(reporting);
    if (options.em.progress(options.em.context, imputation, round, change) != 0) throw failed{TMK_SS_STOPPED};
  }

  // Imputations first to end - 1 by one chain.
  void operator()(size_t stream, int64_t first, int64_t end) const {
    const ptrdiff_t size = packed_size(data.rows.p);
    chain c(data, observed, streams[stream]);
    square<double> theta = start, before = start;
    for (int64_t k = first; k < end; ++k) {
      for (int64_t round = 0; round < options.rounds; ++round) {
        before = theta;
        c.advance(theta);
        if (chain_out != nullptr) write_packed(data, theta, chain_out + (k * options.rounds + round) * size);
        report(k, round + 1, largest_difference(before, theta));
      }
      if (data.rows.holes() != 0) c.impute(theta, imputed + k * data.rows.holes());
    }
  }
};

void impute(const TmkSSData& data, const TmkSSImputeOptions& options, const VtsStreamHandle* streams,
            double* imputed, double* chain_out, double* start, TmkSSEmReport* report,
            const ThreadingService* threading) {
  const standardised_data standard = standardise(data);
  if (standard.rows.holes() != 0 && imputed == nullptr) throw failed{TMK_SS_BAD_OPTIONS};
  likelihood l(standard, threading);
  const em_result fitted = fit(standard, l, options.em, report);
  if (fitted.stopped) throw failed{TMK_SS_STOPPED};
  if (start != nullptr) write_packed(standard, fitted.theta, start);
  std::mutex reporting;
  const imputation_run run{options, standard, l.observed(), fitted.theta,
                           streams, imputed,  chain_out,    reporting};
  if (options.oneChain != 0) return run(0, 0, options.count);
  const auto count = static_cast<size_t>(options.count);
  pooled::for_each_item(threading, pooled::worker_count(threading, count), count, [&](size_t k, size_t) {
    run(k, static_cast<int64_t>(k), static_cast<int64_t>(k) + 1);
  });
}

bool is_valid(const TmkSSImputeOptions& o, const VtsStreamHandle* streams) {
  if (o.count < 1 || o.rounds < 1 || !is_valid(o.em) || streams == nullptr) return false;
  const int64_t chains = o.oneChain != 0 ? 1 : o.count;
  return std::find(streams, streams + chains, nullptr) == streams + chains;
}

}  // namespace
}  // namespace tmk::stats::missing

using namespace tmk::stats::missing;

int32_t tmk_ss_impute_refusal(const TmkSSData* data, int64_t* row, int64_t* column) {
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    const refusal found = find_refusal(data);
    *row = found.row, *column = found.column;
    return found.status;
  });
}

int32_t tmk_ss_impute_holes(const TmkSSData* data, int64_t* holes) {
  int64_t row, column;
  if (const int32_t status = tmk_ss_impute_refusal(data, &row, &column); status != 0) return status;
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    *holes = count_nans(*data);
    return 0;
  });
}

int32_t tmk_ss_em(const TmkSSData* data, const TmkSSEmOptions* options, double* mean, double* covariance,
                  TmkSSEmReport* report, const ThreadingService* threading) {
  int64_t row, column;
  if (options == nullptr || !is_valid(*options) || mean == nullptr || covariance == nullptr)
    return TMK_SS_BAD_OPTIONS;
  if (const int32_t status = tmk_ss_impute_refusal(data, &row, &column); status != 0) return status;
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    const standardised_data standard = standardise(*data);
    likelihood l(standard, threading);
    write_model(standard, fit(standard, l, *options, report).theta, mean, covariance);
    return 0;
  });
}

int32_t tmk_ss_impute(const TmkSSData* data, const TmkSSImputeOptions* options,
                      const VtsStreamHandle* streams, double* imputed, double* chain, double* start,
                      TmkSSEmReport* report, const ThreadingService* threading) {
  int64_t row, column;
  if (options == nullptr || !is_valid(*options, streams)) return TMK_SS_BAD_OPTIONS;
  if (const int32_t status = tmk_ss_impute_refusal(data, &row, &column); status != 0) return status;
  return tmk::guarded(VTS_STATUS_SS_MEMORY, [&] {
    impute(*data, *options, streams, imputed, chain, start, report, threading);
    return 0;
  });
}
