// SPDX-License-Identifier: Apache-2.0
// Poisson variates.
#include <cmath>

#include "random/distributions/discrete_laws.hpp"
#include "random/distributions/discrete_set_up.hpp"
#include "random/distributions/laws_by_candidates_discrete.hpp"
#include "random/distributions/single_variates.hpp"

namespace {
using namespace tmk::rng;

// A mean for each of at most `most_together` variates, whose uniforms are drawn ahead together.
constexpr int32_t most_together = distribution_block / 2;

void draw_each(uniform_supply& supply, int32_t n, int32_t* r, const double* lambda) {
  int32_t needed = 0;
  for (int32_t i = 0; i < n; ++i) needed += least_uniforms(lambda[i]);
  for (int32_t i = 0; i < n; ++i) {
    needed -= least_uniforms(lambda[i]);
    r[i] = poisson_variate(supply, lambda[i], needed);
  }
}

}  // namespace

bool tmk::rng::poisson_law::accepts(const parameters& p) {
  return p.lambda > 0 && p.lambda <= greatest_poisson_mean;
}

tmk::rng::unimodal_law tmk::rng::poisson_law::of(const parameters& p) {
  unimodal_law law;
  law.low = 0;
  law.high = INT32_MAX;
  law.mode = std::floor(p.lambda);
  law.total = 2.51 * std::sqrt(p.lambda);
  law.factor = p.lambda;
  const double z = law.mode + 1;
  law.log_f = log_ratio_of(std::log1p((p.lambda - z) / z), {{z, 1, -1}});
  return law;
}

int32_t tmk::rng::poisson_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, double lambda) {
  return discrete_candidates<poisson_law>(stream, count, r, {lambda});
}
int tmk::rng::poisson_uniforms(double lambda) { return discrete_uniforms<poisson_law>({lambda}); }

extern "C" {

int32_t _vtsiRngPoisson(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r, double lambda) {
  return draw_discrete<poisson_law>(method, stream, n, r, {lambda});
}
int32_t _viRngPoissonPtpe(VtsStreamHandle stream, int32_t n, int32_t* r, double lambda) {
  return draw_discrete<poisson_law>(0, stream, n, r, {lambda});
}

int32_t _vtsiRngPoissonV(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r,
                         const double* lambda) {
  if (method != 0) return VTS_STATUS_BAD_METHOD;
  for (int32_t i = 0; i < n; ++i)
    if (!poisson_law::accepts({lambda[i]})) return VTS_STATUS_BAD_ARGUMENT;
  const kernel_scope scope(repair_ln<double>);
  uniform_supply supply(stream);
  for (int32_t count; n > 0 && supply.status() >= 0; n -= count, r += count, lambda += count) {
    count = std::min(n, most_together);
    draw_each(supply, count, r, lambda);
  }
  return std::min(supply.status(), int32_t{VTS_STATUS_OK});
}
}
