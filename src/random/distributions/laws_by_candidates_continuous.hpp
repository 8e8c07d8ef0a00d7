// SPDX-License-Identifier: Apache-2.0
// Continuous laws by candidates, parameters unchecked. A candidate takes as many open uniform doubles of the
// stream as ..._uniforms says, whatever becomes of it. `count` candidates are drawn, those accepted written
// to r in their order, which has room for all; returned is how many, or a negative status.
#pragma once

#include <cstdint>

#include "tmk/abi/vts.h"

namespace tmk::rng {

// a + beta g, g of density g^(shape - 1) e^-g / Gamma(shape)
int32_t gamma_candidates(VtsStreamHandle stream, int32_t count, double* r, double shape, double a,
                         double beta);
int32_t gamma_candidates(VtsStreamHandle stream, int32_t count, float* r, float shape, float a, float beta);
int gamma_uniforms(double shape);

// a + beta x, x of density x^(p - 1) (1 - x)^(q - 1) / B(p, q)
int32_t beta_candidates(VtsStreamHandle stream, int32_t count, double* r, double p, double q, double a,
                        double beta);
int32_t beta_candidates(VtsStreamHandle stream, int32_t count, float* r, float p, float q, float a,
                        float beta);
int beta_uniforms(double p, double q);

// a + beta t, t of Student's law with nu degrees of freedom. Every candidate is accepted.
int32_t student_t_candidates(VtsStreamHandle stream, int32_t count, double* r, double nu, double a,
                             double beta);
int32_t student_t_candidates(VtsStreamHandle stream, int32_t count, float* r, float nu, float a, float beta);
int student_t_uniforms();

}  // namespace tmk::rng
