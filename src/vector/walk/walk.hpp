// SPDX-License-Identifier: Apache-2.0
// The life of a vector kernel, for any number of arrays: set the floating-point controls, walk the arrays by
// registers, send flagged lanes to the slow path, report bad elements in order, restore the controls.
//
// An element's result does not depend on where in the array it is, nor on how a caller cuts the array: the
// slow path gives an element that fast() serves the same bits.
//
// The walks are flattened: whatever fast() calls is compiled into the loop.
#pragma once

#include <algorithm>
#include <bit>
#include <concepts>
#include <optional>

#include "vector/channel/error_channel.hpp"
#include "vector/walk/description.hpp"

TMK_TIER_OPEN

// Results of this many bytes do not stay in a cache.
constexpr int streaming_threshold = 8 << 20;

// Puts the first NaN among the arguments, quieted, into the results, and returns its lanes. (A sum of two
// NaNs would depend on the order that the compiler gives it.)
template <class Values, class Results>
auto answer_nans(const Values& x, Results& y) {
  const auto first = xsimd::isnan(x.first), nan = first | xsimd::isnan(x.last());
  const auto either = xsimd::select(first, x.first, x.last()), quieted = either + either;
  y = y.map([&](const auto& v) { return xsimd::select(nan, quieted, v); });
  return nan;
}

// How elements are computed: a description with its scalars, and the slow path of one element: its status is
// rare(const A*...)(R*...).
template <class Kernel, class Rare>
struct method {
  using real = typename Kernel::real;
  static constexpr bool in_turn = std::same_as<typename Kernel::value, parts_in_turn<real>>;
  static constexpr int lanes_of_element = in_turn ? 2 : 1;
  static constexpr int width = lanes<real> / lanes_of_element;  // elements of a register
  static constexpr int registers = Kernel::group / width;       // looked at together, of each array
  static constexpr bool has_rare_lanes = requires { &Kernel::flagged; };

  [[no_unique_address]] Kernel kernel;
  [[no_unique_address]] Rare rare;

  template <class In>
  static auto values(const In& in, int32_t i) {
    return in.map([i](const auto* p) {
      if constexpr (in_turn)
        return load_in_turn(p + i);
      else
        return load(p + i);
    });
  }
  template <class In>
  static auto values(const In& in, int32_t i, int valid) {
    return in.map([=](const auto* p) {
      if constexpr (in_turn)
        return load_in_turn_partial(p + i, valid, Kernel::filler);
      else
        return load_partial(p + i, valid, Kernel::filler);
    });
  }
  template <class Values>
  auto compute(const Values& x) const {
    return as_pack(x.apply([this](const auto&... v) { return kernel.fast(v...); }));
  }
  template <class Values, class Results>
  lane_mask<real> flagged(const Values& x, const Results& y) const {
    if constexpr (has_rare_lanes)
      return x.apply([&](const auto&... v) {
        return y.apply([&](const auto&... w) { return kernel.flagged(v..., w...); });
      });
    else
      return lane_mask<real>(false);
  }
  // What flagged lanes can be spared the slow path: by the description's patch, or, where a NaN among the
  // arguments is the answer, by that. Missing data are common.
  template <class Values, class Results>
  lane_mask<real> settle(const Values& x, Results& y) const {
    constexpr bool all_real = std::same_as<std::remove_cvref_t<decltype(x.last())>, batch<real>> &&
                              std::same_as<std::remove_cvref_t<decltype(y.last())>, batch<real>>;
    lane_mask<real> rare_lanes = flagged(x, y);
    if (lane_bits<real>(rare_lanes) == 0) return rare_lanes;  // another register of the group is concerned
    if constexpr (requires { &Kernel::patch; }) {
      rare_lanes = rare_lanes & x.apply([&](const auto&... v) {
        if constexpr (Results::size == 1)
          return kernel.patch(v..., y.first);
        else
          return kernel.patch(v..., y);
      });
    } else if constexpr (Kernel::nan_in_nan_out && all_real) {
      const lane_mask<real> nan = answer_nans(x, y);
      rare_lanes = rare_lanes & !nan;
    }
    return rare_lanes;
  }
  // Of the first `valid` elements those with a lane in the mask: a bit each, that of the first lane.
  static uint32_t elements_of(const lane_mask<real>& mask, int valid) {
    uint32_t bits = lane_bits<real>(mask);
    if constexpr (in_turn) bits = (bits | bits >> 1) & 0x5555;
    return bits & ((1u << (valid * lanes_of_element)) - 1);
  }
  template <class In, class Out>
  int32_t slow(const In& in, const Out& out) const {
    return out.apply(in.apply(rare));
  }
};

