// SPDX-License-Identifier: Apache-2.0
// Sine, cosine and tangent of radians.
#include "vector/trigonometric/functions.hpp"

TMK_TIER_OPEN
namespace {

template <class Real, level Level>
using radian_sine = sine<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using radian_cosine = cosine<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using radian_tangent = tangent<Real, Level, angle_unit::radians>;
template <class Real, level Level>
using radian_sine_and_cosine = of_angle<sine_and_cosine_formula, Real, Level, angle_unit::radians>;

}  // namespace
TMK_TIER_CLOSE

TMK_KERNELS(s, Sin, unary, LHE, radian_sine)
TMK_KERNELS(s, Cos, unary, LHE, radian_cosine)
#if TMK_TIER_NUMBER(TMK_TIER) == 0
TMK_KERNELS(d, Sin, unary, HHE, radian_sine)
TMK_KERNELS(d, Cos, unary, HHE, radian_cosine)
TMK_KERNELS(s, Tan, unary, LHL, radian_tangent)
TMK_KERNELS(d, Tan, unary, LHE, radian_tangent)
#else
TMK_KERNELS(d, Sin, unary, LHE, radian_sine)
TMK_KERNELS(d, Cos, unary, LHE, radian_cosine)
TMK_REAL_KERNELS(Tan, unary, HHE, radian_tangent)
#endif
TMK_KERNELS(s, SinCos, two_results, LHL, radian_sine_and_cosine)
TMK_KERNELS(d, SinCos, two_results, LHE, radian_sine_and_cosine)
