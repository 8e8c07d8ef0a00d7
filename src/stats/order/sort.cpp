// SPDX-License-Identifier: Apache-2.0
// Each selected variable sorted, one to an item. Values that are not contiguous in the output are sorted in
// scratch.
#include <algorithm>

#include "stats/order/order.hpp"

namespace tmk::stats {
namespace {

template <class Real>
struct sort_call {
  const task<Real>& t;
  Real* workspace;
  const int32_t* variables;
};

template <class Real>
void _vSSSortThreader(int32_t item, int32_t thread, int32_t, void* context) {
  const auto& call = *static_cast<const sort_call<Real>*>(context);
  const task<Real>& t = call.t;
  const ptrdiff_t p = t.p(), n = t.n(), j = call.variables[item];
  const bool rows = storage_is(t, t.sortedStorage, VTS_SS_ROWS);
  const variable<Real> in(t.data, storage_is(t, t.dataStorage, VTS_SS_ROWS), j, p, n);
  const variable<Real> out(t.sorted, rows, j, p, n);
  Real* const mine = call.workspace + thread * (rows ? n : 2 * n);
  if (rows) {
    if (t.sorted != t.data) copy(in, out, n);
    sort_values(out.first, mine, n);
  } else {
    const variable<Real> gathered(mine, true, 0, 1, n);
    copy(in, gathered, n);
    sort_values(mine, mine + n, n);
    copy(gathered, out, n);
  }
}

template <class Real>
int32_t sort(SSTask* handle, uint32_t method, const ThreadingService* threading) {
  const auto& t = task<Real>::of(handle);
  int32_t status = first_status({{t.sorted == nullptr, VTS_STATUS_SS_SORTED_NULL},
                                 {t.sortedStorage == nullptr, VTS_STATUS_SS_STORAGE_NULL}});
  if (status != 0) return status;
  const bool in_place = t.sorted == t.data;
  const bool rows = storage_is(t, t.sortedStorage, VTS_SS_ROWS);
  constexpr int64_t any_storage = VTS_SS_ROWS | VTS_SS_COLUMNS;
  status = first_status({
      {in_place && storage_is(t, t.dataStorage, VTS_SS_ROWS) != rows, VTS_STATUS_SS_STORAGE_NULL},
      {in_place && t.indices != nullptr, VTS_STATUS_SS_SORT_INDICES_IN_PLACE},
      {!storage_is(t, t.dataStorage, any_storage) || !storage_is(t, t.sortedStorage, any_storage),
       VTS_STATUS_SS_BAD_STORAGE},
      {(method & VTS_SS_METHOD_RADIX_SORT) == 0, VTS_STATUS_SS_BAD_METHOD},
  });
  if (status == 0) status = counts_status(t);
  if (status != 0) return status;

  // At most a gigabyte of scratch for each thread that the caller allows, divided among as many threads as it
  // suffices for.
  const int64_t p = t.p(), per_thread = t.n() * (rows ? 1 : 2), most = threading->MaxThreads();
  const int64_t affordable =
      (most << 30) / std::max<int64_t>(1, per_thread * static_cast<int64_t>(sizeof(Real)));
  const auto threads = static_cast<int32_t>(std::max<int64_t>(1, std::min({most, p, affordable})));
  const scratch<Real> workspace(static_cast<size_t>(per_thread) * static_cast<size_t>(threads));
  const scratch<int32_t> variables(static_cast<size_t>(p));
  if (!workspace || !variables) return VTS_STATUS_SS_MEMORY;
  sort_call<Real> call = {t, workspace.get(), variables.get()};
  threading->ParallelFor(list_selected(t, variables.get()), threads, &call, _vSSSortThreader<Real>);
  return 0;
}

}  // namespace
}  // namespace tmk::stats

int32_t _vtsdSSSort(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                    const ThreadingService* threading) {
  return tmk::stats::sort<double>(task, methodLow, threading);
}
int32_t _vtssSSSort(SSTask* task, uint32_t, uint32_t, uint32_t methodLow, uint32_t,
                    const ThreadingService* threading) {
  return tmk::stats::sort<float>(task, methodLow, threading);
}
