// SPDX-License-Identifier: Apache-2.0
// Sine, cosine and tangent of pi x.
#include "vector/trigonometric/functions.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
using half_turn_sine = sine<Real, Level, angle_unit::half_turns>;
template <class Real, level Level>
using half_turn_cosine = cosine<Real, Level, angle_unit::half_turns>;
template <class Real, level Level>
using half_turn_tangent = tangent<Real, Level, angle_unit::half_turns>;

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Sinpi, unary, LHE, half_turn_sine)
TMK_REAL_KERNELS(Cospi, unary, LHE, half_turn_cosine)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_REAL_KERNELS(Tanpi, unary, LHE, half_turn_tangent)
#else
TMK_REAL_KERNELS(Tanpi, unary, HHE, half_turn_tangent)
#endif
