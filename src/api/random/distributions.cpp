// SPDX-License-Identifier: Apache-2.0
// Arrays filled with variates, in pieces that a kernel's count can hold, and on threads.
#include <tmk/abi/vts.h>

#include <algorithm>
#include <atomic>
#include <tmk/random.hpp>

#include "api/call/refuse.hpp"
#include "api/call/threads.hpp"
#include "api/random/laws.hpp"
#include "api/random/stream.hpp"

namespace tmk {

namespace {

using detail::draw;
using detail::draw_of;

constexpr std::size_t longest_draw = 1 << 30;  // even, so that pairs stay together
constexpr std::size_t part_grain = 1024;       // likewise

// Fills an array by the longest draws, until one fails: its status, or the greatest.
template <class T>
int32_t run(const draw<T>& d, VtsStreamHandle g, std::span<T> r) {
  int32_t greatest = VTS_STATUS_OK;
  for (std::size_t count; !r.empty(); r = r.subspan(count)) {
    count = std::min(r.size(), longest_draw);
    const int32_t status = d(g, static_cast<int32_t>(count), r.data());
    if (status < 0) return status;
    greatest = std::max(greatest, status);
  }
  return greatest;
}

template <class T>
void check_array(const char* function, std::span<T> r) {
  detail::check_data(function, {"r", {r.data(), r.size()}, sizeof(T)});
}

template <class T, class Laws>
void fill_serially(stream& g, std::span<T> r, const Laws& laws) {
  const draw<T> d = draw_of<T>(laws);
  check_array(d.function, r);
  detail::check_status(d.function, g.handle(), run(d, g.handle(), r));
}

// Every part begins with a copy of the stream that skipped to its place; the copy of the last part becomes
// the stream. False, and the stream unchanged, when an integer was drawn anew: later parts began in wrong
// places.
template <class T>
bool run_parallel(const draw<T>& d, stream& g, std::span<T> r, std::size_t parts) {
  const std::size_t longest = (r.size() / parts + part_grain - 1) / part_grain * part_grain;
  parts = (r.size() + longest - 1) / longest;  // none is empty
  const auto begin = [&](std::size_t k) { return std::min(k * longest, r.size()); };
  std::vector<stream> streams(parts, g);
  const int64_t elements = d.elements(g.handle());
  std::atomic<int32_t> failure = VTS_STATUS_OK;
  std::atomic<bool> redrawn = false;
  detail::run_parts(static_cast<int>(parts), [&](int part) {
    const std::size_t k = static_cast<std::size_t>(part);
    const std::size_t last = k + 1 == parts ? r.size() : begin(k + 1);
    VtsStreamHandle own = streams[k].handle();
    const auto skipped = static_cast<int64_t>(begin(k)) * elements;
    int32_t status = skipped == 0 ? VTS_STATUS_OK : __vtsSkipAheadStream(own, skipped);
    if (status >= 0) status = run(d, own, r.subspan(begin(k), last - begin(k)));
    if (status < 0) failure = status;
    if (status == TMK_VTS_REDRAWN) redrawn = true;
  });
  detail::check_status(d.function, g.handle(), failure);
  if (redrawn) return false;
  g = std::move(streams.back());
  return true;
}

template <class T, class Laws>
void fill_on_threads(stream& g, std::span<T> r, const Laws& laws, int threads) {
  detail::refuse_below("fill_parallel", "threads", threads, 1);
  const draw<T> d = draw_of<T>(laws);
  check_array(d.function, r);
  const std::size_t parts =
      std::min<std::size_t>(static_cast<std::size_t>(detail::usable_threads(threads)), r.size() / part_grain);
  const bool jumps = parts > 1 && d.uniforms != 0 && __vtsSkipAheadStream(stream(g).handle(), 1) >= 0;
  if (jumps && run_parallel(d, g, r, parts)) return;
  detail::check_status(d.function, g.handle(), run(d, g.handle(), r));
}

}  // namespace

void fill(stream& g, std::span<double> r, const distribution::continuous& law) { fill_serially(g, r, law); }
void fill(stream& g, std::span<float> r, const distribution::continuous& law) { fill_serially(g, r, law); }
void fill(stream& g, std::span<std::int32_t> r, const distribution::discrete& law) {
  fill_serially(g, r, law);
}

void fill_parallel(stream& g, std::span<double> r, const distribution::continuous& law, int threads) {
  fill_on_threads(g, r, law, threads);
}
void fill_parallel(stream& g, std::span<float> r, const distribution::continuous& law, int threads) {
  fill_on_threads(g, r, law, threads);
}
void fill_parallel(stream& g, std::span<std::int32_t> r, const distribution::discrete& law, int threads) {
  fill_on_threads(g, r, law, threads);
}

template <class T>
requires(std::same_as<T, double> ||
         std::same_as<T, float>) int elements_per_variate(const stream& g,
                                                          const distribution::continuous& law) {
  return draw_of<T>(law).elements(g.handle());
}
template int elements_per_variate<double>(const stream& g, const distribution::continuous& law);
template int elements_per_variate<float>(const stream& g, const distribution::continuous& law);
int elements_per_variate(const stream& g, const distribution::discrete& law) {
  return draw_of<std::int32_t>(law).elements(g.handle());
}

namespace {

template <class Word>
void fill_with_bits(stream& g, std::span<Word> r,
                    int32_t (*kernel)(int32_t, VtsStreamHandle, int32_t, Word*)) {
  const draw<Word> d{"bits", 0, 0,
                     [=](VtsStreamHandle s, int32_t n, Word* to) { return kernel(0, s, n, to); }};
  check_array(d.function, r);
  detail::check_status(d.function, g.handle(), run(d, g.handle(), r));
}

}  // namespace

void bits(stream& g, std::span<std::uint32_t> r) { fill_with_bits(g, r, &_vtsiRngUniformBits32); }
void bits(stream& g, std::span<std::uint64_t> r) { fill_with_bits(g, r, &_vtsiRngUniformBits64); }

}  // namespace tmk
