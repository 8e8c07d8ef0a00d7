// SPDX-License-Identifier: Apache-2.0
#include "random/distributions/strip_table.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "random/distributions/accurate_kernel.hpp"
#include "random/distributions/discrete_kernels.hpp"
#include "random/distributions/precision.hpp"

namespace {
using namespace tmk::rng;

// Heights are above f and sure parts below it by more than what their computation is in error.
constexpr double margin = 1e-9;

constexpr int32_t most_on_a_side = 256;

// The strips of one side, from the mode outward.
struct side {
  strip_tail tail{};
  int32_t count = 0;
  double cut[most_on_a_side + 1], sure[most_on_a_side];

  int32_t strips() const { return count + (tail.height > 0 ? 1 : 0); }
};

// f(mode + d) / f(mode), 0 beyond the support.
double density(const unimodal_law& law, double d) {
  const double k = law.mode + d;
  return k < law.low || k > law.high ? 0 : std::exp(value(law.log_f, d));
}

strip_tail tail_from(const unimodal_law& law, double d, int step, double f) {
  const long double ratio = neighbour_ratio(law, law.mode + d, step);
  if (ratio <= 0 || ratio >= 1) return {};
  // The hat at x bounds f at the integral part of x, which may be 1 nearer to the mode.
  const double rate = static_cast<double>(-std::log1p(ratio - 1)) * (1 - margin);
  return {rate, f * (1 + margin) / static_cast<double>(ratio)};
}

// Strips of that area outward, step 1 or -1, until the support ends or the rest is a tail; at most
// most_on_a_side.
void walk(const unimodal_law& law, int step, double area, side& s) {
  const double end = step > 0 ? law.high + 1 - law.mode : law.low - law.mode;
  s.count = 0;
  s.tail = {};
  double x = 0, f = 1;
  s.cut[0] = x;
  while (x != end && s.count < most_on_a_side) {
    s.tail = tail_from(law, std::floor(x), step, f);
    if (s.tail.height > 0 && s.tail.height <= area * s.tail.rate) return;
    s.tail = {};
    const double width = area / (f * (1 + margin)), next = x + step * width;
    x = step > 0 ? std::min(next, end) : std::max(next, end);
    f = density(law, std::floor(x));
    s.sure[s.count] = f * std::abs(x - s.cut[s.count]) / area * (1 - margin);
    s.cut[++s.count] = x;
  }
}

// The sides in one array: tail and strips below the mode, from the outermost inward, those above it.
void join(const side& below, const side& above, strip_frame& frame, strip* strips) {
  constexpr double undecided = -1;
  int32_t n = 0;
  frame.below = below.tail;
  frame.above = above.tail;
  if (below.tail.height > 0) strips[n++] = {below.cut[below.count], undecided};
  for (int32_t i = below.count; i > 0; --i) strips[n++] = {below.cut[i], below.sure[i - 1]};
  for (int32_t i = 0; i < above.count; ++i) strips[n++] = {above.cut[i], above.sure[i]};
  if (above.tail.height > 0) strips[n++] = {above.cut[above.count], undecided};
  frame.count = n;
  strips[n] = {above.cut[above.count], undecided};
}

// A candidate that the kernel has not decided.
struct candidate {
  double d;
  double height;  // of its point
};

// The place of the first uniform in its strip, as the kernel has it.
struct place {
  int32_t number;
  double fraction;
};
place place_of(double u, int32_t count) {
  const double scaled = std::min(u * count, std::nextafter(count, 0)), number = std::floor(scaled);
  return {static_cast<int32_t>(number), scaled - number};
}

candidate in_tail(const strip_tail& tail, double cut, int step, double fraction, double v, double area) {
  constexpr double least = 0x1p-60, nowhere = -HUGE_VAL;
  const double part = std::max(fraction, least) * area * tail.rate / tail.height;
  if (part >= 1) return {nowhere, 0};
  return {std::floor(cut - step * std::log(part) / tail.rate), v * part * tail.height};
}

candidate candidate_of(const strip_frame& frame, const strip* strips, double u, double v) {
  const place p = place_of(u, frame.count);
  const strip *const left = strips + p.number, *const right = left + 1;
  if (p.number == 0 && frame.below.height > 0)
    return in_tail(frame.below, left->cut, -1, p.fraction, v, frame.area);
  if (p.number == frame.count - 1 && frame.above.height > 0)
    return in_tail(frame.above, left->cut, 1, p.fraction, v, frame.area);
  const double width = right->cut - left->cut;
  return {std::floor(left->cut + p.fraction * width), v * (frame.area / width)};
}

constexpr int32_t rejected = -1;  // no variate is negative

int32_t variate_of(const strip_frame& frame, double d) {
  return static_cast<int32_t>(std::min<double>(frame.mode + d, INT32_MAX));
}

// The variates of undecided candidates, or `rejected`, at their positions of r.
void decide(const strip_frame& frame, const strip* strips, const double* pairs, int32_t n,
            const int32_t* positions, int32_t* r) {
  alignas(64) double d[distribution_block], height[distribution_block], f[distribution_block];
  int32_t position[distribution_block], within = 0;
  for (int32_t i = 0; i < n; ++i) {
    const int32_t at = positions[i];
    const candidate c = candidate_of(frame, strips, pairs[2 * at], pairs[2 * at + 1]);
    r[at] = rejected;
    if (c.d < frame.low || c.d > frame.high) continue;
    d[within] = c.d;
    height[within] = c.height;
    position[within++] = at;
  }
  if (within == 0) return;
  run_accurate(tmk_vtm_kernel_dLn_ttab, within, height, height);
  values(frame.log_f, within, d, f);
  for (int32_t i = 0; i < within; ++i)
    if (height[i] <= f[i]) r[position[i]] = variate_of(frame, d[i]);
}

// Removes the rejected ones, all of which are among the positions. How many are left of n.
int32_t close_gaps(int32_t n, int32_t* r, int32_t count, const int32_t* positions) {
  int32_t kept = 0, from = 0;
  const auto keep_up_to = [&](int32_t end) {
    if (kept != from) std::memmove(r + kept, r + from, static_cast<size_t>(end - from) * sizeof(*r));
    kept += end - from;
    from = end + 1;
  };
  for (int32_t i = 0; i < count; ++i)
    if (r[positions[i]] == rejected) keep_up_to(positions[i]);
  keep_up_to(n);
  return kept;
}

}  // namespace