template <class In, class Out>
void report(error_channel& errors, int32_t status, int32_t i, const In& in, const Out& out) {
  errors.report(status, i, in.first, in.last(), out.first, out.last());
}

// One element by the slow path: the results are stored before the report, which may replace them.
template <class Method, class In, class Out>
[[gnu::noinline]] void rare_element(Method method, int32_t i, In in, Out out, error_channel& errors) {
  auto y = out.map([](auto* p) { return std::remove_pointer_t<decltype(p)>(); });
  const int32_t status =
      method.slow(in.map([i](const auto* p) { return p + i; }), y.places([](auto& v) { return &v; }));
  out.zip(y, [i](auto* p, const auto& v) { p[i] = v; });
  if (status != 0) [[unlikely]]
    report(errors, status, i, in, out);
}

// One register of elements, the first `valid` lanes of it, some flagged: these in order, stored, reported and
// read back, since a report may replace them. Computes the others anew, so that the walks need not keep them.
template <class Method, class In, class Out>
[[gnu::noinline, gnu::flatten]] void repair_register(Method method, int32_t first, int valid, In in, Out out,
                                                     error_channel& errors) {
  using real = typename Method::real;
  const auto x = Method::values(in, first, valid);
  auto y = method.compute(x);
  const lane_mask<real> rare_lanes = method.settle(x, y);
  auto xs = x.map([](const auto& v) { return spill(v); });
  auto ys = y.map([](const auto& v) { return spill(v); });
  for (uint32_t flags = Method::elements_of(rare_lanes, valid); flags != 0; flags &= flags - 1) {
    const int place = std::countr_zero(flags) / Method::lanes_of_element;
    const auto at_place = [place](auto& s) { return s.at + place; };
    const int32_t status = method.slow(xs.places(at_place), ys.places(at_place));
    if (status == 0) continue;
    const int32_t i = first + place;
    if (errors.observed()) out.zip(ys, [=](auto* p, const auto& s) { p[i] = s.at[place]; });
    report(errors, status, i, in, out);
    if (errors.observed()) out.zip(ys, [=](const auto* p, auto& s) { s.at[place] = p[i]; });
  }
  out.zip(ys, [=](auto* p, const auto& s) { std::copy_n(s.at, valid, p + first); });
}

// The results of a whole group; true when a lane is flagged.
template <class Method, class In, class Results, size_t Registers>
inline bool compute_group(const Method& method, int32_t first, const In& in, Results (&y)[Registers]) {
  using real = typename Method::real;
  lane_mask<real> any_flagged(false);
#pragma GCC unroll 16
  for (size_t k = 0; k < Registers; ++k) {
    const auto x = Method::values(in, first + static_cast<int32_t>(k) * Method::width);
    y[k] = method.compute(x);
    if constexpr (Method::has_rare_lanes) any_flagged = any_flagged | method.flagged(x, y[k]);
  }
  return Method::has_rare_lanes && lane_bits<real>(any_flagged) != 0;
}

template <class Results, class Out>
inline void store_results(const Out& out, int32_t i, const Results& y) {
  out.zip(y, [i](auto* p, const auto& v) { store(p + i, v); });
}

// A group with flagged lanes. Apart from the loop, which keeps its registers to itself.
template <class Method, class In, class Out, class Results, size_t Registers>
[[gnu::noinline, gnu::flatten]] void finish_flagged_group(const Method& method, int32_t first, const In& in,
                                                          const Out& out, Results (&y)[Registers],
                                                          error_channel& errors) {
  uint32_t rest = 0;  // registers with lanes for the slow path
#pragma GCC unroll 16
  for (size_t k = 0; k < Registers; ++k) {
    const int32_t i = first + static_cast<int32_t>(k) * Method::width;
    if (lane_bits<typename Method::real>(method.settle(Method::values(in, i), y[k])) == 0)
      store_results(out, i, y[k]);
    else
      rest |= 1u << k;
  }
  for (; rest != 0; rest &= rest - 1)
    repair_register(method, first + std::countr_zero(rest) * Method::width, Method::width, in, out, errors);
}

