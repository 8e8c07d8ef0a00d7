// SPDX-License-Identifier: Apache-2.0
#include "random/distributions/alias_table.hpp"

#include <algorithm>
#include <bit>

#include "random/distributions/discrete_kernels.hpp"
#include "random/distributions/precision.hpp"

namespace {
using namespace tmk::rng;

constexpr int32_t most_cells = 256;
constexpr long double dropped = 0x1p-54L;  // on each side

// Probabilities, relative to the mode's, of the values around it.
struct window {
  double first = 0;
  int32_t count = 0;
  long double sum = 1;
  double p[2 * most_cells + 1];
};

// f(mode + step), f(mode + 2 step), ... to p, p + step, ... until what follows is negligible: how many, or
// most where they are as many or more.
int32_t walk(const unimodal_law& law, int step, int32_t most, double* p, long double& sum) {
  long double f = 1;
  double k = law.mode;
  for (int32_t count = 0;; ++count, k += step) {
    const long double ratio = neighbour_ratio(law, k, step);
    if (ratio <= 0 || (ratio < 1 && f * ratio < dropped * sum * (1 - ratio))) return count;
    if (count == most) return count;
    f *= law.up_or_down(k, step);
    sum += f;
    *p = static_cast<double>(f);
    p += step;
  }
}

bool fill(window& w, const unimodal_law& law, int32_t most) {
  double* const middle = w.p + most_cells;
  *middle = 1;
  const int32_t above = walk(law, 1, most, middle + 1, w.sum);
  if (above >= most) return false;
  const int32_t below = walk(law, -1, most, middle - 1, w.sum);
  w.first = law.mode - below;
  w.count = below + above + 1;
  std::copy_n(middle - below, w.count, w.p);
  return w.count <= most;
}

double cell_of(double bound, uint32_t alias, uint64_t mask) {
  const double some = bound > 0 ? bound : -1;  // no fraction is below -1
  return std::bit_cast<double>((std::bit_cast<uint64_t>(some) & ~mask) | alias);
}

}  // namespace

bool tmk::rng::fill_alias_table(const unimodal_law& law, int32_t most, int32_t& bits, int32_t& least,
                                double* cells) {
  // A deviation is total / 2.5, and sixteen of them hold the probability.
  if (law.high - law.low >= most && law.total * 5 > most) return false;
  window w;
  if (!fill(w, law, most)) return false;
  bits = std::bit_width(static_cast<uint32_t>(w.count - 1));
  least = static_cast<int32_t>(w.first);
  const int32_t n = 1 << bits;
  const uint64_t mask = static_cast<uint64_t>(n - 1);
  int32_t poor[most_cells], rich[most_cells], poor_count = 0, rich_count = 0;
  for (int32_t i = 0; i < n; ++i) {
    w.p[i] = i < w.count ? static_cast<double>(w.p[i] * n / w.sum) : 0;
    (w.p[i] < 1 ? poor[poor_count++] : rich[rich_count++]) = i;
  }
  while (poor_count > 0 && rich_count > 0) {
    const int32_t small = poor[--poor_count], large = rich[rich_count - 1];
    cells[small] = cell_of(w.p[small], static_cast<uint32_t>(large), mask);
    w.p[large] -= 1 - w.p[small];
    if (w.p[large] < 1) poor[poor_count++] = rich[--rich_count];
  }
  // What is left over differs from 1 by rounding alone.
  while (rich_count > 0) {
    const int32_t i = rich[--rich_count];
    cells[i] = cell_of(2, static_cast<uint32_t>(i), mask);
  }
  while (poor_count > 0) {
    const int32_t i = poor[--poor_count];
    cells[i] = cell_of(2, static_cast<uint32_t>(i), mask);
  }
  return true;
}

int32_t tmk::rng::variates_of_cells(VtsStreamHandle stream, int32_t count, int32_t* r, int32_t bits,
                                    int32_t least, const double* cells) {
  alignas(64) double u[distribution_block + discrete_kernels::padding];
  const int32_t status = draw_open(stream, count, u, 0.0, 1.0);
  if (status < 0) return status;
  std::fill_n(u + count, discrete_kernels::padding, 0.5);
  discrete_kernels_now().of_cells(count, u, cells, bits, least, r);
  return count;
}
