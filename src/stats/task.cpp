// SPDX-License-Identifier: Apache-2.0
// Tasks made and deleted.
#include "stats/task.hpp"

#include <new>

#include "tmk/abi/serv.h"

namespace tmk::stats {

namespace {

int64_t integer_at(const void* place, int32_t wide) {
  return wide != 0 ? *static_cast<const int64_t*>(place) : *static_cast<const int32_t*>(place);
}

bool positive(const void* place, int32_t wide) { return place != nullptr && integer_at(place, wide) > 0; }

int32_t check_data(const void* observations, const void* data_storage, int32_t wide) {
  if (data_storage == nullptr) return VTS_STATUS_SS_STORAGE_NULL;
  const int64_t storage = integer_at(data_storage, wide);
  if (storage != VTS_SS_ROWS && storage != VTS_SS_COLUMNS) return VTS_STATUS_SS_BAD_STORAGE;
  return positive(observations, wide) ? 0 : VTS_STATUS_SS_BAD_OBSERVATIONS;
}

template <class Real>
int32_t make(SSTask** place, const void* dimension, const void* observations, const void* data_storage,
             const Real* data, const Real* weights, const void* indices, int32_t wide) {
  if (!positive(dimension, wide)) return VTS_STATUS_SS_BAD_DIMENSION;
  if (data != nullptr)
    if (const int32_t status = check_data(observations, data_storage, wide)) return status;
  void* memory = tmk_serv_allocate(sizeof(task<Real>), 128);
  if (memory == nullptr) return VTS_STATUS_SS_MEMORY;
  auto* t = new (memory) task<Real>{};
  t->wideIntegers = wide;
  t->recordKind = 2;
  t->isDouble = sizeof(Real) == sizeof(double);
  t->dimension = dimension;
  t->observations = observations;
  t->dataStorage = data_storage;
  // One type of field for what is read and what is written: these two are only read.
  t->data = const_cast<Real*>(data);
  t->weights = const_cast<Real*>(weights);
  t->indices = indices;
  *place = t->handle();
  return 0;
}

}  // namespace

}  // namespace tmk::stats

#define TMK_SS_NEW(letter, Real)                                                                   \
  int32_t __vts##letter##SSNewTask(SSTask** task, const void* dimension, const void* observations, \
                                   const void* dataStorage, const Real* data, const Real* weights, \
                                   const void* indices, int32_t wideIntegers) {                    \
    return tmk::stats::make(task, dimension, observations, dataStorage, data, weights, indices,    \
                            wideIntegers);                                                         \
  }
TMK_SS_NEW(d, double)
TMK_SS_NEW(s, float)
#undef TMK_SS_NEW

int32_t __vtsSSDeleteTask(SSTask** task) {
  if (task == nullptr || *task == nullptr) return VTS_STATUS_SS_TASK_NULL;
  auto& t = tmk::stats::task<double>::of(*task);  // the record's layout does not depend on the precision
  tmk_serv_deallocate(t.savedMeans);
  tmk_serv_deallocate(t.keptSums.sums);
  for (int32_t i = 0; i < t.cleanupCount; ++i) t.cleanup(*task);
  tmk_serv_deallocate(*task);
  *task = nullptr;
  return 0;
}
