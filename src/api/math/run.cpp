// SPDX-License-Identifier: Apache-2.0
// One call: check, choose the kernel, and run it over the arrays, in one piece where that is possible.
//
// A call is cut into pieces when it is longer than a kernel counts, into parts when threads share it. Pieces
// are staged, passed through small buffers, where elements do not follow one another, and where the result
// replaces the argument and a scope is to receive the argument of a bad element. No result depends on how a
// call is cut.
#include "api/math/run.hpp"

#include <algorithm>
#include <cstring>

#include "api/call/settings.hpp"
#include "api/call/state.hpp"
#include "api/call/threads.hpp"
#include "api/math/check.hpp"
#include "api/math/function_rows.hpp"
#include "api/math/reports.hpp"
#include "api/math/strided.hpp"
#include "vector/channel/error_channel.hpp"

namespace tmk::detail {

namespace {

constexpr std::size_t stage_size = 8192;

enum operand_place { place_a, place_b, place_r, place_r2, places };

struct job {
  const function_row& f;
  VtmKernel kernel;
  operands whole;
  std::size_t n;
  const strides* layout;  // by place, or null
  bool staged[places];

  const strides* layout_of(operand_place p) const { return layout == nullptr ? nullptr : layout + p; }
  bool any_staged() const { return std::ranges::find(staged, true) != std::end(staged); }
};

operands beginning_at(const function_row& f, const operands& o, std::size_t first) {
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
    watch->begin_piece(first);
  else if (first != 0)
    set_index_base(j.f, o.a, first);
  j.f.invoke(j.kernel, o, count);
}

// Room for a piece of one operand.
struct stage {
  alignas(64) std::byte bytes[stage_size];
};

void walk_staged(const job& j, std::size_t first, std::size_t last, capture* watch) {
  stage stages[places];
  const std::size_t width = j.f.a.width(), result_width = j.f.r.width();
  const auto fetch = [&](operand_place p, const std::byte* array, std::size_t begin, std::size_t count) {
    if (!j.staged[p]) return array + begin * width;
    const strides plain{1, j.n, 0, 1}, &s = j.layout == nullptr ? plain : j.layout[p];
    const bool one_value = s.row == 0 && s.col == 0;
    if (!one_value || begin == first) gather(stages[p].bytes, array, s, begin, count, width);
    return static_cast<const std::byte*>(stages[p].bytes);
  };
  const auto room = [&](operand_place p, std::byte* array, std::size_t begin) {
    return j.staged[p] ? stages[p].bytes : array + begin * result_width;
  };
  const std::size_t longest = std::min(longest_piece, stage_size / std::max(width, result_width));
  for_each_piece(first, last, longest, [&](std::size_t begin, int32_t count) {
    const auto n = static_cast<std::size_t>(count);
    operands o{fetch(place_a, j.whole.a, begin, n), j.f.has_b ? fetch(place_b, j.whole.b, begin, n) : nullptr,
               room(place_r, j.whole.r, begin), j.f.has_r2 ? room(place_r2, j.whole.r2, begin) : nullptr,
               j.whole.scalars};
    run_piece(j, o, begin, count, watch);
    if (j.staged[place_r]) scatter(j.whole.r, j.layout[place_r], begin, n, result_width, o.r);
    if (j.staged[place_r2]) scatter(j.whole.r2, j.layout[place_r2], begin, n, result_width, o.r2);
  });
}

std::size_t first_of_part(const job& j, int parts, int k) {
  return part_begin(j.whole.r, j.f.r.width(), j.n, parts, k);
}

void walk(const job& j, std::size_t first, std::size_t last, capture* watch) {
  if (j.any_staged())
    walk_staged(j, first, last, watch);
  else
    for_each_piece(first, last, longest_piece, [&](std::size_t begin, int32_t count) {
      run_piece(j, beginning_at(j.f, j.whole, begin), begin, count, watch);
    });
}

// Runs part(k) for each of the job's parts.
template <class Part>
void share(int parts, Part part) {
  parts == 1 ? part(0) : run_parts(parts, part);
}

// The kernels' reports are kept, and handed to the thread's scope in order when all elements are computed.
void run_watched(const job& j, int parts) {
  error_scope& scope = *state.scope;
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  std::vector<part_reports> reports(static_cast<std::size_t>(parts));
  share(parts, [&](int k) {
    part_channel channel(VTM_ERRMODE_CALLBACK, mode);
    capture watch(j.f, reports[k], scope.first_only());
    walk(j, first_of_part(j, parts, k), first_of_part(j, parts, k + 1), &watch);
    reports[k].statuses = channel.statuses();
  });
  bool out_of_memory = false;
  for (const part_reports& part : reports) {
    keep(part.statuses);
    out_of_memory |= part.out_of_memory;
  }
  if (out_of_memory) throw std::bad_alloc();
  for (const part_reports& part : reports)
    for (const report& bad : part.kept) {
      const auto result = [&](operand_place p, std::byte* array) {
        return array + element_offset(j.layout_of(p), bad.index) * static_cast<std::ptrdiff_t>(j.f.r.width());
      };
      hand_to_scope(scope, j.f, result(place_r, j.whole.r),
                    j.f.has_r2 ? result(place_r2, j.whole.r2) : nullptr, bad);
    }
}

// Without a scope or an observer of single reports: a thread hands on its statuses alone.
void run_in_parts(const job& j, int parts) {
  const uint32_t mode = tmk_vtm_kernel_GetMode();
  std::vector<reported_statuses> reports(static_cast<std::size_t>(parts));
  run_parts(parts, [&](int k) {
    const part_channel channel(VTM_ERRMODE_IGNORE, mode);
    walk(j, first_of_part(j, parts, k), first_of_part(j, parts, k + 1), nullptr);
    reports[k] = channel.statuses();
  });
  reported_statuses all;
  for (const reported_statuses& part : reports) all.add(part);
  if (all.last != 0) tmk_vtm_report_all(all.last, all.seen);
}

}  // namespace

void run(const call& c) {
  const function_row& f = function_row_of(c.function, c.letter);
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
  if (!watched && thread.threads == 1 && c.a.size <= longest_piece && c.layout == nullptr) [[likely]]
    return f.invoke(kernel, whole, static_cast<int32_t>(c.a.size));

  job j{f, kernel, whole, c.a.size, c.layout, {}};
  const bool present[places] = {true, f.has_b, true, f.has_r2};
  for (const operand_place p : {place_a, place_b, place_r, place_r2})
    j.staged[p] = present[p] && c.layout != nullptr && !is_plain(c.layout[p]);
  const auto in_place = [&](const std::byte* x) { return x == whole.r || x == whole.r2; };
  j.staged[place_a] |= watched && in_place(whole.a);
  j.staged[place_b] |= watched && f.has_b && in_place(whole.b);
  const int parts = part_count(j.n, f.cost->cost[slot], thread.threads);
  if (watched) return run_watched(j, parts);
  // A C callback runs on this thread, in order, for each report when its kernel makes it.
  if (parts > 1 && tmk_vtm_reports_are_observed() == 0) return run_in_parts(j, parts);
  walk(j, 0, j.n, nullptr);
  tmk_vtm_kernel_SetInterfInputVectorPointer(nullptr);
}

}  // namespace tmk::detail
