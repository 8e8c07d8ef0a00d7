// The table of run slots on OpenMP's threads.
//
// Item i belongs to thread index i mod t of the t asked for. OpenMP may deliver a smaller team (nested
// regions, limits); member m of a team of s then stands in for the indices m, m + s, ... below t. Every
// member takes its items in ascending order, so the lowest item that has not passed its ordered section is
// always running.
#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cfenv>

#include "tmk/abi/threading.h"

namespace {

// The caller's floating-point controls hold in the team, and the flags raised there are raised for the
// caller.
class shared_environment {
 public:
  shared_environment() { std::fegetenv(&callers_); }

  template <class Work>
  void run(Work work) {
    std::fenv_t own;
    std::fegetenv(&own);
    std::fesetenv(&callers_);
    work();
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

 private:
  std::fenv_t callers_;
  std::atomic<int> raised_ = 0;
};

// member(m, s) on each of the s members of a team of at most `threads`.
template <class Member>
void run_team(int32_t threads, Member member) {
  if (threads <= 1) return member(int64_t{0}, int64_t{1});
  shared_environment environment;
#pragma omp parallel num_threads(threads)
  environment.run([&] { member(int64_t{omp_get_thread_num()}, int64_t{omp_get_num_threads()}); });
  environment.merge_flags();
}

template <class Item>
void run_items(int32_t count, int32_t threads, Item item) {
  run_team(std::min(count, threads), [&](int64_t member, int64_t team) {
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

// Whose turn it is in the innermost ordered run that this thread works for. Runs may nest and stand side by
// side, so each has its own.
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
    // A worker that had no section must not hold up those behind it.
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

int32_t max_threads() { return std::max(omp_get_max_threads(), 1); }

constexpr ThreadingService openmp = {parallel_for, parallel_for_ordered, parallel_run, ordered_section,
                                     max_threads};

}  // namespace

const ThreadingService* tmk_threading_openmp() { return &openmp; }
