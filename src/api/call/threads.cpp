// SPDX-License-Identifier: Apache-2.0
#include "api/call/threads.hpp"

#include <tmk/abi/threading.h>

#include <algorithm>

#include "api/call/check.hpp"
#include "api/call/state.hpp"

namespace tmk {

namespace detail {

namespace {

// What a part must cost to be worth a thread, in the unit of the cost records (about a clock cycle): to wake
// a team of two and wait for it takes 4 * 10^4 to 10^5 cycles.
constexpr float least_part_cost = 1 << 17;
constexpr std::size_t cache_line = 64;

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

void run_parts(int parts, const std::function<void(int)>& part) {
  tmk_threading_pool()->ParallelRun(
      parts, const_cast<std::function<void(int)>*>(&part),
      [](int32_t k, int32_t, int32_t, void* p) { (*static_cast<const std::function<void(int)>*>(p))(k); });
}

}  // namespace detail

parallel_scope::parallel_scope(int threads) : previous_(detail::state.threads) {
  if (threads < 1)
    detail::refuse("parallel_scope", "threads", std::to_string(threads),
                   "is " + std::to_string(threads) + ", want at least 1");
  detail::state.threads = detail::usable_threads(threads);
}

parallel_scope::~parallel_scope() { detail::state.threads = previous_; }

}  // namespace tmk
