// SPDX-License-Identifier: Apache-2.0
// Means and covariances of groups of observations, and those pooled over all groups: with W_g and W2_g the
// sums of a group's weights and of their squares, m_g its mean and C_g its cross-product about it,
//   pooled mean = sum W_g m_g / sum W_g,   pooled covariance = sum C_g / sum (W_g - W2_g / W_g).
//
// Groups are items. The observations of one are gathered in blocks, which the one-pass moments fold together;
// pooled sums take the groups in their order.
#include <atomic>

#include "stats/moments/pack.hpp"
#include "stats/order/order.hpp"

namespace tmk::stats {
namespace {

template <class Real>
constexpr auto basic = _vtsdSSBasic;
template <>
constexpr auto basic<float> = _vtssSSBasic;

// What is requested.
struct wanted_groups {
  bool pooled_mean, pooled_cov, group_mean, group_cov;

  wanted_groups(uint32_t low, uint32_t high)
      : pooled_mean((high & VTS_SS_ESTIMATE_HIGH_POOLED_MEAN) != 0),
        pooled_cov((low & VTS_SS_ESTIMATE_POOLED_COV) != 0),
        group_mean((high & VTS_SS_ESTIMATE_HIGH_GROUP_MEAN) != 0),
        group_cov((low & VTS_SS_ESTIMATE_GROUP_COV) != 0) {}
  bool pooled() const { return pooled_mean || pooled_cov; }
  bool grouped() const { return group_mean || group_cov; }
};

// The moments of one group, and the block that it is read by: a thread's slice of scratch.
template <class Real>
struct group_sums {
  ptrdiff_t p, block;
  Real* memory;

  static size_t size(ptrdiff_t p, ptrdiff_t block) {
    return static_cast<size_t>(2 + p + p * p + block * (p + 1));
  }
  Real* weight() const { return memory; }  // their sum, and that of their squares
  Real* mean() const { return memory + 2; }
  Real* cross() const { return mean() + p; }
  Real* weights() const { return cross() + p * p; }
  Real* values() const { return weights() + block; }
  Real degrees() const { return weight()[0] - weight()[1] / weight()[0]; }
};

template <class Real>
struct groups_call {
  const task<Real>& t;
  wanted_groups wanted;
  const ThreadingService* threading;
  ptrdiff_t p, n, block;
  bool rows;
  const ptrdiff_t* first;  // of each group in `members`, and the count of all at the end
  const ptrdiff_t* members;
  Real* slices;
  Real *pooled_mean, *pooled_cross;  // sums over the groups
  Real pooled_weight = 0, pooled_degrees = 0;
  std::atomic<int32_t> status{0};

