// SPDX-License-Identifier: Apache-2.0
#include "random/distributions/strip_table.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#include "random/distributions/accurate_kernel.hpp"
#include "random/distributions/compaction.hpp"
#include "random/distributions/discrete_kernels.hpp"
#include "random/distributions/precision.hpp"

namespace {
using namespace tmk::rng;

// Heights are above f and sure parts below it by more than what their computation, and the bits that cuts
// carry, make wrong.
constexpr double margin = 1e-8;

// The cut at the mode: an integral part of 0, and room for bits.
constexpr double first_cut = 0x1p-60;

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

// The tail from d on, of no more than that area; or none.
strip_tail tail_within(double area, const unimodal_law& law, double d, int step, double f) {
  const long double ratio = neighbour_ratio(law, law.mode + d, step);
  // -ln ratio is at most 1 / ratio - 1.
  if (ratio <= 0 || ratio >= 1 || f > area * (1 / ratio - 1)) return {};
  // The hat at x bounds f at the integral part of x, which may be 1 nearer to the mode.
  const double rate = static_cast<double>(-std::log1p(ratio - 1)) * (1 - margin);
  const strip_tail tail = {rate, f * (1 + margin) / static_cast<double>(ratio)};
  return tail.height <= area * rate ? tail : strip_tail{};
}

// Strips of that area outward, step 1 or -1, until the support ends or the rest is a tail; at most
// most_on_a_side.
void walk(const unimodal_law& law, int step, double area, side& s) {
  const double end = step > 0 ? law.high + 1 - law.mode : law.low - law.mode;
  s.count = 0;
  s.tail = {};
  double x = 0, f = 1;
  s.cut[0] = first_cut;
  while (x != end && s.count < most_on_a_side) {
    s.tail = tail_within(area, law, std::floor(x), step, f);
    if (s.tail.height > 0) return;
    const double next = x + step * area / (f * (1 + margin));
    x = step > 0 ? std::min(next, end) : std::max(next, end);
    f = density(law, std::floor(x));
    s.sure[s.count] = f * std::abs(x - s.cut[s.count]) / area * (1 - margin);
    s.cut[++s.count] = x;
  }
}

// A cut with the sure part of the strip above it in its lowest bits.
double carrying(double cut, double sure) {
  constexpr uint64_t mask = (1 << sure_bits) - 1;
  const double part = std::clamp(sure, 0.0, 1.0) * static_cast<double>(mask);
  return std::bit_cast<double>((std::bit_cast<uint64_t>(cut) & ~mask) | static_cast<uint32_t>(part));
}

// The sides in one array: tail and strips below the mode, from the outermost inward, those above it.
void join(const side& below, const side& above, strip_frame& frame, double* cuts) {
  int32_t n = 0;
  frame.below = below.tail;
  frame.above = above.tail;
  if (below.tail.height > 0) cuts[n++] = carrying(below.cut[below.count], 0);
  for (int32_t i = below.count; i > 0; --i) cuts[n++] = carrying(below.cut[i], below.sure[i - 1]);
  for (int32_t i = 0; i < above.count; ++i) cuts[n++] = carrying(above.cut[i], above.sure[i]);
  if (above.tail.height > 0) cuts[n++] = carrying(above.cut[above.count], 0);
  frame.count = n;
  cuts[n] = carrying(above.cut[above.count], 0);
}

// A candidate that the kernel has not decided.
struct candidate {
  double d;
  double height;  // of its point
};

constexpr candidate nowhere = {-HUGE_VAL, 1};

// floor(x) without a call.
double whole_below(double x) {
  constexpr double shift = 0x1.8p52;
  if (std::abs(x) >= 0x1p51) return x;
  const double near = (x + shift) - shift;
  return near > x ? near - 1 : near;
}

candidate in_tail(const strip_tail& tail, double cut, int step, double fraction, double v, double area) {
  constexpr double least = 0x1p-60;
  const double part = std::max(fraction, least) * area * tail.rate / tail.height;
  if (part >= 1) return nowhere;
  return {whole_below(cut - step * std::log(part) / tail.rate), v * part * tail.height};
}

// The candidates of the uniforms at those positions, which the kernel has found the same strips for.
void take_undecided(const strip_frame& frame, const double* cuts, const double* pairs, int32_t n,
                    const int32_t* positions, candidate* c) {
  const double count = frame.count, below_count = std::nextafter(count, 0);
  const int32_t tail_below = frame.below.height > 0 ? 0 : -1,
                tail_above = frame.above.height > 0 ? frame.count - 1 : -1;
  for (int32_t i = 0; i < n; ++i) {
    const double* const pair = pairs + 2 * positions[i];
    const double scaled = std::min(pair[0] * count, below_count);
    const auto number = static_cast<int32_t>(scaled);
    const double fraction = scaled - number, cut = cuts[number], width = cuts[number + 1] - cut;
    if (number == tail_below)
      c[i] = in_tail(frame.below, cuts[number + 1], -1, fraction, pair[1], frame.area);
    else if (number == tail_above)
      c[i] = in_tail(frame.above, cut, 1, fraction, pair[1], frame.area);
    else
      c[i] = {whole_below(cut + fraction * width), pair[1] * (frame.area / width)};
  }
}

constexpr int32_t rejected = -1;  // no variate is negative

// The variates of undecided candidates, or `rejected`, at their positions of r.
void decide(const strip_frame& frame, const double* cuts, const double* pairs, int32_t n,
            const int32_t* positions, int32_t* r) {
  alignas(64) double d[distribution_block], height[distribution_block], f[distribution_block];
  candidate c[distribution_block];
  if (n == 0) return;
  take_undecided(frame, cuts, pairs, n, positions, c);
  for (int32_t i = 0; i < n; ++i) {
    const bool within = c[i].d >= frame.low && c[i].d <= frame.high;
    d[i] = within ? c[i].d : 0;
    height[i] = within ? c[i].height : 2;  // above f(mode)
  }
  run_accurate(tmk_vtm_kernel_dLn_ttab, n, height, height);
  values(frame.log_f, n, d, f);
  for (int32_t i = 0; i < n; ++i) {
    const auto variate = static_cast<int32_t>(std::min<double>(frame.mode + d[i], INT32_MAX));
    r[positions[i]] = height[i] <= f[i] ? variate : rejected;
  }
}

// Removes the rejected ones, all of which are among the positions. How many are left of n.
int32_t close_gaps(int32_t n, int32_t* r, int32_t count, const int32_t* positions) {
  removal<int32_t> kept(r);
  for (int32_t i = 0; i < count; ++i)
    if (r[positions[i]] == rejected) kept.without(positions[i], 1);
  return kept.finish(n);
}

}  // namespace

void tmk::rng::fill_strip_table(const unimodal_law& law, int32_t most, strip_frame& frame, double* cuts) {
  side below, above;
  double area =
      law.total / (most - 5);  // a guess, of which a first correction may make strips lower or higher
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
  join(below, above, frame, cuts);
}

int32_t tmk::rng::candidates_of_strips(VtsStreamHandle stream, int32_t count, int32_t* r,
                                       const strip_frame& frame, const double* cuts) {
  alignas(64) double pairs[2 * distribution_block + discrete_kernels::padding];
  int32_t undecided[distribution_block + 1];
  const int32_t status = draw_open(stream, 2 * count, pairs, 0.0, 1.0);
  if (status < 0) return status;
  std::fill_n(pairs + 2 * count, discrete_kernels::padding, 0.5);
  const int32_t open =
      discrete_kernels_now().of_strips(count, pairs, cuts, frame.count, frame.mode, r, undecided);
  decide(frame, cuts, pairs, open, undecided, r);
  return close_gaps(count, r, open, undecided);
}
