// SPDX-License-Identifier: Apache-2.0
// Threads for tests: workers run one after the other, items in a seeded shuffled order under shuffled thread
// indices, so that results which depend on the order, or slices which overlap, show in every run.
#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "tmk/abi/threading.h"

namespace tmk::tests {

inline thread_local std::mt19937 shuffle_engine;
inline thread_local int32_t shuffled_max_threads = 1;

inline std::vector<int32_t> shuffled(int32_t count) {
  std::vector<int32_t> order(static_cast<std::size_t>(std::max(count, 0)));
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), shuffle_engine);
  return order;
}

inline int32_t random_thread(int32_t thread_count) {
  return static_cast<int32_t>(shuffle_engine() % static_cast<uint32_t>(thread_count));
}

// The table with its MaxThreads, for this thread and until the next call.
inline const ThreadingService* shuffled_threads(int32_t max_threads, uint32_t seed = 1) {
  static constexpr ThreadingService table = {
      [](int32_t count, int32_t thread_count, void* context, TmkWorker worker) {
        for (const int32_t item : shuffled(count))
          worker(item, random_thread(thread_count), thread_count, context);
      },
      // Sections are in the order of the items, so the items must start in that order.
      [](int32_t count, int32_t thread_count, void* context, TmkWorker worker) {
        for (int32_t item = 0; item < count; ++item)
          worker(item, random_thread(thread_count), thread_count, context);
      },
      [](int32_t thread_count, void* context, TmkWorker worker) {
        for (const int32_t thread : shuffled(thread_count)) worker(thread, 0, thread_count, context);
      },
      [](int32_t item, int32_t thread, int32_t thread_count, void* context, TmkWorker section) {
        section(item, thread, thread_count, context);
      },
      [] { return shuffled_max_threads; }};
  shuffle_engine.seed(seed);
  shuffled_max_threads = max_threads;
  return &table;
}

}  // namespace tmk::tests
