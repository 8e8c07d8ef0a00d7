// SPDX-License-Identifier: Apache-2.0
// Threads and the process: forks, limits of memory, and counts of threads beyond reason.
#include <gtest/gtest.h>
#include <omp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numeric>
#include <thread>
#include <tmk/math.hpp>
#include <tmk/random.hpp>
#include <tmk/spline.hpp>
#include <tmk/stats.hpp>

#include "tmk/abi/threading.h"

namespace {

std::vector<double> ramp(std::size_t n) {
  std::vector<double> x(n);
  std::iota(x.begin(), x.end(), 1.0);
  for (double& value : x) value /= static_cast<double>(n);
  return x;
}

std::vector<double> items_of_the_table() {
  std::vector<double> seen(1000);
  tmk_threading_openmp()->ParallelFor(
      1000, 4, seen.data(),
      [](int32_t item, int32_t thread, int32_t, void* r) { static_cast<double*>(r)[item] = thread; });
  return seen;
}

std::vector<double> covariance(int threads) {
  const std::vector<double> x = ramp(std::size_t{20000} * 40);
  tmk::summary s = tmk::describe(tmk::matrix_view<const double>(x.data(), 20000, 40), {.threads = threads});
  const auto values = s.cov.values();
  return {values.begin(), values.end()};
}

struct computation {
  const char* name;
  std::function<std::vector<double>(int threads)> run;
};

const computation computations[] = {
    {"exp",
     [](int threads) {
       const tmk::parallel_scope scope(threads);
       std::vector<double> x = ramp(300000);
       tmk::exp(x, x);
       return x;
     }},
    {"fill_parallel",
     [](int threads) {
       tmk::stream g(tmk::generator::mcg59, 7u);
       std::vector<double> x(100000);
       tmk::fill_parallel(g, x, tmk::distribution::exponential{}, threads);
       return x;
     }},
    {"describe", covariance},
    {"spline",
     [](int threads) {
       const tmk::parallel_scope scope(threads);
       const std::vector<double> x = ramp(2000);
       std::vector<double> y(400000);
       tmk::spline::natural(x, x)(tmk::uniform(0.1, 0.9, y.size()), y);
       return y;
     }},
    {"the C table", [](int) { return items_of_the_table(); }},
};

// How a forked child ends that runs `child`, which has 30 seconds.
int status_of_child(const std::function<bool()>& child) {
  const pid_t pid = fork();
  if (pid == 0) {
    alarm(30);
    _exit(child() ? 0 : 1);
  }
  int status = -1;
  waitpid(pid, &status, 0);
  return status;
}

TEST(process, forked_children_compute_what_the_parent_did) {
  std::vector<std::vector<double>> wanted;
  for (const computation& c : computations) wanted.push_back(c.run(4));
  for (std::size_t k = 0; k < std::size(computations); ++k)
    EXPECT_EQ(status_of_child([&] { return computations[k].run(4) == wanted[k]; }), 0)
        << computations[k].name;
}

// A fork while other threads are in the pool leaves its lock in any state.
TEST(process, forks_amid_runs_do_not_hang) {
  std::atomic<bool> stop = false;
  std::thread other([&] {
    while (!stop) items_of_the_table();
  });
  for (int k = 0; k < 20; ++k)
    EXPECT_EQ(status_of_child([] { return items_of_the_table().size() == 1000; }), 0);
  stop = true;
  other.join();
}

std::ptrdiff_t threads_of_process() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST(process, counts_of_threads_have_a_cap) {
  const std::ptrdiff_t before = threads_of_process();
  for (const computation& c : computations) EXPECT_EQ(c.run(100000), c.run(1)) << c.name;
  std::atomic<int> runs = 0;
  tmk_threading_openmp()->ParallelRun(100000, &runs, [](int32_t, int32_t, int32_t, void* count) {
    ++*static_cast<std::atomic<int>*>(count);
  });
  EXPECT_EQ(runs, 100000);
  EXPECT_LE(tmk_threading_limit(), 4 * static_cast<int32_t>(std::thread::hardware_concurrency()));
  EXPECT_LE(tmk_threading_openmp()->MaxThreads(), tmk_threading_limit());
  EXPECT_LE(threads_of_process(), before + tmk_threading_limit() + omp_get_max_threads());
}

// In a process of its own, which has no threads yet and may be spoilt.
using process_death = testing::Test;

void run_with_room_for_two_stacks() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  rlimit stack, memory;
  getrlimit(RLIMIT_STACK, &stack);
  const rlim_t size = stack.rlim_cur == RLIM_INFINITY ? rlim_t{2} << 20 : stack.rlim_cur;
  getrlimit(RLIMIT_AS, &memory);
  memory.rlim_cur = pages * static_cast<rlim_t>(getpagesize()) + 5 * size / 2;
  setrlimit(RLIMIT_AS, &memory);
  const std::vector<double> seen = items_of_the_table();
  std::atomic<int> runs = 0;
  tmk_threading_openmp()->ParallelRun(
      2000, &runs, [](int32_t, int32_t, int32_t, void* count) { ++*static_cast<std::atomic<int>*>(count); });
  _exit(runs == 2000 && seen[999] == 3 ? 0 : 3);
}

TEST(process_death, fewer_threads_where_memory_ends) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer's own memory is above any limit";
#endif
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(run_with_room_for_two_stacks(), testing::ExitedWithCode(0), "");
}

}  // namespace
