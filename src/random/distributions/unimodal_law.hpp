// SPDX-License-Identifier: Apache-2.0
// What the tables of discrete laws are made from.
#pragma once

#include <algorithm>

#include "random/distributions/log_ratio.hpp"

namespace tmk::rng {

// Probabilities f(k) of the integers k from low to high that grow up to the mode and fall above it, with
//   f(k + 1) / f(k) = factor (a + a_step k) (b + b_step k) / ((1 + k) (c + c_step k))
struct unimodal_law {
  double low, high, mode;
  double total;  // about the sum of f(k) / f(mode)
  long double factor, a = 1, a_step = 0, b = 1, b_step = 0, c = 1, c_step = 0;
  double least_tail_ratio =
      0;            // of f(k + 1) / f(k) for all k above some place, where it grows with k; else 0
  log_ratio log_f;  // ln f(mode + d) / f(mode)

  // f(k + step) / f(k), step 1 or -1; 0 beyond the support.
  long double up_or_down(double k, int step) const {
    if (step > 0) return k >= high ? 0 : up(k);
    return k <= low ? 0 : 1 / up(k - 1);
  }

 private:
  long double up(long double k) const {
    return factor * (a + a_step * k) * (b + b_step * k) / ((1 + k) * (c + c_step * k));
  }
};

// No smaller than f(k + (j + 1) step) / f(k + j step) for any j >= 0 where k is not on the mode's other side.
inline long double neighbour_ratio(const unimodal_law& law, double k, int step) {
  const long double ratio = law.up_or_down(k, step);
  return ratio > 0 && step > 0 ? std::max<long double>(ratio, law.least_tail_ratio) : ratio;
}

}  // namespace tmk::rng
