// SPDX-License-Identifier: Apache-2.0
#include "stats/moments/demand.hpp"

#include <bit>

#include "platform/checks.hpp"

namespace tmk::stats {
namespace {

// An estimate: the caller's bit (of the high word where the low bit is 0), its field, what it demands of each
// group of methods, and the status of a missing field.
template <class Real>
struct demand_row {
  uint32_t low, high;
  Real* task<Real>::*field;
  uint32_t otherwise, fast, convert;
  int32_t missing;
};

template <class Real>
constexpr demand_row<Real> demand_rows[] = {
    {VTS_SS_ESTIMATE_MEAN, 0, &task<Real>::mean, 0x1, 0x1, 0x1001, VTS_STATUS_SS_MEAN_NULL},
    {VTS_SS_ESTIMATE_RAW2, 0, &task<Real>::raw2, 0x2, 0x2, 0x2002, VTS_STATUS_SS_RAW2_NULL},
    {VTS_SS_ESTIMATE_RAW3, 0, &task<Real>::raw3, 0x4, 0x4, 0x4004, VTS_STATUS_SS_RAW3_NULL},
    {VTS_SS_ESTIMATE_RAW4, 0, &task<Real>::raw4, 0x8, 0x8, 0x8008, VTS_STATUS_SS_RAW4_NULL},
    {VTS_SS_ESTIMATE_CENTRAL2, 0, &task<Real>::central2, 0x13, 0x13, 0x10010, VTS_STATUS_SS_CENTRAL2_NULL},
    {VTS_SS_ESTIMATE_CENTRAL3, 0, &task<Real>::central3, 0x27, 0x27, 0x20020, VTS_STATUS_SS_CENTRAL3_NULL},
    {VTS_SS_ESTIMATE_CENTRAL4, 0, &task<Real>::central4, 0x4f, 0x4f, 0x40040, VTS_STATUS_SS_CENTRAL4_NULL},
    {VTS_SS_ESTIMATE_COV, 0, &task<Real>::cov, 0x81, 0x81, 0x80080, VTS_STATUS_SS_COV_NULL},
    {VTS_SS_ESTIMATE_COR, 0, &task<Real>::cor, 0x101, 0x101, 0x80100, VTS_STATUS_SS_COR_NULL},
    {VTS_SS_ESTIMATE_KURTOSIS, 0, &task<Real>::kurtosis, 0x25f, 0x25f, 0x251, VTS_STATUS_SS_KURTOSIS_NULL},
    {VTS_SS_ESTIMATE_SKEWNESS, 0, &task<Real>::skewness, 0x437, 0x437, 0x431, VTS_STATUS_SS_SKEWNESS_NULL},
    {VTS_SS_ESTIMATE_VARIATION, 0, &task<Real>::variation, 0x813, 0x813, 0x811, VTS_STATUS_SS_VARIATION_NULL},
    {VTS_SS_ESTIMATE_SUM, 0, &task<Real>::sum, 0x1000, 0x1000, 0x100000, VTS_STATUS_SS_SUM_NULL},
    {VTS_SS_ESTIMATE_RAW_SUM2, 0, &task<Real>::rawSum2, 0x2000, 0x2000, 0x100000,
     VTS_STATUS_SS_RAW_SUM2_NULL},
    {VTS_SS_ESTIMATE_RAW_SUM3, 0, &task<Real>::rawSum3, 0x4000, 0x4000, 0x100000,
     VTS_STATUS_SS_RAW_SUM3_NULL},
    {VTS_SS_ESTIMATE_RAW_SUM4, 0, &task<Real>::rawSum4, 0x8000, 0x8000, 0x100000,
     VTS_STATUS_SS_RAW_SUM4_NULL},
    {VTS_SS_ESTIMATE_CENTRAL_SUM2, 0, &task<Real>::centralSum2, 0x10001, 0x10003, 0x100000,
     VTS_STATUS_SS_CENTRAL_SUM2_NULL},
    {VTS_SS_ESTIMATE_CENTRAL_SUM3, 0, &task<Real>::centralSum3, 0x20001, 0x20007, 0x100000,
     VTS_STATUS_SS_CENTRAL_SUM3_NULL},
    {VTS_SS_ESTIMATE_CENTRAL_SUM4, 0, &task<Real>::centralSum4, 0x40001, 0x4000f, 0x100000,
     VTS_STATUS_SS_CENTRAL_SUM4_NULL},
    {0, VTS_SS_ESTIMATE_HIGH_CROSS, &task<Real>::cross, 0x80001, 0x80001, 0x100000, VTS_STATUS_SS_CROSS_NULL},
};

constexpr uint32_t passes = VTS_SS_METHOD_FAST | VTS_SS_METHOD_ONE_PASS | VTS_SS_METHOD_TWO_PASS;
constexpr uint32_t conversions = VTS_SS_METHOD_CROSS_TO_COV | VTS_SS_METHOD_SUMS_TO_MOMENTS;

method method_of(uint32_t bits) {
  if ((bits & passes) == 0) return method::convert;
  if ((bits & VTS_SS_METHOD_FAST) != 0) return method::fast;
  return (bits & VTS_SS_METHOD_ONE_PASS) != 0 ? method::one_pass : method::two_pass;
}

// The status of the first estimate that is demanded and has no field.
template <class Real>
int32_t first_missing(const task<Real>& task, uint32_t wanted) {
  for (int i = 0; i < estimates; ++i) {
    const auto& row = demand_rows<Real>[i];
    if ((wanted >> i & 1) != 0 && task.*row.field == nullptr) return row.missing;
  }
  return (wanted >> out_of_reach & 1) != 0 ? VTS_STATUS_SS_BAD_METHOD : 0;
}

}  // namespace

template <class Real>
int32_t check_demand(const task<Real>& task, uint32_t low, uint32_t high, uint32_t method_low, demand& r) {
  r = {0, method_of(method_low)};
  for (const auto& row : demand_rows<Real>)
    if ((low & row.low) != 0 || (high & row.high) != 0)
      r.wanted |= r.by == method::fast ? row.fast : r.by == method::convert ? row.convert : row.otherwise;
  const int32_t missing = first_missing(task, r.wanted);
  const bool reads = r.by != method::convert, no_count = task.observations == nullptr;
  const bool no_storage = task.dataStorage == nullptr;
  return first_status({
      {std::popcount(method_low & passes) > 1, VTS_STATUS_SS_BAD_METHOD},
      {(method_low & (passes | conversions)) == 0, VTS_STATUS_SS_BAD_METHOD},
      {missing != 0, missing},
      {reads && (no_count || task.n() <= 0), VTS_STATUS_SS_BAD_OBSERVATIONS},
      {reads && task.data == nullptr, VTS_STATUS_SS_DATA_NULL},
      {reads && no_storage, VTS_STATUS_SS_STORAGE_NULL},
      {reads && !no_storage && (task.integer(task.dataStorage) & (VTS_SS_ROWS | VTS_SS_COLUMNS)) == 0,
       VTS_STATUS_SS_BAD_STORAGE},
      {!reads && task.accumWeight == nullptr && (no_count || task.weights != nullptr),
       VTS_STATUS_SS_ACCUM_WEIGHT_NULL},
      {task.p() < 1, VTS_STATUS_SS_BAD_DIMENSION},
  });
}

template int32_t check_demand(const task<double>&, uint32_t, uint32_t, uint32_t, demand&);
template int32_t check_demand(const task<float>&, uint32_t, uint32_t, uint32_t, demand&);

}  // namespace tmk::stats
