// SPDX-License-Identifier: Apache-2.0
// Arrays filled with variates, in pieces that a kernel's count can hold, and on threads.
#include <tmk/abi/vts.h>

#include <algorithm>
#include <tmk/random.hpp>

#include "api/call/refuse.hpp"
#include "api/call/threads.hpp"
#include "api/random/laws.hpp"
#include "api/random/stream.hpp"
#include "random/distributions/candidates.hpp"

namespace tmk {

namespace {

using detail::draw;
using detail::draw_of;

constexpr std::size_t longest_draw = 1 << 30;  // even, so that pairs stay together
constexpr std::size_t part_grain = 1024;       // likewise

// How many variates r has now, from its beginning on, or a negative status.
using outcome = std::ptrdiff_t;

// As many candidates as r has places, by the longest draws.
template <class T>
outcome draw_once(const draw<T>& d, VtsStreamHandle g, std::span<T> r) {
  outcome kept = 0;
  for (std::size_t drawn = 0, count; drawn < r.size(); drawn += count) {
    count = std::min(r.size() - drawn, longest_draw);
    const int32_t now = d(g, static_cast<int32_t>(count), r.data() + kept);
    if (now < 0) return now;
    kept += now;
  }
  return kept;
}

// As many candidates as variates are missing, again and again, so that the last one drawn is accepted.
template <class T>
int32_t run(const draw<T>& d, VtsStreamHandle g, std::span<T> r) {
  for (std::size_t rejected = 0; !r.empty();) {
    const outcome kept = draw_once(d, g, r);
    if (kept < 0) return static_cast<int32_t>(kept);
    rejected = kept == 0 ? rejected + r.size() : 0;
    if (rejected >= rng::most_rejected_in_a_row) return VTS_STATUS_BAD_ARGUMENT;
    r = r.subspan(static_cast<std::size_t>(kept));
  }
  return VTS_STATUS_OK;
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

// One round of candidates for all of r. Every part begins with a copy of the stream that skipped to its
// place; the copy of the last part becomes the stream. What the parts accept is moved together.
template <class T>
outcome draw_once_on_threads(const draw<T>& d, stream& g, std::span<T> r, std::size_t parts) {
  const std::size_t longest = (r.size() / parts + part_grain - 1) / part_grain * part_grain;
  parts = (r.size() + longest - 1) / longest;  // none is empty
  std::vector<stream> streams(parts, g);
  std::vector<outcome> outcomes(parts);
  const int64_t elements = d.elements(g.handle());
  const auto part_of = [&](std::size_t k) {
    return r.subspan(k * longest, std::min(longest, r.size() - k * longest));
  };
  detail::run_parts(static_cast<int>(parts), [&](int part) {
    const auto k = static_cast<std::size_t>(part);
    VtsStreamHandle own = streams[k].handle();
    const int32_t status =
        k == 0 ? VTS_STATUS_OK : __vtsSkipAheadStream(own, static_cast<int64_t>(k * longest) * elements);
    outcomes[k] = status < 0 ? status : draw_once(d, own, part_of(k));
  });
  for (const outcome o : outcomes)
    if (o < 0) return o;
  outcome kept = outcomes[0];
  for (std::size_t k = 1; k < parts; kept += outcomes[k++])
    if (kept != static_cast<outcome>(k * longest))
      std::copy_n(part_of(k).begin(), outcomes[k], r.begin() + kept);
  g = std::move(streams.back());
  return kept;
}

template <class T, class Laws>
void fill_on_threads(stream& g, std::span<T> r, const Laws& laws, int threads) {
  detail::refuse_below("fill_parallel", "threads", threads, 1);
  const draw<T> d = draw_of<T>(laws);
  check_array(d.function, r);
  const auto usable = static_cast<std::size_t>(detail::usable_threads(threads));
  const bool jumps =
      usable > 1 && d.elements(g.handle()) != 0 && __vtsSkipAheadStream(stream(g).handle(), 1) >= 0;
  while (jumps && r.size() >= 2 * part_grain) {
    const outcome kept = draw_once_on_threads(d, g, r, std::min(usable, r.size() / part_grain));
    if (kept < 0) detail::check_status(d.function, g.handle(), static_cast<int32_t>(kept));
    if (kept == 0) break;
    r = r.subspan(static_cast<std::size_t>(kept));
  }
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
