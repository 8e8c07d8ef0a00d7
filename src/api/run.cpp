// One call: check, choose the kernel, and run it over the arrays, at once where nothing speaks against it.
//
// A call is cut into pieces when it is longer than a kernel counts, into parts when threads share it. Pieces
// are staged, their arguments copied to a small buffer first, when the kernel must not be shown the caller's
// array:
//   - the kernel may store to its input, and the caller's is const;
//   - the result takes the argument's place, and a scope shall see the argument of a bad element;
//   - a real argument of a complex function, since reports read elements of the result's width from it.
// No result depends on how a call is cut.
#include "api/run.hpp"

#include <algorithm>
#include <cstring>

#include "api/check.hpp"
#include "api/reports.hpp"
#include "api/rows.hpp"
#include "api/settings.hpp"
#include "api/state.hpp"
#include "api/threads.hpp"

namespace tmk::detail {

namespace {

constexpr std::size_t stage_size = 8192;

struct job {
  const row& f;
  VtmKernel kernel;
  operands whole;
  std::size_t n;
  bool stage_a, stage_b;
};

operands beginning_at(const row& f, const operands& o, std::size_t first) {
  const std::size_t a = first * f.a.width(), r = first * f.r.width();
  return {o.a + a, f.has_b ? o.b + a : nullptr, o.r + r, f.has_r2 ? o.r2 + r : nullptr, o.scalars};
}

// Calls piece(first, count) for the pieces of [first, last).
template <class Piece>
void for_each_piece(std::size_t first, std::size_t last, std::size_t longest, Piece piece) {
  for (std::size_t count; first < last; first += count) {
    count = std::min(last - first, longest);
    piece(first, static_cast<int32_t>(count));
  }
}

void run_piece(const job& j, const operands& o, std::size_t first, int32_t count, capture* watch) {
  if (watch != nullptr)
    watch->begin_piece(first, o.a);
  else if (first != 0)
    set_index_base(j.f, o.a, first);
  j.f.invoke(j.kernel, o, count);
}

void walk_staged(const job& j, std::size_t first, std::size_t last, capture* watch) {
  // Twice the size, since a report of a real argument reads twice as far.
  alignas(64) std::byte stage_a[2 * stage_size] = {}, stage_b[stage_size];
  const std::size_t width = j.f.a.width();
  for_each_piece(first, last, std::min(longest_piece, stage_size / width),
                 [&](std::size_t begin, int32_t count) {
                   operands o = beginning_at(j.f, j.whole, begin);
                   if (j.stage_a) o.a = static_cast<std::byte*>(std::memcpy(stage_a, o.a, count * width));
                   if (j.stage_b) o.b = static_cast<std::byte*>(std::memcpy(stage_b, o.b, count * width));
                   run_piece(j, o, begin, count, watch);
                 });
}

void walk(const job& j, std::size_t first, std::size_t last, capture* watch) {
  if (j.stage_a || j.stage_b)
    walk_staged(j, first, last, watch);
  else
    for_each_piece(first, last, longest_piece, [&](std::size_t begin, int32_t count) {
      run_piece(j, beginning_at(j.f, j.whole, begin), begin, count, watch);
    });
}

// The kernels' reports are kept and handed on, in order, when all elements are computed.
void run_watched(const job& j, int parts) {
  error_scope* const scope = state.scope;
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  const uint32_t error_mode = mode & VTM_ERRMODE_MASK;
  const bool keep = scope != nullptr || (error_mode != VTM_ERRMODE_NOERR && error_mode != VTM_ERRMODE_IGNORE);

  std::vector<part_reports> reports(parts);
  const auto begin = [&](int k) { return part_begin(j.whole.r, j.f.r.width(), j.n, parts, k); };
  const auto run_part = [&](int k) {
    capture watch(j.f, reports[k], mode, keep);
    walk(j, begin(k), begin(k + 1), &watch);
  };
  if (parts == 1)
    run_part(0);
  else
    run_parts(parts, run_part);

  for (const part_reports& part : reports) {
    if (part.out_of_memory) throw std::bad_alloc();
    if (part.last_status != 0 && (scope != nullptr || error_mode != VTM_ERRMODE_NOERR))
      tmk_vtm_kernel_SetErrStatus(part.last_status);
  }
  for (const part_reports& part : reports)
    for (const report& bad : part.kept)
      scope != nullptr ? hand_to_scope(*scope, j.f, j.whole, bad) : hand_to_channel(j.f, j.whole, bad);
}

}  // namespace

void run(const call& c) {
  const row& f = row_of(c.function, c.letter);
  const int slot = slot_of(f, c.level);
  check(f, c);
  if (c.a.size == 0) return;
  select_first_tier();

  const auto in = [](const array& x) { return static_cast<const std::byte*>(x.data); };
  const auto out = [&](const array& x) { return const_cast<std::byte*>(in(x)); };
  const operands whole{in(c.a), in(c.b), out(c.r), out(c.r2), c.scalars};
  const VtmKernel kernel = f.record->kernel[slot];
  const thread_state& thread = state;

  const bool watched = thread.scope != nullptr;
  const bool stores_to_input = f.restores_input && tmk_current_tier() == TMK_TIER_W7;
  const auto in_place = [&](const std::byte* x) { return x == whole.r || x == whole.r2; };
  const bool stage_a = in_place(whole.a) ? watched : stores_to_input || f.a.width() < f.r.width();
  if (!watched && thread.threads == 1 && c.a.size <= longest_piece && !stage_a) [[likely]]
    return f.invoke(kernel, whole, static_cast<int32_t>(c.a.size));

  const job j{f, kernel, whole, c.a.size, stage_a, watched && f.has_b && in_place(whole.b)};
  const int parts = part_count(j.n, f.cost->cost[slot], thread.threads);
  if (watched || parts > 1) return run_watched(j, parts);
  walk(j, 0, j.n, nullptr);
  if (j.n > longest_piece || stage_a) tmk_vtm_kernel_SetInterfInputVectorPointer(nullptr);
}

}  // namespace tmk::detail
