// SPDX-License-Identifier: Apache-2.0
#include "tmk/abi/threading.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <atomic>
#include <cfenv>
#include <chrono>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "threading/shuffled_threads.hpp"

namespace {

// What workers saw, each call under a lock.
struct record {
  std::mutex lock;
  std::multiset<int32_t> items;
  std::set<int32_t> threads_out_of_range;
  std::vector<int32_t> section_order;
  std::vector<int32_t> thread_of_item = std::vector<int32_t>(64, -1);
  std::atomic<bool> busy[16] = {};
  std::atomic<bool> in_section = false;
  std::atomic<int> overlaps = 0;
  const ThreadingService* table = nullptr;
};

void note(int32_t item, int32_t thread, int32_t thread_count, record& r) {
  const std::lock_guard guard(r.lock);
  r.items.insert(item);
  r.thread_of_item[static_cast<size_t>(item)] = thread;
  if (thread < 0 || thread >= thread_count) r.threads_out_of_range.insert(thread);
}

// No two items may run under one thread index at the same time.
void watch_slices(int32_t item, int32_t thread, int32_t thread_count, void* context) {
  auto& r = *static_cast<record*>(context);
  if (r.busy[thread].exchange(true)) ++r.overlaps;
  note(item, thread, thread_count, r);
  std::this_thread::yield();
  r.busy[thread] = false;
}

void in_section(int32_t item, int32_t, int32_t, void* context) {
  auto& r = *static_cast<record*>(context);
  if (r.in_section.exchange(true)) ++r.overlaps;
  r.section_order.push_back(item);
  r.in_section = false;
}

// Early items are slow; every third has no section.
void with_sections(int32_t item, int32_t thread, int32_t thread_count, void* context) {
  auto& r = *static_cast<record*>(context);
  note(item, thread, thread_count, r);
  if (item % 5 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));
  if (item % 3 != 2) r.table->OrderedSection(item, thread, thread_count, context, in_section);
}

void expect_whole(const record& r, int32_t count) {
  EXPECT_EQ(r.items.size(), static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i) EXPECT_EQ(r.items.count(i), 1u);
  EXPECT_TRUE(r.threads_out_of_range.empty());
  EXPECT_EQ(r.overlaps, 0);
}

void expect_all_slots(const ThreadingService* table) {
  EXPECT_GE(table->MaxThreads(), 1);
  for (const int32_t threads : {1, 2, 3, 5, 16})
    for (const int32_t count : {0, 1, 2, 7, 61}) {
      record items, runs, ordered;
      items.table = runs.table = ordered.table = table;
      table->ParallelFor(count, threads, &items, watch_slices);
      expect_whole(items, count);
      table->ParallelRun(threads, &runs, [](int32_t run, int32_t slice, int32_t thread_count, void* context) {
        note(run, slice, thread_count, *static_cast<record*>(context));
      });
      expect_whole(runs, threads);
      table->ParallelForOrdered(count, threads, &ordered, with_sections);
      expect_whole(ordered, count);
      std::vector<int32_t> wanted;
      for (int32_t i = 0; i < count; ++i)
        if (i % 3 != 2) wanted.push_back(i);
      EXPECT_EQ(ordered.section_order, wanted);
    }
}

TEST(threading, serial_slots) { expect_all_slots(tmk_threading_serial()); }
TEST(threading, shuffled_slots) { expect_all_slots(tmk::tests::shuffled_threads(5)); }
TEST(threading, openmp_slots) { expect_all_slots(tmk_threading_openmp()); }

// Whatever team OpenMP delivers: none inside a region, or fewer than requested.
TEST(threading, openmp_slots_in_small_teams_and_side_by_side) {
#pragma omp parallel num_threads(2)
  expect_all_slots(tmk_threading_openmp());

  const int dynamic = omp_get_dynamic();
  omp_set_dynamic(1);
  expect_all_slots(tmk_threading_openmp());
  omp_set_dynamic(dynamic);

  std::vector<std::thread> callers;
  callers.reserve(3);
  for (int k = 0; k < 3; ++k) callers.emplace_back([] { expect_all_slots(tmk_threading_openmp()); });
  for (std::thread& t : callers) t.join();
}

TEST(threading, openmp_gives_items_to_threads_by_a_fixed_rule) {
  record first, second;
  tmk_threading_openmp()->ParallelFor(61, 4, &first, watch_slices);
  tmk_threading_openmp()->ParallelFor(61, 4, &second, watch_slices);
  EXPECT_EQ(first.thread_of_item, second.thread_of_item);
}

// A run inside a worker of an ordered run has an order of its own.
TEST(threading, openmp_ordered_runs_nest) {
  record outer;
  outer.table = tmk_threading_openmp();
  outer.table->ParallelForOrdered(9, 3, &outer,
                                  [](int32_t item, int32_t thread, int32_t threads, void* context) {
                                    auto& r = *static_cast<record*>(context);
                                    record inner;
                                    inner.table = r.table;
                                    inner.table->ParallelForOrdered(12, 2, &inner, with_sections);
                                    EXPECT_EQ(inner.section_order.size(), 8u);
                                    r.table->OrderedSection(item, thread, threads, context, in_section);
                                  });
  EXPECT_EQ(outer.section_order, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(threading, openmp_workers_have_the_callers_rounding_and_raise_its_flags) {
  std::fenv_t saved;
  std::fegetenv(&saved);
  std::fesetround(FE_UPWARD);
  std::feclearexcept(FE_ALL_EXCEPT);
  std::atomic<int> wrong = 0;
  tmk_threading_openmp()->ParallelRun(4, &wrong, [](int32_t thread, int32_t, int32_t, void* context) {
    if (std::fegetround() != FE_UPWARD) ++*static_cast<std::atomic<int>*>(context);
    volatile double zero = 0;
    if (thread == 3) {
      zero = 1 / zero;
      std::fesetround(FE_DOWNWARD);
    }
  });
  EXPECT_EQ(std::fegetround(), FE_UPWARD);
  EXPECT_EQ(std::fetestexcept(FE_DIVBYZERO | FE_INVALID), FE_DIVBYZERO);
  std::fesetenv(&saved);
  EXPECT_EQ(wrong, 0);
}

}  // namespace
