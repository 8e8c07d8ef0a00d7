// Made by tools/tables/vector/exponential/exp10.sollya.
#pragma once

namespace tmk::exp10_data {

// Products of the step's high part with k are exact: 10 bits with 14, 36 bits with 17.
inline constexpr float single_inverse_step = 0x1.a934fp8f;
inline constexpr float single_step_high = 0x1.348p-9f;
inline constexpr float single_step_low = -0x1.f657bp-20f;
inline constexpr double double_inverse_step = 0x1.a934f0979a371p8;
inline constexpr double double_step_high = 0x1.3441350ap-9;
inline constexpr double double_step_low = -0x1.0c0219dc1da99p-46;

// Relative error of 1 + p(r): 2^-30.1, |r| <= 1.18e-3.
inline constexpr float single_c1 = 0x1.26bb2ep1f;
inline constexpr float single_c2 = 0x1.535254p1f;

// Relative error of 1 + p(r): 2^-63.1, |r| <= 1.18e-3.
inline constexpr double double_c1 = 0x1.26bb1bbb55516p1;
inline constexpr double double_c2 = 0x1.53524c73ce8eep1;
inline constexpr double double_c3 = 0x1.0470591c9b933p1;
inline constexpr double double_c4 = 0x1.2bd7673f3b4f7p0;
inline constexpr double double_c5 = 0x1.1457f30aa09ap-1;

}  // namespace tmk::exp10_data
