// SPDX-License-Identifier: Apache-2.0
// Sine, cosine and tangent of degrees.
#include "vector/trigonometric/functions.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
using degree_sine = sine<Real, Level, angle_unit::degrees>;
template <class Real, level Level>
using degree_cosine = cosine<Real, Level, angle_unit::degrees>;
template <class Real, level Level>
using degree_tangent = tangent<Real, Level, angle_unit::degrees>;

}  // namespace
TMK_TIER_CLOSE

TMK_REAL_KERNELS(Sind, unary, LHE, degree_sine)
TMK_REAL_KERNELS(Cosd, unary, LHE, degree_cosine)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_REAL_KERNELS(Tand, unary, LHE, degree_tangent)
#else
TMK_REAL_KERNELS(Tand, unary, HHE, degree_tangent)
#endif
