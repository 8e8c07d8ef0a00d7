// Made by tools/tables/vector/complex_logarithm/pow.sollya.
#pragma once

namespace tmk::complex_pow_data {

// Relative error 2^-67.8.
constexpr double arctangent[] = {
    -0x1.5555555555555p-2,
    0x1.9999999998f06p-3,
    -0x1.249249218dd02p-3,
    0x1.c71c65bc86c3ap-4,
    -0x1.745138a67dbeep-4,
    0x1.3562ad8bf98fdp-4,
};
// Relative error 2^-57.9.
constexpr double sine[] = {
    -0x1.5555555555548p-3,
    0x1.111111110f76p-7,
    -0x1.a01a019bf2b7ap-13,
    0x1.71de355fa46d5p-19,
    -0x1.ae5e54ffce7d4p-26,
    0x1.5d8e6226d3873p-33,
};
// Relative error 2^-63.9.
constexpr double cosine[] = {
    0x1.555555555554bp-5,
    -0x1.6c16c16c15018p-10,
    0x1.a01a019c8f942p-16,
    -0x1.27e4f7f1ee40dp-22,
    0x1.1ee9dc126f598p-29,
    -0x1.8fa6a868312e5p-37,
};
// Relative error 2^-37.5.
constexpr double short_sine[] = {
    -0x1.5555554c71c66p-3,
    0x1.1111086a596f2p-7,
    -0x1.a00f7f225008fp-13,
    0x1.6cd1f123a05bep-19,
};
// Relative error 2^-33.
constexpr double short_cosine[] = {
    0x1.55554a1150997p-5,
    -0x1.6c0c33a1607b7p-10,
    0x1.99eb9a523b5p-16,
};

}  // namespace tmk::complex_pow_data
