// Made by tools/tables/vector/hyperbolic/tanh.sollya.
#pragma once

namespace tmk::tanh_data {

constexpr float saturated = 9;
// Relative error 2^-12.9.
constexpr float p[] = {0x1.bd2e3ap-4f, 0x1.330b9ap-10f};
constexpr float q[] = {0x1.c43f88p-2f, 0x1.f90f62p-7f, 0x1.33ecdap-15f};

}  // namespace tmk::tanh_data
