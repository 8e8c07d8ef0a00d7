// SPDX-License-Identifier: Apache-2.0
// The table of run slots on the library's own threads.
//
// Item i belongs to thread index i mod t of the t that are requested. A team may be smaller (nested runs,
// limits); member m of a team of s then works for the indices m, m + s, ... below t. Every member takes its
// items in ascending order, so the lowest item that has not passed its ordered section is always running.
#include <algorithm>
#include <atomic>

#include "threading/openmp_settings.hpp"
#include "threading/team.hpp"
#include "tmk/abi/threading.h"

namespace {

using tmk::run_team;

// member(m, s) on each of the s members of a team of at most `threads`.
template <class Member>
void run_members(int32_t threads, Member member) {
  run_team(threads, &member,
           [](void* context, int64_t m, int64_t size) { (*static_cast<Member*>(context))(m, size); });
}

template <class Item>
void run_items(int32_t count, int32_t threads, Item item) {
  run_members(std::min(count, threads), [&](int64_t member, int64_t team) {
    for (int64_t first = 0; first < count; first += threads)
      for (int64_t k = member; k < threads && first + k < count; k += team)
        item(static_cast<int32_t>(first + k), static_cast<int32_t>(k));
  });
}

void parallel_for(int32_t count, int32_t thread_count, void* context, TmkWorker worker) {
  run_items(count, thread_count,
            [&](int32_t item, int32_t thread) { worker(item, thread, thread_count, context); });
}

void parallel_run(int32_t thread_count, void* context, TmkWorker worker) {
  run_items(thread_count, thread_count,
            [&](int32_t thread, int32_t) { worker(thread, 0, thread_count, context); });
}

// Whose turn it is in the innermost ordered run that this thread works for. Runs may nest, and several
// callers may run at once, so each run has its own.
using turn = std::atomic<int32_t>;
thread_local turn* turn_of_run = nullptr;

void wait_for(turn& next, int32_t item) {
  for (int32_t seen; (seen = next.load(std::memory_order_acquire)) < item;) next.wait(seen);
}

void pass(turn& next, int32_t item) {
  next.store(item + 1, std::memory_order_release);
  next.notify_all();
}

void parallel_for_ordered(int32_t count, int32_t thread_count, void* context, TmkWorker worker) {
  turn next = 0;
  run_items(count, thread_count, [&](int32_t item, int32_t thread) {
    turn* const outer = turn_of_run;
    turn_of_run = &next;
    worker(item, thread, thread_count, context);
    turn_of_run = outer;
    // A worker that had no section must not hold up the items after it.
    wait_for(next, item);
    if (next.load(std::memory_order_relaxed) == item) pass(next, item);
  });
}

void ordered_section(int32_t item, int32_t thread, int32_t thread_count, void* context, TmkWorker section) {
  if (turn_of_run == nullptr) return section(item, thread, thread_count, context);
  turn& next = *turn_of_run;
  wait_for(next, item);
  section(item, thread, thread_count, context);
  pass(next, item);
}

int32_t max_threads() { return std::min(tmk::openmp::max_threads(), tmk::team_limit()); }

constexpr ThreadingService pool = {parallel_for, parallel_for_ordered, parallel_run, ordered_section,
                                   max_threads};

}  // namespace

const ThreadingService* tmk_threading_pool() { return &pool; }

const ThreadingService* tmk_threading_openmp() { return &pool; }

int32_t tmk_threading_limit() { return tmk::team_limit(); }
