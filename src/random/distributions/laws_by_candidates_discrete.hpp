// SPDX-License-Identifier: Apache-2.0
// Discrete laws by their candidates, for callers that cut a sequence themselves: `count` candidates of the
// stream, of which the accepted go to r in their order. Each returns how many they are, or a negative status,
// and ..._uniforms how many doubles by draw_open a candidate takes. The parameters are those of the law,
// which keeps its set-up with the stream.
#pragma once

#include <cstdint>

#include "tmk/abi/vts.h"

namespace tmk::rng {

// More than eleven standard deviations below the largest integer.
constexpr double greatest_poisson_mean = 0x1p31 - 0x1p19;

int32_t poisson_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, double lambda);
int poisson_uniforms(double lambda);

int32_t binomial_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, int32_t trials, double p);
int binomial_uniforms(int32_t trials, double p);

bool negative_binomial_accepts(double a, double p);
int32_t negative_binomial_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, double a, double p);
int negative_binomial_uniforms(double a, double p);

int32_t hypergeometric_candidates(VtsStreamHandle stream, int32_t count, int32_t* r, int32_t all,
                                  int32_t sample, int32_t marked);
int hypergeometric_uniforms(int32_t all, int32_t sample, int32_t marked);

}  // namespace tmk::rng
