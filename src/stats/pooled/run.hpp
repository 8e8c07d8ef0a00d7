// SPDX-License-Identifier: Apache-2.0
// Computations of the statistics task over a block, and work shared among the threads of a table.
#pragma once

#include <algorithm>
#include <atomic>
#include <memory>

#include "platform/guarded.hpp"
#include "stats/pooled/data.hpp"

namespace tmk::stats::pooled {

struct delete_task {
  void operator()(SSTask* task) const { __vtsSSDeleteTask(&task); }
};
using task_handle = std::unique_ptr<SSTask, delete_task>;

// Values in double, variable by variable. Counts are read through the pointers at each computation.
inline task_handle new_task(const int32_t* p, const int32_t* n, const double* x, const double* weights) {
  static constexpr int32_t storage = VTS_SS_ROWS;
  SSTask* task = nullptr;
  require(__vtsdSSNewTask(&task, p, n, &storage, x, weights, nullptr, 0));
  return task_handle(task);
}

// How many threads of the table can be of use for `count` items, at least 1.
inline size_t worker_count(const ThreadingService* threading, size_t count) {
  return std::clamp<size_t>(count, 1, static_cast<size_t>(std::max(threading->MaxThreads(), 1)));
}

// Runs item(k, worker) for each k below `count`, with worker below `workers`. A free worker takes the next
// item, since threads of a busy machine do not get equal time. Throws the status of an item that failed.
template <class Item>
void for_each_item(const ThreadingService* threading, size_t workers, size_t count, const Item& item) {
  std::atomic<size_t> next = 0;
  std::atomic<int32_t> failure = 0;
  const auto work = [&](size_t worker) {
    const int32_t status = guarded(VTS_STATUS_SS_MEMORY, [&] {
      for (size_t k; failure == 0 && (k = next++) < count;) item(k, worker);
      return 0;
    });
    if (status < 0) failure = status;
  };
  if (workers == 1)
    work(0);
  else
    threading->ParallelRun(static_cast<int32_t>(workers), const_cast<void*>(static_cast<const void*>(&work)),
                           [](int32_t worker, int32_t, int32_t, void* context) {
                             (*static_cast<const decltype(work)*>(context))(static_cast<size_t>(worker));
                           });
  require(failure);
}

}  // namespace tmk::stats::pooled
