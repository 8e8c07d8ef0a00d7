// SPDX-License-Identifier: Apache-2.0
// The life of a vector kernel, as templates over a small description:
//
//   struct single_exp_ha {
//     using real = float;
//     static constexpr char name[] = "vsExp";                         // as reports carry it
//     static constexpr auto controls = control_class::a;
//     static constexpr int group = 8;                                 // elements looked at together
//     static constexpr float filler = 0.75f;                          // masked walk: harmless for fast()
//     static lane_mask<real> flagged(const f32& x, const f32& y);     // lanes that fast() does not serve
//     static f32 fast(const f32& x);
//     static int32_t rare(const float* a, float* r);                  // any element; returns its status
//   };
//   TMK_DEFINE_KERNEL(s, Exp, HAynn, run_blocks<single_exp_ha>)
//
// An element's result does not depend on where in the array it stands, nor on how a caller cuts the array:
// rare() gives an element that fast() serves the same bits.
//
// The walks are flattened: whatever fast() calls is compiled into the loop.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/controls.hpp"
#include "simd/batch.hpp"
#include "vector/channel/error_channel.hpp"
#include "vector/registry/shapes.h"

#define TMK_KERNEL_NAME_(letter, stem, tier, tag) tmk_vtm_kernel_##letter##stem##_##tier##tag
#define TMK_KERNEL_NAME(letter, stem, tier, tag) TMK_KERNEL_NAME_(letter, stem, tier, tag)

// Gives the walk of a description its kernel name in this tier.
#define TMK_DEFINE_KERNEL(letter, stem, tag, ...)                                                        \
  extern "C" void TMK_KERNEL_NAME(letter, stem, TMK_TIER, tag)(int32_t n, const TMK_ELEMENT_##letter* a, \
                                                               TMK_ELEMENT_##letter* r) {                \
    using namespace tmk;                                                                                 \
    __VA_ARGS__(n, a, r);                                                                                \
  }

TMK_TIER_OPEN

enum class level { la, ha, ep };

// One element by the slow path: the result is stored before the report, which may replace it.
template <class Kernel>
[[gnu::noinline]] void rare_element(const typename Kernel::real* a, typename Kernel::real* r, int32_t i,
                                    error_channel& errors) {
  typename Kernel::real result;
  const int32_t status = Kernel::rare(a + i, &result);
  r[i] = result;
  if (status != 0) [[unlikely]]
    errors.report(status, i, a, a, r, r);
}

// A kernel may leave the SSE side to its own needs; by default the thread's mode decides.
template <class Kernel>
constexpr sse_control sse_of() {
  if constexpr (requires { Kernel::sse; })
    return Kernel::sse;
  else
    return sse_control::by_mode;
}

// One register of elements, the first `valid` lanes of it, some flagged: these in order, stored, reported and
// read back, since a report may replace them. Computes the others anew, so that the walks need not keep them.
template <class Kernel>
[[gnu::noinline, gnu::flatten]] void repair_register(int32_t first, int valid, const typename Kernel::real* a,
                                                     typename Kernel::real* r, error_channel& errors) {
  using real = typename Kernel::real;
  const batch<real> x = load_partial(a + first, valid, Kernel::filler);
  const batch<real> y = Kernel::fast(x);
  alignas(64) real xs[lanes<real>], ys[lanes<real>];
  x.store_aligned(xs);
  y.store_aligned(ys);
  for (uint32_t flags = lane_bits<real>(Kernel::flagged(x, y)) & ((1u << valid) - 1); flags != 0;
       flags &= flags - 1) {
    const int lane = std::countr_zero(flags);
    const int32_t status = Kernel::rare(xs + lane, ys + lane);
    if (status == 0) continue;
    const int32_t i = first + lane;
    if (errors.observed()) r[i] = ys[lane];
    errors.report(status, i, a, a, r, r);
    if (errors.observed()) ys[lane] = r[i];
  }
  std::copy_n(ys, valid, r + first);
}

// The fast results of a whole group; true when a lane is flagged.
template <class Kernel, size_t Count>
inline bool compute_group(const typename Kernel::real* a, batch<typename Kernel::real> (&y)[Count]) {
  using real = typename Kernel::real;
  lane_mask<real> any_flagged(false);
#pragma GCC unroll 16
  for (size_t k = 0; k < Count; ++k) {
    const batch<real> x = load(a + k * lanes<real>);
    y[k] = Kernel::fast(x);
    any_flagged = any_flagged | Kernel::flagged(x, y[k]);
  }
  return lane_bits<real>(any_flagged) != 0;
}

// Results of this many bytes do not stay in a cache. A kernel that says `memory_bound` takes less time than
// its results need to get to memory, and stores them past the caches.
constexpr int streaming_threshold = 8 << 20;

