// SPDX-License-Identifier: Apache-2.0
// The set-up of a discrete law in its chunk: an alias table where the values that matter fit in, otherwise
// strips. A Law names the kind of its chunk, its parameters, and how they become a unimodal_law:
//   static constexpr chunk_kind kind;   struct parameters { ...; bool operator== };
//   static bool accepts(const parameters&);   static unimodal_law of(const parameters&);
#pragma once

#include <algorithm>
#include <bit>
#include <cstring>

#include "random/distributions/alias_table.hpp"
#include "random/distributions/candidates.hpp"
#include "random/distributions/kernel_calls.hpp"
#include "random/distributions/strip_table.hpp"

namespace tmk::rng {

template <class Law>
struct alignas(8) discrete_set_up {
  static constexpr chunk_kind kind = Law::kind;
  using parameters = typename Law::parameters;
  static bool accepts(const parameters& p) { return Law::accepts(p); }

  // The most that the chunk has room for.
  static constexpr int32_t room = bytes_of_kind(kind) / 8 * 8 - (sizeof(parameters) + 15) / 8 * 8;
  static constexpr int32_t most_cells = static_cast<int32_t>(std::bit_floor((room - 8u) / sizeof(double)));
  static constexpr int32_t most_strips =
      std::min(128, static_cast<int32_t>((room - sizeof(strip_frame)) / sizeof(double)) - 1);

  parameters of;
  int32_t few_values;  // the alias table is in use
  union {
    alias_table<most_cells> cells;
    strip_table<most_strips> strips;
  };

  explicit discrete_set_up(const parameters& p) {
    std::memset(static_cast<void*>(this), 0, sizeof(*this));
    of = p;
    const unimodal_law law = Law::of(p);
    few_values = fill_alias_table(law, most_cells, cells.bits, cells.least, cells.cells) ? 1 : 0;
    if (few_values == 0) fill_strip_table(law, most_strips, strips.frame, strips.cuts);
  }

  int uniforms() const { return few_values != 0 ? 1 : 2; }

  // At most a block.
  int32_t candidates(VtsStreamHandle stream, int32_t count, int32_t* r) const {
    if (few_values == 0) return candidates_of_strips(stream, count, r, strips.frame, strips.cuts);
    return variates_of_cells(stream, count, r, cells.bits, cells.least, cells.cells);
  }
};

template <class Law>
int32_t draw_discrete(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r,
                      const typename Law::parameters& p) {
  if (method != 0) return VTS_STATUS_BAD_METHOD;
  if (!Law::accepts(p)) return VTS_STATUS_BAD_ARGUMENT;
  if (n <= 0) return VTS_STATUS_OK;
  const kernel_scope scope(repair_ln<double>);
  const auto* set_up = attached_set_up<discrete_set_up<Law>>(stream, p);
  if (set_up == nullptr) return VTS_STATUS_NO_MEMORY;
  return fill_with_accepted(
      n, r, [=](int32_t count, int32_t* block) { return set_up->candidates(stream, count, block); });
}

// The accepted of `count` candidates.
template <class Law>
int32_t discrete_candidates(VtsStreamHandle stream, int32_t count, int32_t* r,
                            const typename Law::parameters& p) {
  if (!Law::accepts(p)) return VTS_STATUS_BAD_ARGUMENT;
  const kernel_scope scope(repair_ln<double>);
  const auto* set_up = attached_set_up<discrete_set_up<Law>>(stream, p);
  if (set_up == nullptr) return VTS_STATUS_NO_MEMORY;
  return candidates_in_blocks(
      count, r, [=](int32_t n, int32_t* block) { return set_up->candidates(stream, n, block); });
}

template <class Law>
int discrete_uniforms(const typename Law::parameters& p) {
  return discrete_set_up<Law>(p).uniforms();
}

}  // namespace tmk::rng