  group_sums<Real> sums_of_thread(int32_t thread) const {
    return {p, block, slices + static_cast<size_t>(thread) * group_sums<Real>::size(p, block)};
  }
  Real value(ptrdiff_t i, ptrdiff_t j) const { return rows ? t.data[j * n + i] : t.data[i * p + j]; }
};

// Observations first to last - 1 of `members`, one after the other.
template <class Real>
void gather(const groups_call<Real>& call, ptrdiff_t first, ptrdiff_t last, const group_sums<Real>& to) {
  for (ptrdiff_t k = first; k < last; ++k) {
    const ptrdiff_t i = call.members[k];
    if (call.t.weights != nullptr) to.weights()[k - first] = call.t.weights[i];
    Real* const r = to.values() + (k - first) * call.p;
    for (ptrdiff_t j = 0; j < call.p; ++j) r[j] = call.value(i, j);
  }
}

// Mean and cross-product of one group. 0 or a status.
template <class Real>
int32_t sum_group(const groups_call<Real>& call, int32_t group, const group_sums<Real>& sums) {
  constexpr int64_t columns = VTS_SS_COLUMNS;
  int64_t rows = 0;
  const int64_t p = call.p;
  task<Real> block{};
  block.wideIntegers = 1;
  block.dimension = &p;
  block.observations = &rows;
  block.dataStorage = &columns;
  block.data = sums.values();
  block.weights = call.t.weights != nullptr ? sums.weights() : nullptr;
  block.accumWeight = sums.weight();
  block.mean = sums.mean();
  block.cross = sums.cross();
  sums.weight()[0] = sums.weight()[1] = 0;
  const ptrdiff_t end = call.first[group + 1];
  for (ptrdiff_t from = call.first[group]; from < end; from += call.block) {
    const ptrdiff_t to = std::min(end, from + call.block);
    rows = to - from;
    gather(call, from, to, sums);
    const int32_t status = basic<Real>(block.handle(), VTS_SS_ESTIMATE_MEAN, VTS_SS_ESTIMATE_HIGH_CROSS,
                                       VTS_SS_METHOD_ONE_PASS, 0, tmk_threading_serial());
    if (status < 0) return status;
  }
  return 0;
}

template <class Real>
void write_group(const groups_call<Real>& call, int32_t group, const group_sums<Real>& sums) {
  const task<Real>& t = call.t;
  const auto selects = [&](ptrdiff_t j) { return t.selects(j); };
  const ptrdiff_t p = call.p;
  Real* const mean = t.groupMean + group * p;
  for (ptrdiff_t j = 0; j < p; ++j)
    if (selects(j)) mean[j] = sums.mean()[j];
  if (!call.wanted.group_cov) return;
  const int storage = matrix_storage(t, t.groupCovStorage);
  const Real factor = 1 / sums.degrees();
  pack(p, storage, t.groupCov + group * stored_size(storage, p), selects,
       [&](ptrdiff_t i, ptrdiff_t j) { return sums.cross()[i * p + j] * factor; });
}

// Of the pooled sums.
template <class Real>
void _vSSPldCovThreaderOrdered(int32_t, int32_t thread, int32_t, void* context) {
  auto& call = *static_cast<groups_call<Real>*>(context);
  const group_sums<Real> sums = call.sums_of_thread(thread);
  const Real weight = sums.weight()[0];
  for (ptrdiff_t j = 0; j < call.p; ++j) call.pooled_mean[j] += weight * sums.mean()[j];
  for (ptrdiff_t k = 0; call.wanted.pooled_cov && k < call.p * call.p; ++k)
    call.pooled_cross[k] += sums.cross()[k];
  call.pooled_weight += weight;
  call.pooled_degrees += sums.degrees();
}

template <class Real>
void _vSSPldCovThreader(int32_t group, int32_t thread, int32_t threads, void* context) {
  auto& call = *static_cast<groups_call<Real>*>(context);
  const group_sums<Real> sums = call.sums_of_thread(thread);
  if (const int32_t status = sum_group(call, group, sums); status < 0) return void(call.status = status);
  if (!(sums.weight()[0] != 0)) return;  // no observations, or none that count
  if (call.wanted.grouped() && call.t.integer(call.t.groupEnable, group) != 0) write_group(call, group, sums);
  if (call.wanted.pooled())
    call.threading->OrderedSection(group, thread, threads, context, _vSSPldCovThreaderOrdered<Real>);
}

template <class Real>
int32_t check(const task<Real>& t, const wanted_groups& wanted, uint32_t method) {
  const bool no_storage = t.dataStorage == nullptr;
  return first_status({
      {no_storage || !storage_is(t, t.dataStorage, VTS_SS_ROWS | VTS_SS_COLUMNS), VTS_STATUS_SS_BAD_STORAGE},
      {t.groupOfObservation == nullptr, VTS_STATUS_SS_GROUP_NULL},
      {wanted.pooled() && t.pooledMean == nullptr, VTS_STATUS_SS_POOLED_MEAN_NULL},
      {wanted.pooled_cov && t.pooledCovStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {wanted.pooled_cov && t.pooledCov == nullptr, VTS_STATUS_SS_POOLED_COV_NULL},
      {wanted.grouped() && t.groupEnable == nullptr, VTS_STATUS_SS_GROUP_NULL},
      {wanted.grouped() && t.groupMean == nullptr, VTS_STATUS_SS_GROUP_MEAN_NULL},
      {wanted.group_cov && t.groupCovStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL},
      {wanted.group_cov && t.groupCov == nullptr, VTS_STATUS_SS_GROUP_COV_NULL},
      {(method & VTS_SS_METHOD_ONE_PASS) == 0, VTS_STATUS_SS_BAD_METHOD},
      {t.p() < 1, VTS_STATUS_SS_BAD_DIMENSION},
      {t.observations == nullptr || t.n() < 1, VTS_STATUS_SS_BAD_OBSERVATIONS},
  });
}

// The count of groups, or a status.
template <class Real>
int64_t count_groups(const task<Real>& t) {
  int64_t most = -1;
  for (ptrdiff_t i = 0; i < t.n(); ++i) {
    const int64_t group = t.integer(t.groupOfObservation, i);
    if (group < 0 || group >= std::numeric_limits<int32_t>::max()) return VTS_STATUS_SS_BAD_GROUP;
    most = std::max(most, group);
  }
  for (ptrdiff_t g = 0; t.groupEnable != nullptr && g <= most; ++g)
    if (const int64_t enable = t.integer(t.groupEnable, g); enable != 0 && enable != 1)
      return VTS_STATUS_SS_BAD_GROUP;
  return most + 1;
}

// Sorts the observations by their groups, each group's in their order: where each group begins, and the
// members.
template <class Real>
void sort_by_group(const task<Real>& t, ptrdiff_t groups, ptrdiff_t* first, ptrdiff_t* members) {
  const auto n = static_cast<ptrdiff_t>(t.n());
  const auto group_of = [&](ptrdiff_t i) {
    return static_cast<ptrdiff_t>(t.integer(t.groupOfObservation, i));
  };
  std::fill_n(first, groups + 2, ptrdiff_t{0});
  ptrdiff_t* const next =
      first + 1;  // moves on to where the group ends, and becomes where the next one begins
  for (ptrdiff_t i = 0; i < n; ++i) ++next[group_of(i) + 1];
  for (ptrdiff_t g = 0; g < groups; ++g) next[g + 1] += next[g];
  for (ptrdiff_t i = 0; i < n; ++i) members[next[group_of(i)]++] = i;
}

template <class Real>
void write_pooled(const groups_call<Real>& call) {
  const task<Real>& t = call.t;
  const auto selects = [&](ptrdiff_t j) { return t.selects(j); };
  const Real share = 1 / call.pooled_weight, factor = 1 / call.pooled_degrees;
  for (ptrdiff_t j = 0; j < call.p; ++j)
    if (selects(j)) t.pooledMean[j] = call.pooled_mean[j] * share;
  if (call.wanted.pooled_cov)
    pack(call.p, matrix_storage(t, t.pooledCovStorage), t.pooledCov, selects,
         [&](ptrdiff_t i, ptrdiff_t j) { return call.pooled_cross[i * call.p + j] * factor; });
}

template <class Real>
int32_t pooled_covariance(SSTask* handle, uint32_t estimates_low, uint32_t estimates_high, uint32_t method,
                          const ThreadingService* threading) {
  const auto& t = task<Real>::of(handle);
  const wanted_groups wanted(estimates_low, estimates_high);
  if (const int32_t status = check(t, wanted, method); status != 0) return status;
  const int64_t groups = count_groups(t);
  if (groups < 0) return static_cast<int32_t>(groups);

  constexpr ptrdiff_t few_variables = 11, block_values = 1 << 15;
  const auto p = static_cast<ptrdiff_t>(t.p()), n = static_cast<ptrdiff_t>(t.n());
  const int32_t threads = p < few_variables ? 1 : threading->MaxThreads();
  const ptrdiff_t block = std::clamp<ptrdiff_t>(block_values / p, 1, n);
  const scratch<Real> slices(static_cast<size_t>(threads) * group_sums<Real>::size(p, block));
  const scratch<Real> pooled(static_cast<size_t>(p + p * p));
  const scratch<ptrdiff_t> first(static_cast<size_t>(groups) + 2), members(static_cast<size_t>(n));
  if (!slices || !pooled || !first || !members) return VTS_STATUS_SS_MEMORY;
  std::fill_n(pooled.get(), p + p * p, Real{0});
  sort_by_group(t, static_cast<ptrdiff_t>(groups), first.get(), members.get());

  groups_call<Real> call = {.t = t,
                            .wanted = wanted,
                            .threading = threading,
                            .p = p,
                            .n = n,
                            .block = block,
                            .rows = storage_is(t, t.dataStorage, VTS_SS_ROWS),
                            .first = first.get(),
                            .members = members.get(),
                            .slices = slices.get(),
                            .pooled_mean = pooled.get(),
                            .pooled_cross = pooled.get() + p};
  threading->ParallelForOrdered(static_cast<int32_t>(groups), threads, &call, _vSSPldCovThreader<Real>);
  if (call.status < 0) return call.status;
  if (wanted.pooled()) write_pooled(call);
  return 0;
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSPooledCovariance(SSTask* task, uint32_t estimatesLow, uint32_t estimatesHigh,
                                uint32_t methodLow, uint32_t, const ThreadingService* threading) {
  return tmk::stats::pooled_covariance<double>(task, estimatesLow, estimatesHigh, methodLow, threading);
}
int32_t _vtssSSPooledCovariance(SSTask* task, uint32_t estimatesLow, uint32_t estimatesHigh,
                                uint32_t methodLow, uint32_t, const ThreadingService* threading) {
  return tmk::stats::pooled_covariance<float>(task, estimatesLow, estimatesHigh, methodLow, threading);
}
