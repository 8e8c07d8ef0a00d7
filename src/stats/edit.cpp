// SPDX-License-Identifier: Apache-2.0
// Edits of a task's fields: one by its parameter number, or a family at once.
#include <array>

#include "stats/task.hpp"

namespace tmk::stats {

namespace {

template <class Real, class Value>
struct parameter_row {
  Value task<Real>::*field = nullptr;
  int32_t null_status = 0;  // 0 in the rows of no parameter
};

template <class Real, class Value>
using parameter_table = std::array<parameter_row<Real, Value>, VTS_SS_PARAM_SORTED_STORAGE + 1>;

template <class Real>
constexpr parameter_table<Real, Real*> real_parameters = [] {
  parameter_table<Real, Real*> rows;
#define TMK_SS_REAL(name, parameter, null_status) rows[parameter] = {&task<Real>::name, null_status};
#define TMK_SS_INTEGER(name, parameter, null_status)
#define TMK_SS_OWN(type, name)
#include "stats/task_fields.def"
#undef TMK_SS_REAL
#undef TMK_SS_INTEGER
  return rows;
}();

constexpr parameter_table<double, const void*> integer_parameters = [] {
  parameter_table<double, const void*> rows;
#define TMK_SS_REAL(name, parameter, null_status)
#define TMK_SS_INTEGER(name, parameter, null_status) rows[parameter] = {&task<double>::name, null_status};
#include "stats/task_fields.def"
#undef TMK_SS_REAL
#undef TMK_SS_INTEGER
#undef TMK_SS_OWN
  return rows;
}();

template <class Real, class Value>
int32_t edit(const parameter_table<Real, Value>& rows, SSTask* handle, int64_t parameter, Value value) {
  if (handle == nullptr) return VTS_STATUS_SS_TASK_NULL;
  if (static_cast<uint64_t>(parameter) >= rows.size()) return VTS_STATUS_SS_BAD_PARAMETER;
  const auto& row = rows[static_cast<std::size_t>(parameter)];
  if (row.null_status == 0) return VTS_STATUS_SS_BAD_PARAMETER;
  if (value == nullptr) return row.null_status;
  task<Real>::of(handle).*row.field = value;
  return 0;
}

// The fields get those values that are not null.
template <auto... Fields, class... Values>
int32_t edit_family(SSTask* handle, Values... values) {
  if (handle == nullptr) return VTS_STATUS_SS_TASK_NULL;
  const auto edit_field = [handle]<class Real, class Value>(Value task<Real>::*field, Value value) {
    if (value != nullptr) task<Real>::of(handle).*field = value;
  };
  (edit_field(Fields, values), ...);
  return 0;
}

}  // namespace

}  // namespace tmk::stats

using tmk::stats::edit_family;
template <class Real>
using record = tmk::stats::task<Real>;

int32_t __vtsiSSEditTask(SSTask* task, int64_t parameter, const void* value) {
  return tmk::stats::edit(tmk::stats::integer_parameters, task, parameter, value);
}

