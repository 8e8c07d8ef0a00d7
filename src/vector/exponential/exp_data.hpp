// Made by tools/tables/vector/exponential/exp.sollya.
#pragma once

namespace tmk::exp_data {

// Single, HA and LA: step = log(2) / 128.
// Products of step_high (9 bits) with k (15 bits) are exact.
inline constexpr float single_inverse_step = 0x1.715476p7f;
inline constexpr float single_step_high = 0x1.63p-8f;
inline constexpr float single_step_low = -0x1.bd0106p-20f;

// Single, EP: step = log(2) in one part.
// Relative error of 1 + p(r): 2^-12.5, |r| <= 0.34657.
inline constexpr float single_inverse_step_ep = 0x1.715476p0f;
inline constexpr float single_step_ep = 0x1.62e43p-1f;
inline constexpr float single_ep_c1 = 0x1.0002f4p0f;
inline constexpr float single_ep_c2 = 0x1.01ecaep-1f;
inline constexpr float single_ep_c3 = 0x1.55551ap-3f;

// Double, HA: step = log(2) / 64. Products of step_high (33 bits) with k (17 bits) are exact.
// Relative error of 1 + p(r): 2^-59.2, |r| <= 5.42e-3.
inline constexpr double double_inverse_step_64 = 0x1.71547652b82fep6;
inline constexpr double double_step_high_64 = 0x1.62e42fefp-7;
inline constexpr double double_step_low_64 = 0x1.473de6af278edp-40;
inline constexpr double double_c2 = 0x1.fffffffffd97cp-2;
inline constexpr double double_c3 = 0x1.555555555843fp-3;
inline constexpr double double_c4 = 0x1.555574bc398a5p-5;
inline constexpr double double_c5 = 0x1.111127640a57dp-7;

// Double, LA: step = log(2) / 128. Products of step_high (32 bits) with k (18 bits) are exact.
// Relative error of 1 + p(r): 2^-51.5, |r| <= 2.71e-3.
inline constexpr double double_inverse_step_128 = 0x1.71547652b82fep7;
inline constexpr double double_step_high_128 = 0x1.62e42feep-8;
inline constexpr double double_step_low_128 = 0x1.a39ef35793c76p-40;
inline constexpr double double_la_c3 = 0x1.55555b7bac73ap-3;
inline constexpr double double_la_c4 = 0x1.55555c2a9b1edp-5;

// Double, EP: the same step in one part.
// Relative error of 1 + p(r): 2^-28.2, |r| <= 2.71e-3.
inline constexpr double double_step_128 = 0x1.62e42fefa39efp-8;

}  // namespace tmk::exp_data
