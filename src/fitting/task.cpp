// SPDX-License-Identifier: Apache-2.0
// Tasks made and deleted.
#include "fitting/task.hpp"

#include <new>

#include "fitting/fields.hpp"
#include "fitting/row_pointers.hpp"
#include "platform/checks.hpp"

namespace tmk::fitting {

namespace {

// When memory is missing, the record is left to DeleteTask.
template <class Real>
int32_t make(DFTask** place, int64_t nx, const Real* x, int64_t xhint, int64_t ny, const Real* y,
             int64_t yhint, uint32_t wide_ints) {
  const int32_t bad = first_status({{nx < 2, DF_STATUS_BAD_NX},
                                    {x == nullptr, DF_STATUS_NULL_X},
                                    {!is_partition_hint(xhint), DF_STATUS_BAD_XHINT},
                                    {ny != 0 && y == nullptr, DF_STATUS_NULL_Y},
                                    {ny == 0 && y != nullptr, DF_STATUS_BAD_NY},
                                    {!is_storage_hint(yhint), DF_STATUS_BAD_YHINT}});
  if (bad != 0) return bad;
  void* memory = tmk_serv_allocate(sizeof(task<Real>), 128);
  if (memory == nullptr) return DF_STATUS_NO_MEMORY;
  auto* t = new (memory) task<Real>{};
  *place = reinterpret_cast<DFTask*>(t);
  t->nx = nx;
  t->x = x;
  t->xhint = xhint;
  t->yhint = yhint;
  if (y != nullptr)
    if (const int32_t status = place_functions(*t, ny, y)) return status;
  t->ny = ny;
  t->wide_ints = wide_ints;
  t->tag = 4;
  t->precision = sizeof(Real) == sizeof(double) ? 1 : 0;
  t->dims = 1;
  // Of full size at once: a later edit can build the index without allocating.
  t->buckets = static_cast<bucket*>(tmk_serv_allocate(bucket_room * sizeof(bucket), 128));
  if (t->buckets == nullptr) return DF_STATUS_NO_MEMORY;
  if (xhint != DF_PARTITION_UNIFORM) build_bucket_index(*t);
  return 0;
}

}  // namespace

}  // namespace tmk::fitting

// The fields that the task owns are at the same place in both precisions.
int32_t tmk_df_kernel_DeleteTask(DFTask** task) {
  if (task == nullptr || *task == nullptr) return DF_STATUS_NULL_TASK;
  auto& t = tmk::fitting::task<double>::of(*task);
  tmk::fitting::free_rows(t.y_rows);
  tmk::fitting::free_rows(t.coeff_rows);
  tmk_serv_deallocate(t.buckets);
  tmk_serv_deallocate(&t);
  *task = nullptr;
  return 0;
}

#define TMK_DF_NEW(letter, Real)                                                                            \
  int32_t tmk_df_kernel_##letter##NewTask1D(DFTask** task, int64_t nx, const Real* x, int64_t xhint,        \
                                            int64_t ny, const Real* y, int64_t yhint, uint32_t wide_ints) { \
    return tmk::fitting::make(task, nx, x, xhint, ny, y, yhint, wide_ints);                                 \
  }
TMK_DF_NEW(d, double)
TMK_DF_NEW(s, float)
