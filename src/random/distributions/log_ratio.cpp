// SPDX-License-Identifier: Apache-2.0
#include "random/distributions/log_ratio.hpp"

#include "random/distributions/accurate_kernel.hpp"
#include "random/distributions/discrete_kernels.hpp"
#include "random/distributions/precision.hpp"

namespace {
using namespace tmk::rng;

double quotient_at(double y, double offset) {
  return (y - 0.5) * std::log1p(offset / y) + stirling_correction(y + offset) - stirling_correction(y);
}

}  // namespace

double tmk::rng::stirling_correction_below_10(double z) {
  // s(0) is no number; those of 1 to 9 are ln (z - 1)! - (z - 1/2) ln z + z - ln(2 pi) / 2.
  static constexpr double of_integers[] = {0,
                                           0.08106146679532726,
                                           0.0413406959554093,
                                           0.02767792568499834,
                                           0.020790672103765093,
                                           0.016644691189821193,
                                           0.013876128823070748,
                                           0.01189670994589177,
                                           0.010411265261972096,
                                           0.009255462182712733};
  const auto whole = static_cast<int32_t>(z);
  if (whole == z && whole > 0) return of_integers[whole];
  double sum = 0;  // of s(z) - s(z + 1)
  for (; z < least_of_stirling_series; ++z) sum += (z + 0.5) * std::log1p(1 / z) - 1;
  return sum + stirling_series(z);
}

tmk::rng::log_ratio tmk::rng::log_ratio_of_quotient(double slope, double z, double offset) {
  log_ratio l{};
  l.slope = slope;
  l.constant = quotient_at(z, offset);
  l.z[0] = z;
  l.z[1] = offset;
  l.quotient = 1;
  return l;
}

double tmk::rng::value(const log_ratio& l, double d) {
  if (d == 0) return 0;
  double sum = l.slope * d - l.constant;
  if (l.quotient != 0) {
    const double z = l.z[0], offset = l.z[1];
    return sum + quotient_at(z + d, offset) + offset * std::log1p(d / (z + offset));
  }
  for (int i = 0; i < l.factors; ++i) sum += l.weight[i] * log_gamma_step(l.z[i], l.direction[i] * d);
  return sum;
}

void tmk::rng::values(const log_ratio& l, int32_t n, const double* d, double* r) {
  alignas(64) double x[distribution_block];
  const discrete_kernels& steps = discrete_kernels_now();
  const auto log1p = [&] { run_accurate(tmk_vtm_kernel_dLog1p_ttab, n, +x, +x); };
  steps.line(n, d, l.slope, -l.constant, r);
  if (l.quotient != 0) {
    const double z = l.z[0], offset = l.z[1];
    steps.quotient(n, d, z, offset, x);
    log1p();
    steps.add_quotient(n, d, z, offset, x, r);
    steps.line(n, d, 1 / (z + offset), 0, x);
    log1p();
    steps.add_multiple(n, x, offset, r);
  }
  for (int i = 0; i < l.factors; ++i) {
    const double direction = l.direction[i];
    steps.line(n, d, direction / l.z[i], 0, x);
    log1p();
    steps.add_factor(n, d, {l.z[i], direction, static_cast<double>(l.weight[i])}, x, r);
  }
  steps.clear_at_zero(n, d, r);
}
