// SPDX-License-Identifier: Apache-2.0
// The table of run slots that stays in the caller's thread.
#include "tmk/abi/threading.h"

namespace {

// In the order of the items, which is also that of ordered sections.
void run_items(int32_t count, int32_t thread_count, void* context, TmkWorker worker) {
  for (int32_t item = 0; item < count; ++item) worker(item, 0, thread_count, context);
}

void run_threads(int32_t thread_count, void* context, TmkWorker worker) {
  for (int32_t thread = 0; thread < thread_count; ++thread) worker(thread, 0, thread_count, context);
}

void run_section(int32_t item, int32_t thread, int32_t thread_count, void* context, TmkWorker section) {
  section(item, thread, thread_count, context);
}

int32_t max_threads() { return 1; }

constexpr ThreadingService serial = {run_items, run_items, run_threads, run_section, max_threads};

}  // namespace

const ThreadingService* tmk_threading_serial() { return &serial; }
