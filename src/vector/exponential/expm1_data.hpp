// Made by tools/tables/vector/exponential/expm1.sollya.
#pragma once

namespace tmk::expm1_data {

// Relative error of 1 + p(r): 2^-39.7, |r| <= 2.71e-3.
inline constexpr double single_c2 = 0x1.0000051ff50eap-1;
inline constexpr double single_c3 = 0x1.55555d887706dp-3;

// Relative error of 1 + p(r): 2^-63.7, |r| <= 2.71e-3.
inline constexpr double double_la_c2 = 0x1.fffffffffff58p-2;
inline constexpr double double_la_c3 = 0x1.5555555555495p-3;
inline constexpr double double_la_c4 = 0x1.55555accc11c2p-5;
inline constexpr double double_la_c5 = 0x1.111115c092055p-7;

// Relative error of 1 + p(r): 2^-76, |r| <= 2.71e-3.
inline constexpr double double_c2 = 0x1p-1;
inline constexpr double double_c3 = 0x1.55555555554ddp-3;
inline constexpr double double_c4 = 0x1.55555555554b9p-5;
inline constexpr double double_c5 = 0x1.111114f8a7306p-7;
inline constexpr double double_c6 = 0x1.6c16c6e38218ep-10;

}  // namespace tmk::expm1_data
