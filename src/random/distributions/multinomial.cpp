// SPDX-License-Identifier: Apache-2.0
// Counts of classes: that of each class is binomial among the trials that the classes before it have left.
#include <cmath>

#include "random/distributions/kernel_calls.hpp"
#include "random/distributions/single_variates.hpp"
#include "tmk/abi/serv.h"

namespace {
using namespace tmk::rng;

bool are_probabilities(int32_t k, const double* p) {
  double sum = 0;
  for (int32_t i = 0; i < k; ++i) {
    if (!(p[i] >= 0)) return false;
    sum += p[i];
  }
  return std::abs(sum - 1) <= 1e-9;
}

// Of each class, its probability among it and the classes after it. The last class that is not impossible
// takes what the others leave: its index.
int32_t make_conditional(int32_t k, const double* p, double* part) {
  int32_t last = k - 1;
  while (p[last] == 0) --last;
  double sum = 0;
  for (int32_t i = last; i >= 0; --i) {
    sum += p[i];
    part[i] = p[i] / sum;
  }
  return last;
}

// One vector, which takes a uniform at least for each class before the last; `later` are those after it.
void draw_vector(uniform_supply& supply, int32_t trials, int32_t last, const double* part, int32_t* r,
                 int64_t later) {
  for (int32_t i = 0; i < last; ++i) {
    r[i] = binomial_variate(supply, trials, part[i], later + last - i - 1);
    trials -= r[i];
  }
  r[last] = trials;
}

}  // namespace

extern "C" int32_t _vtsiRngMultinomial(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r,
                                       int32_t ntrial, int32_t k, const double* p) {
  if (method != 0) return VTS_STATUS_BAD_METHOD;
  if (ntrial < 0 || k < 1 || !are_probabilities(k, p)) return VTS_STATUS_BAD_ARGUMENT;
  const kernel_scope scope(repair_ln<double>);
  auto* const part = static_cast<double*>(tmk_serv_allocate(static_cast<size_t>(k) * sizeof(double), 64));
  if (part == nullptr) return VTS_STATUS_NO_MEMORY;
  const int32_t last = make_conditional(k, p, part);
  uniform_supply supply(stream);
  for (int64_t left = n; left > 0 && supply.status() >= 0; --left, r += k) {
    draw_vector(supply, ntrial, last, part, r, (left - 1) * last);
    std::fill(r + last + 1, r + k, 0);
  }
  tmk_serv_deallocate(part);
  return std::min(supply.status(), int32_t{VTS_STATUS_OK});
}
