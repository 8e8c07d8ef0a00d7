// Made by tools/tables/vector/exponential/exp2.sollya.
#pragma once

namespace tmk::exp2_data {

// Relative error of 1 + p(r): 2^-27.1, |r| <= 7.81e-3.
inline constexpr float single_c1 = 0x1.62e486p-1f;
inline constexpr float single_c2 = 0x1.ebfbfap-3f;

// Relative error of 1 + p(r): 2^-59.3, |r| <= 7.81e-3.
inline constexpr double double_c1 = 0x1.62e42fefa39efp-1;
inline constexpr double double_c2 = 0x1.ebfbdff82a22ep-3;
inline constexpr double double_c3 = 0x1.c6b08d707706fp-5;
inline constexpr double double_c4 = 0x1.3b2ad33f8ac14p-7;
inline constexpr double double_c5 = 0x1.5d870c4d829b3p-10;

}  // namespace tmk::exp2_data
