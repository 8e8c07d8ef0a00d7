// SPDX-License-Identifier: Apache-2.0
// The pool of threads. A thread sleeps in its slot until a caller takes it, and works for that caller until
// the run is over; so callers that run at the same time have separate teams. Threads are never joined: a
// process may end while they sleep.
//
// OpenMP's parallel regions would be shorter, but end the process when a thread cannot be made, wait for ever
// in a forked child, and spin for milliseconds on processors that others need.
#include "threading/team.hpp"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cfenv>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "threading/fork.hpp"
#include "threading/openmp_settings.hpp"

namespace tmk {

namespace {

thread_local bool in_team = false;

// Five microseconds or more, depending on the processor: a run often ends within them. A longer spin would
// occupy the processor that a thread which was just woken needs.
constexpr int spins = 256;

int32_t processors() {
  static const int32_t count = std::max(static_cast<int32_t>(std::thread::hardware_concurrency()), 1);
  return count;
}

// One run: what its members do, and their floating-point environment.
class team_run {
 public:
  team_run(void* context, team_member member) : context_(context), member_(member) {
    std::fegetenv(&callers_);
  }

  void run(int64_t member) {
    std::fenv_t own;
    std::fegetenv(&own);
    std::fesetenv(&callers_);
    in_team = true;
    member_(context_, member, size);
    in_team = false;
    raised_.fetch_or(std::fetestexcept(FE_ALL_EXCEPT), std::memory_order_relaxed);
    std::fesetenv(&own);
  }

  // Through flags that are set, not raised: a trap belongs to the operation, not here.
  void merge_flags() {
    const int raised = raised_.load(std::memory_order_relaxed);
    std::fexcept_t flags;
    std::fenv_t own;
    std::feholdexcept(&own);
    std::feraiseexcept(raised);
    std::fegetexceptflag(&flags, raised);
    std::fesetenv(&own);
    std::fesetexceptflag(&flags, raised);
  }

  int64_t size = 1;

 private:
  void* context_;
  team_member member_;
  std::fenv_t callers_;
  std::atomic<int> raised_ = 0;
};

struct alignas(64) slot {
  std::atomic<int32_t> busy = 0;
  std::atomic<bool> sleeps[2] = {};  // whoever waits for busy to be no longer 0, or 1
  team_run* work = nullptr;
  int64_t member = 0;
  slot* next = nullptr;  // among the idle, or in a team

  // std::atomic's own wait yields before it sleeps, which on a busy machine gives away whole slices of time.
  void wait_while(int32_t value, bool spin) {
    for (int k = 0; spin && k < spins; ++k) {
      if (busy.load(std::memory_order_acquire) != value) return;
      __builtin_ia32_pause();
    }
    sleeps[value] = true;
    while (busy == value) futex(FUTEX_WAIT_PRIVATE, value);
    sleeps[value] = false;
  }

  void set(int32_t value) {
    busy = value;
    if (sleeps[1 - value]) futex(FUTEX_WAKE_PRIVATE, 1);
  }

  void futex(int operation, int32_t argument) { syscall(SYS_futex, &busy, operation, argument, nullptr); }

  [[noreturn]] void serve() {
    for (bool spin = true;;) {
      wait_while(0, spin);
      spin = work->size <= processors();  // others need the processor otherwise
      work->run(member);
      set(0);
    }
  }
};

class pool {
 public:
  // A list of up to `count` slots.
  slot* take(int32_t count) {
    const std::lock_guard guard(lock_);
    slot* taken = nullptr;
    for (; count > 0; --count) {
      slot* const s = idle_ != nullptr ? std::exchange(idle_, idle_->next) : make();
      if (s == nullptr) break;
      s->next = taken;
      taken = s;
    }
    return taken;
  }

  void give_back(slot* taken) {
    const std::lock_guard guard(lock_);
    while (taken != nullptr) {
      slot* const next = std::exchange(taken->next, idle_);
      idle_ = std::exchange(taken, next);
    }
  }

 private:
  // Null when the pool is full, or the system has no more memory or threads.
  slot* make() {
    if (made_ == team_limit()) return nullptr;
    watch_forks();
    try {
      auto own = std::make_unique<slot>();
      std::thread([s = own.get()] { s->serve(); }).detach();
      ++made_;
      return own.release();
    } catch (const std::exception&) {
      return nullptr;
    }
  }

  std::mutex lock_;
  slot* idle_ = nullptr;
  int32_t made_ = 0;
};

constinit pool threads_of_process;

}  // namespace

int32_t team_limit() { return std::min(4 * processors(), openmp::thread_limit()); }

void run_team(int32_t threads, void* context, team_member member) {
  const bool alone = threads <= 1 || in_team || in_forked_child() || openmp::in_parallel();
  if (alone) return member(context, 0, 1);
  team_run work(context, member);
  slot* const team = threads_of_process.take(std::min(threads, team_limit()) - 1);
  for (slot* s = team; s != nullptr; s = s->next) s->member = work.size++;
  for (slot* s = team; s != nullptr; s = s->next) {
    s->work = &work;
    s->set(1);
  }
  work.run(0);
  for (slot* s = team; s != nullptr; s = s->next) s->wait_while(1, work.size <= processors());
  threads_of_process.give_back(team);
  work.merge_flags();
}

}  // namespace tmk
