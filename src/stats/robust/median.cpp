// SPDX-License-Identifier: Apache-2.0
// Long arrays are read once: two elements of a sample of some n^(2/3) enclose the wanted rank, those between
// them are copied and those below counted, without a branch on the data (R. Floyd, R. Rivest, Expected time
// bounds for selection, 1975). Where the sample misled, the whole array is selected from.
#include "stats/robust/median.hpp"

#include <algorithm>
#include <cmath>

#include "stats/order/quick_sort.hpp"

namespace tmk::stats::robust {
namespace {

double select(double* a, size_t n, size_t k) {
  quick_select(contiguous<double>{a}, {0, static_cast<ptrdiff_t>(n) - 1}, static_cast<ptrdiff_t>(k));
  return a[k];
}

// The least of the values after rank k, which the selection left no less than a[k].
double next(const double* a, size_t n, size_t k) { return *std::min_element(a + k + 1, a + n); }

// The values of ranks k and, if `pair`, k + 1.
struct ranks {
  double at, after;
};

ranks select_ranks(double* a, size_t n, size_t k, bool pair) {
  const double at = select(a, n, k);
  return {at, pair ? next(a, n, k) : at};
}

ranks find(const double* y, size_t n, size_t k, bool pair, double* work) {
  constexpr size_t long_array = 2000;
  if (n >= long_array) {
    const auto step = static_cast<size_t>(std::cbrt(static_cast<double>(n)));
    const size_t m = n / step;
    // From each stretch of `step` one, by a fixed sequence: data may have a period.
    unsigned state = 1;
    for (size_t i = 0; i < m; ++i) {
      state = state * 1664525u + 1013904223u;
      work[i] = y[i * step + (state >> 8) % step];
    }
    const auto rank = static_cast<ptrdiff_t>(k / step), last = static_cast<ptrdiff_t>(m) - 1;
    const auto margin = static_cast<ptrdiff_t>(1.5 * std::sqrt(static_cast<double>(m))) + 2;  // three sigma
    const ptrdiff_t from = std::clamp<ptrdiff_t>(rank - margin, 0, last),
                    to = std::clamp<ptrdiff_t>(rank + margin, 0, last);
    quick_select(contiguous<double>{work}, {0, last}, from);
    quick_select(contiguous<double>{work}, {from, last}, to);
    const double low = work[from], high = work[to];
    size_t below = 0, inside = 0;
    for (size_t i = 0; i < n; ++i) {
      const double value = y[i];
      work[inside] = value;
      below += value < low ? 1 : 0;
      inside += static_cast<size_t>(value >= low) & static_cast<size_t>(value <= high);
    }
    if (k >= below && k + (pair ? 1 : 0) < below + inside) return select_ranks(work, inside, k - below, pair);
  }
  std::copy_n(y, n, work);
  return select_ranks(work, n, k, pair);
}

}  // namespace

double median(const double* y, size_t n, double* work) {
  const ranks middle = find(y, n, (n - 1) / 2, n % 2 == 0, work);
  return n % 2 == 0 ? 0.5 * middle.at + 0.5 * middle.after : middle.at;
}

double ranked(const double* y, size_t n, size_t k, double* work) { return find(y, n, k, false, work).at; }

centre_and_spread median_and_mad(const double* y, size_t n, double* work) {
  const double centre = median(y, n, work);
  double* const distance = work + n;
  for (size_t i = 0; i < n; ++i) distance[i] = std::fabs(y[i] - centre);
  return {centre, median(distance, n, work)};
}

}  // namespace tmk::stats::robust
