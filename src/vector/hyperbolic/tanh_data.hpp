// Made by tools/tables/vector/hyperbolic/tanh.sollya.
#pragma once

namespace tmk::tanh_data {

inline constexpr float saturated = 9;

// Relative error 2^-24.7.
inline constexpr float la_p[] = {0x1.120b1cp-3f, 0x1.ca2c74p-9f, 0x1.59c34cp-16f, 0x1.cadccp-27f};
inline constexpr float la_q[] = {0x1.de5ad8p-2f, 0x1.a7f7ecp-6f, 0x1.58861p-12f, 0x1.a18024p-21f};
// Relative error 2^-12.9.
inline constexpr float ep_p[] = {0x1.bd2e3ap-4f, 0x1.330b9ap-10f};
inline constexpr float ep_q[] = {0x1.c43f88p-2f, 0x1.f90f62p-7f, 0x1.33ecdap-15f};

}  // namespace tmk::tanh_data
