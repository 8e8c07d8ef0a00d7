// SPDX-License-Identifier: Apache-2.0
// Quantiles of data that arrive in blocks: a task's sketches, one for each variable.
#include <algorithm>

#include "platform/checks.hpp"
#include "stats/quantiles/sketch.hpp"
#include "stats/task.hpp"
#include "tmk/abi/serv.h"

namespace tmk::stats {

namespace {

template <class Real>
sketch<Real>* sketches(const task<Real>& t) {
  return static_cast<sketch<Real>*>(t.streamState);
}

bool is_order(double q) { return q >= 0 && q <= 1; }

template <class Real>
int32_t check(const task<Real>& t, uint32_t method) {
  const int64_t n = t.observations != nullptr ? t.n() : -1;
  const int64_t orders = t.streamOrderCount != nullptr ? t.integer(t.streamOrderCount) : -1;
  const int64_t storage = t.dataStorage != nullptr ? t.integer(t.dataStorage) : 0;
  const int64_t params = t.streamParamCount != nullptr ? t.integer(t.streamParamCount) : 0;
  const Real epsilon = t.streamParams != nullptr ? *t.streamParams : Real{0};
  const bool orders_hold = t.streamOrders != nullptr && orders >= 0 &&
                           std::all_of(t.streamOrders, t.streamOrders + orders, is_order);
  return first_status({
      {n < 0, VTS_STATUS_SS_BAD_OBSERVATIONS},
      {n > 0 && t.data == nullptr, VTS_STATUS_SS_DATA_NULL},
      {n > 0 && t.dataStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {n > 0 && (storage & (VTS_SS_ROWS | VTS_SS_COLUMNS)) == 0, VTS_STATUS_SS_BAD_STORAGE},
      {t.streamQuantiles == nullptr, VTS_STATUS_SS_STREAM_QUANTILES_NULL},
      {t.streamOrders == nullptr, VTS_STATUS_SS_STREAM_ORDERS_NULL},
      {orders < 0, VTS_STATUS_SS_BAD_STREAM_ORDERS},
      {t.streamParamCount == nullptr, VTS_STATUS_SS_STREAM_PARAM_COUNT_NULL},
      {params != 1, VTS_STATUS_SS_BAD_STREAM_PARAM_COUNT},
      {!orders_hold, VTS_STATUS_SS_BAD_STREAM_ORDERS},
      {t.streamParams == nullptr, VTS_STATUS_SS_STREAM_PARAMS_NULL},
      {(method & (VTS_SS_METHOD_STREAM_QUANTILES | VTS_SS_METHOD_STREAM_ABSORB)) == 0,
       VTS_STATUS_SS_BAD_METHOD},
      {!(epsilon > 0 && epsilon <= 1), VTS_STATUS_SS_BAD_EPSILON},
  });
}

template <class Real>
int32_t make_sketches(task<Real>& t) {
  const int64_t p = t.p();
  if (p < 1) return VTS_STATUS_SS_BAD_DIMENSION;
  if (p > INT32_MAX || p > static_cast<int64_t>(PTRDIFF_MAX / sizeof(sketch<Real>)))
    return VTS_STATUS_SS_MEMORY;
  auto* s = static_cast<sketch<Real>*>(tmk_serv_allocate(static_cast<size_t>(p) * sizeof(sketch<Real>), 128));
  if (s == nullptr) return VTS_STATUS_SS_MEMORY;
  for (ptrdiff_t j = 0; j < p; ++j)
    s[j] = {.enabled = t.selects(j) ? 1 : 0, .variables = static_cast<int32_t>(p)};
  t.streamState = s;
  t.cleanup = __vtsSQuantilesFreeBuffers;
  t.cleanupCount = 1;
  return 0;
}

// The variables are those of the first block: one left out then cannot come in later, and some variable must.
template <class Real>
int32_t check_later_block(const task<Real>& t) {
  const sketch<Real>* s = sketches(t);
  if (t.p() != s->variables) return VTS_STATUS_SS_BAD_DIMENSION;
  if (t.indices == nullptr) return 0;
  bool any = false;
  for (ptrdiff_t j = 0; j < s->variables; ++j) {
    if (t.selects(j) && s[j].enabled == 0) return VTS_STATUS_SS_INDICES_NULL;
    any |= t.selects(j);
  }
  return any ? 0 : VTS_STATUS_SS_INDICES_NULL;
}

template <class Real>
struct absorbing {
  const task<Real>* t;
  int32_t status;
};

template <class Real>
void _vSSSQuantilesAddDataThreader(int32_t variable, int32_t, int32_t, void* context) {
  auto& call = *static_cast<absorbing<Real>*>(context);
  const task<Real>& t = *call.t;
  sketch<Real>& s = sketches(t)[variable];
  if (s.enabled == 0 || !t.selects(variable)) return;
  const bool rows = (t.integer(t.dataStorage) & VTS_SS_ROWS) != 0;
  const auto n = static_cast<ptrdiff_t>(t.n());
  const Real* first = t.data + (rows ? variable * n : variable);
  if (const int32_t status = absorb(s, first, rows ? 1 : s.variables, n, double{*t.streamParams}))
    call.status = status;
}

template <class Real>
void answer_all(const task<Real>& t) {
  sketch<Real>* s = sketches(t);
  const auto orders = static_cast<ptrdiff_t>(t.integer(t.streamOrderCount));
  for (ptrdiff_t j = 0; j < s->variables; ++j)
    for (ptrdiff_t k = 0; k < orders && s[j].enabled != 0; ++k)
      t.streamQuantiles[j * orders + k] = answer(s[j], double{t.streamOrders[k]}).value;
}

template <class Real>
int32_t stream_quantiles(SSTask* handle, uint32_t method, const ThreadingService* threading) {
  auto& t = task<Real>::of(handle);
  if (const int32_t status = check(t, method)) return status;
  if (const int32_t status = t.streamState == nullptr ? make_sketches(t) : check_later_block(t))
    return status;
  if (t.n() > 0) {
    absorbing<Real> call = {&t, 0};
    const int32_t p = sketches(t)->variables;
    threading->ParallelFor(p, std::clamp(threading->MaxThreads(), 1, p), &call,
                           _vSSSQuantilesAddDataThreader<Real>);
    if (call.status < 0) return call.status;
  }
  if ((method & VTS_SS_METHOD_STREAM_QUANTILES) != 0) answer_all(t);
  return 0;
}

template <class Real>
int32_t bounded_quantile(SSTask* handle, int32_t variable, Real order, Real* value, int64_t* lowest,
                         int64_t* highest, int64_t* count) {
  if (handle == nullptr) return VTS_STATUS_SS_TASK_NULL;
  sketch<Real>* s = sketches(task<Real>::of(handle));
  if (s == nullptr) return VTS_STATUS_SS_DATA_NULL;
  if (variable < 0 || variable >= s->variables) return VTS_STATUS_SS_BAD_DIMENSION;
  if (s[variable].enabled == 0) return VTS_STATUS_SS_INDICES_NULL;
  if (!is_order(double{order})) return VTS_STATUS_SS_BAD_STREAM_ORDERS;
  const sketch_answer<Real> r = answer(s[variable], double{order});
  *value = r.value;
  *lowest = r.lowest;
  *highest = r.highest;
  *count = s[variable].count;
  return 0;
}

template <class Real>
void free_sketches(task<Real>& t) {
  sketch<Real>* s = sketches(t);
  if (s == nullptr) return;
  for (int32_t j = 0, p = s->variables; j < p; ++j) release(s[j]);
  tmk_serv_deallocate(s);
  t.streamState = nullptr;
}

}  // namespace

}  // namespace tmk::stats

void __vtsSQuantilesFreeBuffers(SSTask* task) {
  if (tmk::stats::task<double>::of(task).isDouble != 0)
    tmk::stats::free_sketches(tmk::stats::task<double>::of(task));
  else
    tmk::stats::free_sketches(tmk::stats::task<float>::of(task));
}

#define TMK_STREAM_QUANTILES(letter, Real)                                                                \
  int32_t _vts##letter##SSStreamQuantiles(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t, \
                                          const ThreadingService* threading) {                            \
    return tmk::stats::stream_quantiles<Real>(task, methodLow, threading);                                \
  }                                                                                                       \
  int32_t tmk_ss_##letter##stream_quantile(SSTask* task, int32_t variable, Real order, Real* value,       \
                                           int64_t* lowest, int64_t* highest, int64_t* count) {           \
    return tmk::stats::bounded_quantile(task, variable, order, value, lowest, highest, count);            \
  }
TMK_STREAM_QUANTILES(d, double)
TMK_STREAM_QUANTILES(s, float)
#undef TMK_STREAM_QUANTILES
