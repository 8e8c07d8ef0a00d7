#include "api/threads.hpp"

#include <algorithm>
#include <cfenv>
#include <vector>

#include "api/check.hpp"
#include "api/state.hpp"

namespace tmk {

namespace detail {

namespace {

// What a part must cost to be worth a thread, in the unit of the cost records (about a clock cycle): opening
// and closing a parallel region takes some 10^4 cycles.
constexpr float least_part_cost = 1 << 16;
constexpr std::size_t cache_line = 64;

struct raised_flags {
  std::fexcept_t state;
  int which;
};

}  // namespace

int part_count(std::size_t n, float cost_per_element, int threads) {
  const float worth = static_cast<float>(n) * cost_per_element / least_part_cost;
  return worth < 2 ? 1 : static_cast<int>(std::min(worth, static_cast<float>(threads)));
}

std::size_t part_begin(const std::byte* result, std::size_t width, std::size_t n, int parts, int k) {
  if (k == parts) return n;
  const std::size_t even = n / parts * k;
  const std::size_t behind_line =
      reinterpret_cast<std::uintptr_t>(result + even * width) % cache_line / width;
  return even - std::min(even, behind_line);
}

void run_parts(int parts, const std::function<void(int)>& part) {
  std::fenv_t environment;
  std::fegetenv(&environment);
  std::vector<raised_flags> raised(parts);
#pragma omp parallel for num_threads(parts) schedule(static, 1)
  for (int k = 0; k < parts; ++k) {
    std::fenv_t own;
    std::fegetenv(&own);
    std::fesetenv(&environment);
    part(k);
    raised[k].which = std::fetestexcept(FE_ALL_EXCEPT);
    std::fegetexceptflag(&raised[k].state, FE_ALL_EXCEPT);
    std::fesetenv(&own);
  }
  for (const raised_flags& flags : raised) std::fesetexceptflag(&flags.state, flags.which);
}

}  // namespace detail

parallel_scope::parallel_scope(int threads) : previous_(detail::state.threads) {
  if (threads < 1)
    detail::refuse("parallel_scope", "threads", std::to_string(threads),
                   "is " + std::to_string(threads) + ", want at least 1");
  detail::state.threads = threads;
}

parallel_scope::~parallel_scope() { detail::state.threads = previous_; }

}  // namespace tmk
