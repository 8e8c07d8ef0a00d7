// SPDX-License-Identifier: Apache-2.0
// Successes in a number of trials.
#include <cmath>

#include "random/distributions/discrete_laws.hpp"
#include "random/distributions/discrete_set_up.hpp"
#include "random/distributions/laws_by_candidates_discrete.hpp"

namespace {
using namespace tmk::rng;
}

bool tmk::rng::binomial_law::accepts(const parameters& p) { return p.trials >= 0 && p.p >= 0 && p.p <= 1; }

tmk::rng::unimodal_law tmk::rng::binomial_law::of(const parameters& p) {
  const long double n = p.trials, success = p.p, failure = 1 - success;
  unimodal_law law;
  law.low = p.p == 1 ? p.trials : 0;
  law.high = p.p == 0 ? 0 : p.trials;
  law.mode = static_cast<double>(std::min(n, std::floor((n + 1) * success)));
  law.total = 2.51 * static_cast<double>(std::sqrt(n * success * failure));
  law.factor = success / failure;
  law.a = n;
  law.a_step = -1;
  if (law.low == law.high) return law;
  const double z = law.mode + 1, others = static_cast<double>(n - law.mode + 1);
  // p others / ((1 - p) z) - 1
  const long double above_1 = (success * (n + 2) - z) / (failure * z);
  law.log_f = log_ratio_of(static_cast<double>(std::log1p(above_1)), {{z, 1, -1}, {others, -1, -1}});
  return law;
}

int32_t tmk::rng::binomial_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, int32_t trials,
                                      double p) {
  return discrete_candidates<binomial_law>(stream, count, r, {p, trials, 0});
}
int tmk::rng::binomial_uniforms(int32_t trials, double p) {
  return discrete_uniforms<binomial_law>({p, trials, 0});
}

extern "C" int32_t _vtsiRngBinomial(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r,
                                    int32_t ntrial, double p) {
  return draw_discrete<binomial_law>(method, stream, n, r, {p, ntrial, 0});
}