#define TMK_SS_EDITS(letter, Real)                                                                           \
  int32_t __vts##letter##SSEditTask(SSTask* task, int64_t parameter, Real* value) {                          \
    return tmk::stats::edit(tmk::stats::real_parameters<Real>, task, parameter, value);                      \
  }                                                                                                          \
  int32_t __vts##letter##SSEditMoments(SSTask* task, Real* mean, Real* raw2, Real* raw3, Real* raw4,         \
                                       Real* central2, Real* central3, Real* central4) {                     \
    return edit_family<&record<Real>::mean, &record<Real>::raw2, &record<Real>::raw3, &record<Real>::raw4,   \
                       &record<Real>::central2, &record<Real>::central3, &record<Real>::central4>(           \
        task, mean, raw2, raw3, raw4, central2, central3, central4);                                         \
  }                                                                                                          \
  int32_t __vts##letter##SSEditSums(SSTask* task, Real* sum, Real* rawSum2, Real* rawSum3, Real* rawSum4,    \
                                    Real* centralSum2, Real* centralSum3, Real* centralSum4) {               \
    return edit_family<&record<Real>::sum, &record<Real>::rawSum2, &record<Real>::rawSum3,                   \
                       &record<Real>::rawSum4, &record<Real>::centralSum2, &record<Real>::centralSum3,       \
                       &record<Real>::centralSum4>(task, sum, rawSum2, rawSum3, rawSum4, centralSum2,        \
                                                   centralSum3, centralSum4);                                \
  }                                                                                                          \
  int32_t __vts##letter##SSEditCovCor(SSTask* task, Real* mean, Real* cov, const void* covStorage,           \
                                      Real* cor, const void* corStorage) {                                   \
    return edit_family<&record<Real>::mean, &record<Real>::cov, &record<Real>::covStorage,                   \
                       &record<Real>::cor, &record<Real>::corStorage>(task, mean, cov, covStorage, cor,      \
                                                                      corStorage);                           \
  }                                                                                                          \
  int32_t __vts##letter##SSEditCP(SSTask* task, Real* mean, Real* sum, Real* cross,                          \
                                  const void* crossStorage) {                                                \
    return edit_family<&record<Real>::mean, &record<Real>::sum, &record<Real>::cross,                        \
                       &record<Real>::crossStorage>(task, mean, sum, cross, crossStorage);                   \
  }                                                                                                          \
  int32_t __vts##letter##SSEditPartialCovCor(SSTask* task, const void* partialIndices, Real* cov,            \
                                             const void* covStorage, Real* cor, const void* corStorage,      \
                                             Real* partialCov, const void* partialCovStorage,                \
                                             Real* partialCor, const void* partialCorStorage) {              \
    return edit_family<&record<Real>::partialIndices, &record<Real>::cov, &record<Real>::covStorage,         \
                       &record<Real>::cor, &record<Real>::corStorage, &record<Real>::partialCov,             \
                       &record<Real>::partialCovStorage, &record<Real>::partialCor,                          \
                       &record<Real>::partialCorStorage>(task, partialIndices, cov, covStorage, cor,         \
                                                         corStorage, partialCov, partialCovStorage,          \
                                                         partialCor, partialCorStorage);                     \
  }                                                                                                          \
  int32_t __vts##letter##SSEditPooledCovariance(SSTask* task, const void* groupOfObservation,                \
                                                Real* pooledMean, Real* pooledCov, const void* groupEnable,  \
                                                Real* groupMean, Real* groupCov) {                           \
    return edit_family<&record<Real>::groupOfObservation, &record<Real>::pooledMean,                         \
                       &record<Real>::pooledCov, &record<Real>::groupEnable, &record<Real>::groupMean,       \
                       &record<Real>::groupCov>(task, groupOfObservation, pooledMean, pooledCov,             \
                                                groupEnable, groupMean, groupCov);                           \
  }                                                                                                          \
  int32_t __vts##letter##SSEditQuantiles(SSTask* task, const void* quantileOrderCount, Real* quantileOrders, \
                                         Real* quantiles, Real* orderStats, const void* orderStatsStorage) { \
    return edit_family<&record<Real>::quantileOrderCount, &record<Real>::quantileOrders,                     \
                       &record<Real>::quantiles, &record<Real>::orderStats,                                  \
                       &record<Real>::orderStatsStorage>(task, quantileOrderCount, quantileOrders,           \
                                                         quantiles, orderStats, orderStatsStorage);          \
  }                                                                                                          \
  int32_t __vts##letter##SSEditStreamQuantiles(SSTask* task, const void* streamOrderCount,                   \
                                               Real* streamOrders, Real* streamQuantiles,                    \
                                               const void* streamParamCount, Real* streamParams) {           \
    return edit_family<&record<Real>::streamOrderCount, &record<Real>::streamOrders,                         \
                       &record<Real>::streamQuantiles, &record<Real>::streamParamCount,                      \
                       &record<Real>::streamParams>(task, streamOrderCount, streamOrders, streamQuantiles,   \
                                                    streamParamCount, streamParams);                         \
  }                                                                                                          \
  int32_t __vts##letter##SSEditRCov(SSTask* task, const void* robustCovStorage,                              \
                                    const void* robustParamCount, Real* robustParams, Real* robustCov,       \
                                    Real* robustMean) {                                                      \
    return edit_family<&record<Real>::robustCovStorage, &record<Real>::robustParamCount,                     \
                       &record<Real>::robustParams, &record<Real>::robustCov, &record<Real>::robustMean>(    \
        task, robustCovStorage, robustParamCount, robustParams, robustCov, robustMean);                      \
  }                                                                                                          \
  int32_t __vts##letter##SSEditOutDetect(SSTask* task, const void* outlierParamCount, Real* outlierParams,   \
                                         Real* outlierWeights) {                                             \
    return edit_family<&record<Real>::outlierParamCount, &record<Real>::outlierParams,                       \
                       &record<Real>::outlierWeights>(task, outlierParamCount, outlierParams,                \
                                                      outlierWeights);                                       \
  }                                                                                                          \
  int32_t __vts##letter##SSEditMissingVals(                                                                  \
      SSTask* task, const void* missingParamCount, Real* missingParams, const void* initEstimateCount,       \
      Real* initEstimates, const void* priorCount, Real* priors, const void* simulationCount,                \
      Real* simulations, const void* estimateCount, Real* estimates) {                                       \
    return edit_family<&record<Real>::missingParamCount, &record<Real>::missingParams,                       \
                       &record<Real>::initEstimateCount, &record<Real>::initEstimates,                       \
                       &record<Real>::priorCount, &record<Real>::priors, &record<Real>::simulationCount,     \
                       &record<Real>::simulations, &record<Real>::estimateCount, &record<Real>::estimates>(  \
        task, missingParamCount, missingParams, initEstimateCount, initEstimates, priorCount, priors,        \
        simulationCount, simulations, estimateCount, estimates);                                             \
  }                                                                                                          \
  int32_t __vts##letter##SSEditMtxParametrz(SSTask* task, Real* cor, const void* corStorage,                 \
                                            Real* corParamOut, const void* corParamStorage) {                \
    return edit_family<&record<Real>::cor, &record<Real>::corStorage, &record<Real>::corParamOut,            \
                       &record<Real>::corParamStorage>(task, cor, corStorage, corParamOut, corParamStorage); \
  }

TMK_SS_EDITS(d, double)
TMK_SS_EDITS(s, float)
#undef TMK_SS_EDITS