// A group with flagged lanes. Missing data are common: a NaN is its own answer, quieted, as of every function
// of one argument, and costs no slow path.
template <class Kernel, size_t Count>
inline void finish_flagged_group(int32_t first, const typename Kernel::real* a, typename Kernel::real* r,
                                 const batch<typename Kernel::real> (&y)[Count], error_channel& errors) {
  using real = typename Kernel::real;
  constexpr int width = lanes<real>;
  uint32_t rest = 0;  // registers that hold other flagged lanes
#pragma GCC unroll 16
  for (size_t k = 0; k < Count; ++k) {
    const int32_t i = first + static_cast<int32_t>(k) * width;
    const batch<real> x = load(a + i);
    const lane_mask<real> nan = xsimd::isnan(x);
    if (lane_bits<real>(Kernel::flagged(x, y[k]) & !nan) == 0)
      store(r + i, xsimd::select(nan, x + x, y[k]));
    else
      rest |= 1u << k;
  }
  for (; rest != 0; rest &= rest - 1)
    repair_register<Kernel>(first + std::countr_zero(rest) * width, width, a, r, errors);
}

// Masked walk: whole groups, then one partly filled register at a time. On the baseline a partly filled
// register leads up to the first 16-byte boundary of a, too.
template <class Kernel>
[[gnu::flatten]] void run_masked(int32_t n, const typename Kernel::real* a, typename Kernel::real* r) {
  using real = typename Kernel::real;
  constexpr int width = lanes<real>;
  constexpr int count = Kernel::group / width;
  const control_scope controls(Kernel::controls, sse_of<Kernel>());
  error_channel errors(Kernel::name);

  const auto partial = [&](int32_t i, int valid) {
    const batch<real> x = load_partial(a + i, valid, Kernel::filler);
    const batch<real> y = Kernel::fast(x);
    if ((lane_bits<real>(Kernel::flagged(x, y)) & ((1u << valid) - 1)) == 0) [[likely]]
      store_partial(r + i, valid, y);
    else
      repair_register<Kernel>(i, valid, a, r, errors);
  };

  int32_t i = 0;
  if constexpr (is_baseline) {
    const auto misaligned = reinterpret_cast<uintptr_t>(a) % 16;
    const int head = static_cast<int>((16 - misaligned) % 16 / sizeof(real));
    if (head != 0 && n > 0) {
      partial(0, std::min(head, n));
      i = std::min(head, n);
    }
  }
  const auto whole_groups = [&](auto put) {
    for (; n - i >= Kernel::group; i += Kernel::group) {
      batch<real> y[count];
      if (compute_group<Kernel>(a + i, y)) [[unlikely]] {
        finish_flagged_group<Kernel>(i, a, r, y, errors);
      } else {
#pragma GCC unroll 16
        for (int k = 0; k < count; ++k) put(r + i + k * width, y[k]);
      }
    }
  };
  if constexpr (requires { Kernel::memory_bound; }) {
    // A pointer off the boundaries of its own type never comes to a register's.
    const auto misaligned = reinterpret_cast<uintptr_t>(r + i) % sizeof(batch<real>);
    if (n >= streaming_threshold / static_cast<int>(sizeof(real)) && a != r &&
        misaligned % sizeof(real) == 0) {
      if (misaligned != 0) {
        const int head = width - static_cast<int>(misaligned / sizeof(real));
        partial(i, head);
        i += head;
      }
      whole_groups([](real* p, const batch<real>& y) { stream(p, y); });
      streaming_done();
    }
  }
  whole_groups([](real* p, const batch<real>& y) { store(p, y); });
  for (int32_t left = n - i; left > 0; left -= width) partial(n - left, std::min(width, left));
}

// Block walk: a block with a flagged element goes element by element through rare(), and so does the tail.
// After a flagged block the walk goes on by elements until whole blocks remain.
template <class Kernel>
[[gnu::flatten]] void run_blocks(int32_t n, const typename Kernel::real* a, typename Kernel::real* r) {
  using real = typename Kernel::real;
  constexpr int width = lanes<real>;
  constexpr int count = Kernel::group / width;
  const control_scope controls(Kernel::controls, sse_of<Kernel>());
  error_channel errors(Kernel::name);

  int32_t i = 0;
  while (n - i >= Kernel::group) {
    batch<real> y[count];
    if (!compute_group<Kernel>(a + i, y)) [[likely]] {
#pragma GCC unroll 16
      for (int k = 0; k < count; ++k) store(r + i + k * width, y[k]);
      i += Kernel::group;
      continue;
    }
    do {
      rare_element<Kernel>(a, r, i++, errors);
    } while ((n - i) % Kernel::group != 0);
  }
  while (i < n) rare_element<Kernel>(a, r, i++, errors);
}

TMK_TIER_CLOSE