// Masked walk: whole groups, then one partly filled register at a time. On the baseline a partly filled
// register leads up to the first 16-byte boundary of the first argument, too; elsewhere, where stores that
// cross the cache's lines would count, up to the first boundary of the results.
template <class Kernel, class Method, class In, class Out>
[[gnu::flatten]] inline void walk_masked(const Method& method, int32_t n, const In& in, const Out& out,
                                         error_channel& errors) {
  using real = typename Method::real;
  using results = decltype(method.compute(Method::values(in, 0)));
  constexpr int width = Method::width;

  const auto partial = [&](int32_t i, int valid) {
    const auto x = Method::values(in, i, valid);
    const auto y = method.compute(x);
    if constexpr (Method::has_rare_lanes)
      if (Method::elements_of(method.flagged(x, y), valid) != 0) [[unlikely]]
        return repair_register(method, i, valid, in, out, errors);
    out.zip(y, [=](auto* p, const auto& v) { store_partial(p + i, valid, v); });
  };

  int32_t i = 0;
  if constexpr (is_baseline) {
    const auto misaligned = reinterpret_cast<uintptr_t>(in.first) % 16;
    const int head = static_cast<int>((16 - misaligned) % 16 / sizeof(*in.first));
    if (head != 0 && n > 0) {
      partial(0, std::min(head, n));
      i = std::min(head, n);
    }
  } else if constexpr (Kernel::streams) {
    constexpr int bytes = sizeof(*out.first);
    const auto misaligned = reinterpret_cast<uintptr_t>(out.first) % sizeof(batch<real>);
    if (misaligned != 0 && misaligned % bytes == 0 && n >= 2 * Kernel::group) {
      i = static_cast<int>(sizeof(batch<real>) - misaligned) / bytes;
      partial(0, i);
    }
  }
  const auto whole_groups = [&](auto put) {
    for (; n - i >= Kernel::group; i += Kernel::group) {
      results y[Method::registers];
      if (compute_group(method, i, in, y)) [[unlikely]] {
        if constexpr (Method::has_rare_lanes) {
          results copies[Method::registers];  // y itself has no address, and so no place in memory
          std::copy_n(y, Method::registers, copies);
          finish_flagged_group(method, i, in, out, copies, errors);
        }
      } else {
#pragma GCC unroll 16
        for (int k = 0; k < Method::registers; ++k) put(i + k * width, y[k]);
      }
    }
  };
  if constexpr (Kernel::streams && Out::size == 1) {
    // A pointer off the boundaries of its own type never comes to a register's.
    constexpr int bytes = sizeof(*out.first);
    const auto misaligned = reinterpret_cast<uintptr_t>(out.first + i) % sizeof(batch<real>);
    const bool apart =
        in.apply([&](const auto*... a) { return ((static_cast<const void*>(a) != out.first) && ...); });
    if (n >= streaming_threshold / bytes && apart && misaligned % bytes == 0) {
      if (misaligned != 0) {
        const int head = static_cast<int>(sizeof(batch<real>) - misaligned) / bytes;
        partial(i, head);
        i += head;
      }
      whole_groups([&](int32_t at, const results& y) { stream(out.first + at, y.first); });
      streaming_done();
    }
  }
  whole_groups([&](int32_t at, const results& y) { store_results(out, at, y); });
  for (int32_t left = n - i; left > 0; left -= width) partial(n - left, std::min(width, left));
}

// Block walk: a block with a flagged element goes element by element through the slow path, and so does the
// tail. After a flagged block the walk continues by elements until whole blocks remain.
template <class Kernel, class Method, class In, class Out>
[[gnu::flatten]] inline void walk_blocks(const Method& method, int32_t n, const In& in, const Out& out,
                                         error_channel& errors) {
  using results = decltype(method.compute(Method::values(in, 0)));
  int32_t i = 0;
  while (n - i >= Kernel::group) {
    results y[Method::registers];
    if (!compute_group(method, i, in, y)) [[likely]] {
#pragma GCC unroll 16
      for (int k = 0; k < Method::registers; ++k) store_results(out, i + k * Method::width, y[k]);
      i += Kernel::group;
      continue;
    }
    do {
      rare_element(method, i++, in, out, errors);
    } while ((n - i) % Kernel::group != 0);
  }
  while (i < n) rare_element(method, i++, in, out, errors);
}

// A kernel's call. `reference` is the function in extended precision: (const A*..., scalars..., R*...).
template <class Kernel, class Reference, class In, class Out, class... Scalars>
[[gnu::flatten]] inline void run(const char* name, Reference reference, int32_t n, In in, Out out,
                                 Scalars... scalars) {
  const Kernel kernel{scalars...};
  const auto rare = [=](const auto*... a) {
    return [=](auto*... r) -> int32_t {
      if constexpr (requires { kernel.rare(a..., r...); }) return kernel.rare(a..., r...);
      if constexpr (requires { kernel.shortcut(a..., r...); })
        if (const std::optional<int32_t> status = kernel.shortcut(a..., r...)) return *status;
      return reference(a..., scalars..., r...);
    };
  };
  const control_scope controls(Kernel::controls, Kernel::sse);
  error_channel errors(name);
  const method<Kernel, decltype(rare)> how{kernel, rare};
  if constexpr (Kernel::by_blocks)
    walk_blocks<Kernel>(how, n, in, out, errors);
  else
    walk_masked<Kernel>(how, n, in, out, errors);
}

TMK_TIER_CLOSE
