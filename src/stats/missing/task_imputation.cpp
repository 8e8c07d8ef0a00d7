// SPDX-License-Identifier: Apache-2.0
// MissingValues: checks of the task, and the run from the data to the imputations.
#include "stats/missing/task_imputation.hpp"

#include <bit>
#include <cstring>
#include <memory>

#include "platform/checks.hpp"
#include "stats/missing/sums.hpp"

namespace tmk::stats::missing {
namespace {

constexpr int64_t parameter_count = 5;
constexpr ptrdiff_t most_variables = sizeof(ptrdiff_t) == 4 ? 8192 : 1 << 20;  // a square of them has a size
enum : int { limit_of_em, limit_of_rounds, accuracy_of_em, number_of_imputations, number_of_holes };

// The mark of a hole: sign, exponent and the first bit of the fraction are set. Other NaNs are data.
bool is_mark(double x) { return std::bit_cast<uint64_t>(x) >= 0xfff8000000000000; }
bool is_mark(float x) { return std::bit_cast<uint32_t>(x) >= 0xffc00000; }

template <class Real>
int64_t count_or_zero(const task<Real>& t, const void* count) {
  return count != nullptr ? t.integer(count) : 0;
}

template <class Real>
int32_t check(const task<Real>& t, uint32_t method) {
  const int64_t storage = t.dataStorage != nullptr ? t.integer(t.dataStorage) : 0;
  const bool no_estimates = t.estimateCount == nullptr || t.estimates == nullptr;
  return first_status({
      {t.p() < 1, VTS_STATUS_SS_BAD_DIMENSION},
      {storage != VTS_SS_ROWS && storage != VTS_SS_COLUMNS, VTS_STATUS_SS_BAD_STORAGE},
      {t.missingParams == nullptr, VTS_STATUS_SS_MISSING_PARAMS_NULL},
      {t.missingParamCount == nullptr, VTS_STATUS_SS_MISSING_PARAM_COUNT_NULL},
      {count_or_zero(t, t.missingParamCount) != parameter_count, VTS_STATUS_SS_BAD_MISSING_PARAM_COUNT},
      {t.simulations == nullptr && t.simulationCount != nullptr, VTS_STATUS_SS_SIMULATIONS_NULL},
      {t.simulations == nullptr && no_estimates, VTS_STATUS_SS_NO_OUTPUT},
      {t.simulations != nullptr && t.simulationCount == nullptr, VTS_STATUS_SS_SIMULATION_COUNT_NULL},
      {count_or_zero(t, t.simulationCount) == 0 && no_estimates, VTS_STATUS_SS_NO_OUTPUT},
      {(method & VTS_SS_METHOD_MULTIPLE_IMPUTATION) == 0, VTS_STATUS_SS_BAD_METHOD},
      {t.observations == nullptr || t.n() < 0, VTS_STATUS_SS_BAD_OBSERVATIONS},
      {t.data == nullptr && t.n() > 0, VTS_STATUS_SS_DATA_NULL},
  });
}

// A real parameter as a count, 0 for what is below 1 or no number.
template <class Real>
int64_t truncated(Real x) {
  if (!(x >= 1)) return 0;
  return x < Real{0x1p62} ? static_cast<int64_t>(x) : int64_t{1} << 62;
}

template <class Real>
int64_t or_default(Real x, int64_t otherwise) {
  const int64_t count = truncated(x);
  return count != 0 ? count : otherwise;
}

// Whether a times b is the count; no product overflows.
bool is_product(int64_t a, int64_t b, int64_t count) {
  int64_t product;
  return !__builtin_mul_overflow(a, b, &product) && product == count;
}

template <class Real>
prior_parameters<Real> prior_of(const task<Real>& t, ptrdiff_t p) {
  prior_parameters<Real> prior(p, static_cast<Real>(p));
  const ptrdiff_t packed = packed_size(p);
  if (t.priors == nullptr || count_or_zero(t, t.priorCount) < packed + 2) return prior;
  unpack_model<Real>(t.priors, prior.model);
  if (t.priors[packed] > 0) prior.tau = t.priors[packed];
  if (t.priors[packed + 1] > prior.degrees) prior.degrees = t.priors[packed + 1];
  return prior;
}

// Throws `failed` for counts that do not go with the data.
template <class Real>
imputation_request<Real> request_of(const task<Real>& t, ptrdiff_t p, int64_t holes) {
  const Real* const given = t.missingParams;
  const bool with_estimates = t.estimates != nullptr && t.estimateCount != nullptr;
  imputation_request<Real> r{or_default(given[limit_of_em], 50),
                             or_default(given[limit_of_rounds], 30),
                             truncated(given[number_of_imputations]),
                             given[accuracy_of_em] > 0 ? given[accuracy_of_em] : Real(0.001),
                             nullptr,
                             count_or_zero(t, t.simulationCount) != 0 ? t.simulations : nullptr,
                             with_estimates ? t.estimates : nullptr,
                             prior_of(t, p)};
  if (count_or_zero(t, t.initEstimateCount) == packed_size(p)) r.start = t.initEstimates;
  int64_t chain;
  const bool endless = __builtin_mul_overflow(r.imputations, r.rounds, &chain);
  require(first_status({
      {holes != truncated(given[number_of_holes]), VTS_STATUS_SS_BAD_MISSING_COUNT},
      {r.imputations < 1 || holes < 1, VTS_STATUS_SS_BAD_IMPUTATION_COUNTS},
      {r.simulations != nullptr && !is_product(r.imputations, holes, t.integer(t.simulationCount)),
       VTS_STATUS_SS_BAD_SIMULATION_COUNT},
      {with_estimates && (endless || !is_product(packed_size(p), chain, count_or_zero(t, t.estimateCount))),
       VTS_STATUS_SS_BAD_ESTIMATE_COUNT},
  }));
  return r;
}

struct delete_stream {
  void operator()(VtsStream* stream) const { __vtsDeleteStream(&stream); }
};
using stream_handle = std::unique_ptr<VtsStream, delete_stream>;

// Two equal calls draw the same numbers. The seed is 2^50, whose powers of two leave MCG59 a period of 128.
stream_handle own_stream() {
  constexpr uint32_t seeds[] = {0, 0x40000};
  VtsStreamHandle handle = nullptr;
  const int32_t status = __vtsNewStreamEx(&handle, VTS_BRNG_MCG59, 2, seeds);
  stream_handle stream(handle);
  if (status < 0) throw failed{VTS_STATUS_SS_MEMORY};
  return stream;
}

template <class Real>
int64_t count_marks(const task_values<Real>& values, ptrdiff_t n, ptrdiff_t p) {
  int64_t marks = 0;
  for (ptrdiff_t i = 0; i < n; ++i)
    for (ptrdiff_t j = 0; j < p; ++j) marks += is_mark(values(i, j));
  return marks;
}

template <class Real>
void run(const task<Real>& t) {
  const auto p = static_cast<ptrdiff_t>(t.p()), n = static_cast<ptrdiff_t>(t.n());
  const bool rows = t.integer(t.dataStorage) == VTS_SS_ROWS;
  const task_values<Real> values{t.data, rows ? 1 : p, rows ? n : 1};
  if (p > most_variables) throw std::bad_alloc();
  imputation_request<Real> request = request_of(t, p, count_marks(values, n, p));
  const stream_handle stream = own_stream();
  const data_rows<Real> data = sort_rows<Real>(
      n, p, [&](ptrdiff_t i, ptrdiff_t j) { return is_mark(values(i, j)); }, values);
  square<Real> theta = standard_model<Real>(p);
  if (request.start != nullptr) unpack_model(request.start, theta);
  const square<Real> observed = observed_sums(p, n, data.rows.data());
  run_em(request, data, observed, theta);
  run_augmentation(request, data, observed, stream.get(), values, theta);
}

template <class Real>
int32_t missing_values(SSTask* handle, uint32_t method) {
  const auto& t = task<Real>::of(handle);
  if (const int32_t status = check(t, method); status != 0) return status;
  return guarded(VTS_STATUS_SS_MEMORY, [&] {
    run(t);
    return 0;
  });
}

}  // namespace
}  // namespace tmk::stats::missing

int32_t _vtsdSSMissingValues(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                             const ThreadingService*) {
  return tmk::stats::missing::missing_values<double>(task, methodLow);
}
int32_t _vtssSSMissingValues(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                             const ThreadingService*) {
  return tmk::stats::missing::missing_values<float>(task, methodLow);
}
