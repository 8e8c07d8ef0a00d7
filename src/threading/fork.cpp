// SPDX-License-Identifier: Apache-2.0
#include "threading/fork.hpp"

#include <pthread.h>

#include <atomic>

namespace tmk {

namespace {

constinit std::atomic<bool> forked = false;

}  // namespace

void watch_forks() {
  static const int watching = pthread_atfork(nullptr, nullptr, [] { forked = true; });
  static_cast<void>(watching);
}

bool in_forked_child() { return forked.load(std::memory_order_relaxed); }

}  // namespace tmk
