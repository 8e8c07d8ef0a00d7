// SPDX-License-Identifier: Apache-2.0
// A fitting task that frees itself, and whose statuses are thrown.
#pragma once

#include <memory>

#include "fitting/textbook/partition.hpp"
#include "platform/by_precision.hpp"
#include "platform/guarded.hpp"
#include "tmk/abi/df.h"

namespace tmk::fitting::textbook {

struct delete_task {
  void operator()(DFTask* task) const { tmk_df_kernel_DeleteTask(&task); }
};

template <class Real>
class owned_task {
 public:
  owned_task() = default;

  // Over a partition; functions are set later. A task that is not searched needs no index of its points: an
  // even partition has none, so the task is made as over an even partition and its hint is edited afterwards.
  owned_task(const partition<Real>& p, bool searched) {
    const bool indexed = searched && !p.even;
    DFTask* task = nullptr;
    const int32_t status = by_precision<Real>(tmk_df_kernel_dNewTask1D, tmk_df_kernel_sNewTask1D)(
        &task, static_cast<int64_t>(p.points), p.x, indexed ? DF_PARTITION_NON_UNIFORM : DF_PARTITION_UNIFORM,
        0, nullptr, 0, 0);
    task_.reset(task);
    require(status);
    if (!searched && !p.even) set(DF_XHINT, DF_PARTITION_UNKNOWN);
  }

  DFTask* get() const { return task_.get(); }

  void set(int64_t attribute, int64_t value) { require(tmk_df_kernel_iEditVal(get(), attribute, value)); }
  void set(int64_t attribute, const Real* pointer) {
    require(by_precision<Real>(tmk_df_kernel_dEditPtr, tmk_df_kernel_sEditPtr)(get(), attribute, pointer));
  }
  // The spline's order and type, conditions and coefficients.
  void describe(int64_t order, int64_t type, int64_t ends, const Real* end_values, int64_t inner_type,
                const Real* inner, Real* coefficients) {
    require(by_precision<Real>(tmk_df_kernel_dEditPPSpline1D, tmk_df_kernel_sEditPPSpline1D)(
        get(), order, type, ends, end_values, inner_type, inner, coefficients, 0));
  }

 private:
  std::unique_ptr<DFTask, delete_task> task_;
};

}  // namespace tmk::fitting::textbook
