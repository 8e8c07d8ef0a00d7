// SPDX-License-Identifier: Apache-2.0
// Gather and scatter. The spread array is accessed by stride, mask or index, the dense one from its
// beginning.
#include <algorithm>
#include <cstring>
#include <limits>

#include "api/call/refuse.hpp"
#include "api/math/function_rows.hpp"
#include "api/math/run.hpp"

namespace tmk::detail {

namespace {

using by_stride = void (*)(int64_t, const void*, int64_t, void*, int32_t);
using to_stride = void (*)(int64_t, const void*, void*, int64_t, int32_t);
using by_entries = void (*)(int64_t, const void*, const void*, void*, int32_t);
using to_entries = void (*)(int64_t, const void*, void*, const void*, int32_t);

enum class way { stride, mask, index };

struct kind {
  const char* name;
  way walk;
  bool scatters;
};

constexpr kind kinds[] = {{"pack_strided", way::stride, false}, {"pack_masked", way::mask, false},
                          {"pack_indexed", way::index, false},  {"unpack_strided", way::stride, true},
                          {"unpack_masked", way::mask, true},   {"unpack_indexed", way::index, true}};

constexpr const kind& kind_of(stem function) {
  return kinds[static_cast<int>(function) - static_cast<int>(stem::PackI)];
}

std::int64_t entry(const movement& m, std::size_t i) {
  return m.wide ? static_cast<const std::int64_t*>(m.entries.data)[i]
                : static_cast<const std::int32_t*>(m.entries.data)[i];
}

std::byte* at(const array& x, std::size_t i, std::size_t width) {
  return const_cast<std::byte*>(static_cast<const std::byte*>(x.data)) + i * width;
}

// A movement with its arrays by their roles.
struct plan {
  const movement& m;
  const kind& k;
  const function_row& f;
  std::size_t width;
  operand dense, spread, entries;
};

plan plan_of(const movement& m) {
  const kind& k = kind_of(m.function);
  const function_row& f = function_row_of(m.function, m.letter);
  const std::size_t width = f.a.width();
  const operand a{"a", m.a, width}, y{"y", m.y, width};
  const operand entries{k.walk == way::mask ? "mask" : "index", m.entries, m.wide ? 8u : 4u};
  return {m, k, f, width, k.scatters ? a : y, k.scatters ? y : a, entries};
}

[[noreturn]] void refuse_size(const plan& p, const operand& o, std::size_t size, const std::string& want) {
  refuse(p.k.name, o.name, std::to_string(size), "has size " + std::to_string(size) + ", want " + want);
}

void check_arrays(const plan& p) {
  const operand a{"a", p.m.a, p.width}, y{"y", p.m.y, p.width};
  check_data(p.k.name, a);
  check_data(p.k.name, y);
  check_data(p.k.name, p.entries);
  check_overlap(p.k.name, y, a, false);
  check_overlap(p.k.name, y, p.entries, false);
}

std::size_t move_strided(const plan& p) {
  const std::size_t n = p.dense.values.size, size = p.spread.values.size;
  if (n == 0) return 0;
  const std::uint64_t step = p.m.stride < 0 ? -static_cast<std::uint64_t>(p.m.stride) : p.m.stride;
  // (n - 1) step < size, without a product that may overflow
  if (size == 0 || (n > 1 && step > (size - 1) / (n - 1)))
    refuse(p.k.name, "stride", std::to_string(p.m.stride),
           "is " + std::to_string(p.m.stride) + ", which leads " + std::to_string(n) + " elements out of " +
               p.spread.name + " of size " + std::to_string(size));
  // A negative stride walks towards the beginning, from as far as it leads.
  const std::size_t start = p.m.stride < 0 ? (n - 1) * static_cast<std::size_t>(step) : 0;
  std::byte* const spread = at(p.spread.values, start, p.width);
  const VtmKernel kernel = p.f.record->kernel[TMK_SLOT_HA];
  const auto count = static_cast<std::int64_t>(n);
  if (p.k.scatters)
    reinterpret_cast<to_stride>(kernel)(count, p.dense.values.data, spread, p.m.stride, 0);
  else
    reinterpret_cast<by_stride>(kernel)(count, spread, p.m.stride, at(p.dense.values, 0, p.width), 0);
  return n;
}

// One kernel call over entries [first, first + count); the arrays begin where the kernel shall begin.
void move_entries(const plan& p, std::size_t first, std::size_t count, std::byte* dense, std::byte* spread) {
  const VtmKernel kernel = p.f.record->kernel[TMK_SLOT_HA];
  const void* entries = at(p.m.entries, first, p.entries.width);
  const auto n = static_cast<std::int64_t>(count);
  const std::int32_t narrow = p.m.wide ? 0 : 1;
  if (p.k.scatters)
    reinterpret_cast<to_entries>(kernel)(n, dense, spread, entries, narrow);
  else
    reinterpret_cast<by_entries>(kernel)(n, spread, entries, dense, narrow);
}

// Entries of 32 bits come with counts of 32 bits.
std::size_t longest_run(const plan& p) {
  return p.m.wide ? std::numeric_limits<std::size_t>::max() : longest_piece;
}

std::size_t move_masked(const plan& p) {
  const std::size_t n = p.m.entries.size;
  if (n != p.spread.values.size) refuse_size(p, p.entries, n, std::to_string(p.spread.values.size));
  std::size_t total = 0;
  for (std::size_t i = 0; i < n; ++i) total += entry(p.m, i) != 0;
  if (total > p.dense.values.size)
    refuse_size(p, p.dense, p.dense.values.size, "at least " + std::to_string(total));

  std::size_t moved = 0;
  for (std::size_t first = 0, count; first < n; first += count) {
    count = std::min(n - first, longest_run(p));
    move_entries(p, first, count, at(p.dense.values, moved, p.width), at(p.spread.values, first, p.width));
    for (std::size_t i = first; i < first + count; ++i) moved += entry(p.m, i) != 0;
  }
  return total;
}

std::size_t move_indexed(const plan& p) {
  const std::size_t n = p.m.entries.size;
  if (n != p.dense.values.size) refuse_size(p, p.entries, n, std::to_string(p.dense.values.size));
  std::int64_t largest = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const std::int64_t place = entry(p.m, i);
    if (place < 0 || static_cast<std::uint64_t>(place) >= p.spread.values.size) {
      const std::string value = std::to_string(place);
      refuse(
          p.k.name, "index[" + std::to_string(i) + "]", value,
          "is " + value + ", want 0 to " + p.spread.name + "'s size " + std::to_string(p.spread.values.size));
    }
    largest = std::max(largest, place);
  }

  // Kernels use the low 32 bits of an index, with their sign.
  if (largest > std::numeric_limits<std::int32_t>::max()) {
    for (std::size_t i = 0; i < n; ++i) {
      std::byte* const dense = at(p.dense.values, i, p.width);
      std::byte* const spread = at(p.spread.values, static_cast<std::size_t>(entry(p.m, i)), p.width);
      std::memcpy(p.k.scatters ? spread : dense, p.k.scatters ? dense : spread, p.width);
    }
    return n;
  }
  for (std::size_t first = 0, count; first < n; first += count) {
    count = std::min(n - first, longest_run(p));
    move_entries(p, first, count, at(p.dense.values, first, p.width), at(p.spread.values, 0, p.width));
  }
  return n;
}

}  // namespace

std::size_t run(const movement& m) {
  const plan p = plan_of(m);
  check_arrays(p);
  switch (p.k.walk) {
    case way::stride:
      return move_strided(p);
    case way::mask:
      return move_masked(p);
    default:
      return move_indexed(p);
  }
}

}  // namespace tmk::detail
