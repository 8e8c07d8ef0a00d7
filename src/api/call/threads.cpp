// SPDX-License-Identifier: Apache-2.0
#include "api/call/threads.hpp"

#include <algorithm>
#include <cstdint>
#include <tmk/scopes.hpp>

#include "api/call/refuse.hpp"
#include "api/call/state.hpp"

namespace tmk {

namespace detail {

namespace {

// The least cost of a part that pays for a thread, in the unit of the cost records (about a clock cycle):
// waking a team of two and waiting for it takes 4 * 10^4 to 10^5 cycles.
constexpr float least_part_cost = 1 << 17;
constexpr std::size_t cache_line = 64;

int32_t allowed_threads() { return static_cast<int32_t>(state.threads); }

}  // namespace

int part_count(std::size_t n, float cost_per_element, int threads) {
  const float worth = static_cast<float>(n) * cost_per_element / least_part_cost;
  return worth < 2 ? 1 : static_cast<int>(std::min(worth, static_cast<float>(threads)));
}

std::size_t part_begin(const std::byte* result, std::size_t width, std::size_t n, int parts, int k) {
  if (k == parts) return n;
  const std::size_t even = n / parts * k;
  const std::size_t past_line = reinterpret_cast<std::uintptr_t>(result + even * width) % cache_line / width;
  return even - std::min(even, past_line);
}

int usable_threads(int threads) { return std::min(threads, static_cast<int>(tmk_threading_limit())); }

const ThreadingService* call_threads() {
  static const ThreadingService table = [] {
    ThreadingService pool = *tmk_threading_pool();
    pool.MaxThreads = allowed_threads;
    return pool;
  }();
  return state.threads == 1 ? tmk_threading_serial() : &table;
}

void run_parts(int parts, const std::function<void(int)>& part) {
  tmk_threading_pool()->ParallelRun(
      parts, const_cast<std::function<void(int)>*>(&part),
      [](int32_t k, int32_t, int32_t, void* p) { (*static_cast<const std::function<void(int)>*>(p))(k); });
}

}  // namespace detail

parallel_scope::parallel_scope(int threads) : previous_(detail::state.threads) {
  detail::refuse_below("parallel_scope", "threads", threads, 1);
  detail::state.threads = detail::usable_threads(threads);
}

parallel_scope::~parallel_scope() { detail::state.threads = previous_; }

}  // namespace tmk
