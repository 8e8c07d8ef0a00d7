// SPDX-License-Identifier: Apache-2.0
// Failures before success number a, where a may be any positive number.
#include <cmath>
#include <limits>

#include "random/distributions/discrete_laws.hpp"
#include "random/distributions/discrete_set_up.hpp"
#include "random/distributions/laws_by_candidates_discrete.hpp"

namespace {
using namespace tmk::rng;

// Below it, 1 - p would lose digits of p.
constexpr double least_p = 0x1p-50;

}  // namespace

// With a mean that is no integer of 32 bits, most variates would not fit.
bool tmk::rng::negative_binomial_law::accepts(const parameters& p) {
  return p.a > 0 && p.p >= least_p && p.p <= 1 && p.a <= std::numeric_limits<double>::max() &&
         p.a * (1 - p.p) <= INT32_MAX * p.p;
}

// The quotients of neighbours approach 1 - p, from below where a < 1: then f has its mode at 0 and is not
// log-concave.
tmk::rng::unimodal_law tmk::rng::negative_binomial_law::of(const parameters& p) {
  const long double a = p.a, q = 1 - static_cast<long double>(p.p);
  unimodal_law law;
  law.low = 0;
  law.high = q == 0 ? 0 : HUGE_VAL;
  law.mode = static_cast<double>(a > 1 ? std::floor((a - 1) * q / p.p) : 0);
  const double deviation = static_cast<double>(std::sqrt(a * q)) / p.p;
  law.total = p.a < 1 ? std::pow(p.p, -p.a) : 2.51 * deviation;
  law.factor = q;
  law.a = a;
  law.a_step = 1;
  law.least_tail_ratio = p.a < 1 ? static_cast<double>(q) : 0;
  const long double z = law.mode + 1.0L, sum = a + law.mode;
  if (p.a < 8 * deviation) {
    law.log_f = log_ratio_of_quotient(std::log1p(-p.p), static_cast<double>(z), p.a - 1);
  } else if (q != 0) {
    const long double above_1 = (a - 1 - p.p * sum) / z;  // q sum / z - 1
    law.log_f = log_ratio_of(static_cast<double>(std::log1p(above_1)),
                             {{static_cast<double>(sum), 1, 1}, {static_cast<double>(z), 1, -1}});
  }
  return law;
}

bool tmk::rng::negative_binomial_accepts(double a, double p) {
  return negative_binomial_law::accepts({a, p});
}
int32_t tmk::rng::negative_binomial_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, double a,
                                               double p) {
  return discrete_candidates<negative_binomial_law>(stream, count, r, {a, p});
}
int tmk::rng::negative_binomial_uniforms(double a, double p) {
  return discrete_uniforms<negative_binomial_law>({a, p});
}

extern "C" int32_t _vtsiRngNegbinomial(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r,
                                       double a, double p) {
  return draw_discrete<negative_binomial_law>(method, stream, n, r, {a, p});
}