void tmk::rng::fill_strip_table(const unimodal_law& law, int32_t most, strip_frame& frame, strip* strips) {
  side below, above;
  double area = law.total / most;  // a guess, of which a first correction may make strips lower or higher
  for (int attempt = 0;; ++attempt) {
    walk(law, 1, area, above);
    walk(law, -1, area, below);
    const int32_t count = above.strips() + below.strips();
    const bool fits = above.count < most_on_a_side && below.count < most_on_a_side && count <= most;
    if (fits && (attempt > 0 || count >= most - most / 8)) break;
    const double excess = (count + 1.0) / most;
    area *= fits ? excess : std::max(excess, 1.02);
  }
  frame.log_f = law.log_f;
  frame.mode = law.mode;
  frame.low = law.low - law.mode;
  frame.high = law.high - law.mode;
  frame.area = area;
  join(below, above, frame, strips);
}

int32_t tmk::rng::candidates_of_strips(VtsStreamHandle stream, int32_t count, int32_t* r,
                                       const strip_frame& frame, const strip* strips) {
  alignas(64) double pairs[2 * distribution_block + discrete_kernels::padding];
  int32_t undecided[distribution_block + 1];
  const int32_t status = draw_open(stream, 2 * count, pairs, 0.0, 1.0);
  if (status < 0) return status;
  std::fill_n(pairs + 2 * count, discrete_kernels::padding, 0.5);
  const int32_t open =
      discrete_kernels_now().of_strips(count, pairs, &strips->cut, frame.count, frame.mode, r, undecided);
  decide(frame, strips, pairs, open, undecided, r);
  return close_gaps(count, r, open, undecided);
}
