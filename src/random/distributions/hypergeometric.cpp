// SPDX-License-Identifier: Apache-2.0
// Marked elements in a sample without replacement.
#include <cmath>

#include "random/distributions/discrete_laws.hpp"
#include "random/distributions/discrete_set_up.hpp"
#include "random/distributions/laws_by_candidates_discrete.hpp"

namespace {
using namespace tmk::rng;
}

bool tmk::rng::hypergeometric_law::accepts(const parameters& p) {
  return p.all >= 0 && p.sample >= 0 && p.sample <= p.all && p.marked >= 0 && p.marked <= p.all;
}

tmk::rng::unimodal_law tmk::rng::hypergeometric_law::of(const parameters& p) {
  const double all = p.all, sample = p.sample, marked = p.marked;
  unimodal_law law;
  law.low = std::max(0.0, sample + marked - all);
  law.high = std::min(sample, marked);
  const long double ways = (sample + 1.0L) * (marked + 1.0L);
  law.mode = std::clamp(static_cast<double>(std::floor(ways / (all + 2))), law.low, law.high);
  law.factor = 1;
  law.a = marked;
  law.b = sample;
  law.a_step = law.b_step = -1;
  law.c = 1 + all - marked - sample;
  law.c_step = 1;
  if (law.low == law.high) return law;
  const double part = marked / all;
  law.total = 2.51 * std::sqrt(sample * part * (1 - part) * (all - sample) / (all - 1));
  const double m = law.mode, z = m + 1, missed = marked - m + 1, unmarked = sample - m + 1,
               rest = all - marked - sample + m + 1;
  const long double up = static_cast<long double>(missed) * unmarked,
                    down = static_cast<long double>(z) * rest;
  law.log_f = log_ratio_of(static_cast<double>(std::log1p((up - down) / down)),
                           {{z, 1, -1}, {missed, -1, -1}, {unmarked, -1, -1}, {rest, 1, -1}});
  return law;
}

int32_t tmk::rng::hypergeometric_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, int32_t all,
                                            int32_t sample, int32_t marked) {
  return discrete_candidates<hypergeometric_law>(stream, count, r, {all, sample, marked});
}
int tmk::rng::hypergeometric_uniforms(int32_t all, int32_t sample, int32_t marked) {
  return discrete_uniforms<hypergeometric_law>({all, sample, marked});
}

extern "C" int32_t _vtsiRngHypergeometric(int32_t method, VtsStreamHandle stream, int32_t n, int32_t* r,
                                          int32_t l, int32_t s, int32_t m) {
  return draw_discrete<hypergeometric_law>(method, stream, n, r, {l, s, m});
}
