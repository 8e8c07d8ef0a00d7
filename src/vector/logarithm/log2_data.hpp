// Made by tools/tables/vector/logarithm/log2.sollya.
#pragma once

#include "vector/logarithm/log_row.hpp"

namespace tmk::log2_data {

// Single. log2(e) has a high part of 5 bits. Rows by the first 5 fraction bits, cut off, with high
// parts of 16 bits after the point, biased by -127: their sums with the exponent field are exact. Centers
// are 1/16 apart, and half that near 2; the last is 2 itself, so that x - 1 is t just below 1.
inline constexpr float single_e_high = 0x1.7p0f;
// Error relative to t at most 2^-32.2 for |t| <= 3.1494e-2.
inline constexpr float single_ha_polynomial[] = {
    0x1.547652p-8f,
    -0x1.715476p-1f,
    0x1.ec70c6p-2f,
    -0x1.715c92p-2f,
    0x1.272f28p-2f,
    -0x1.bf463cp-3f,
};

// Error relative to t at most 2^-25.6 for |t| <= 3.1494e-2.
inline constexpr float single_la_polynomial[] = {
    0x1.715476p0f,
    -0x1.715474p-1f,
    0x1.ec84f2p-2f,
    -0x1.71a12ap-2f,
    0x1.cf4bc8p-3f,
};

// Error relative to t at most 2^-13.7 for |t| <= 0.333333.
inline constexpr float single_ep_polynomial[] = {
    0x1.7155dap0f,
    -0x1.70cb14p-1f,
    0x1.e9f434p-2f,
    -0x1.96d0ccp-2f,
    0x1.55c268p-2f,
};

inline constexpr log_row<float> single_rows[] = {
    {0x1p0f, -0x1.fcp6f, 0x0p0f},
    {0x1.e1ep-1f, -0x1.fba66cp6f, 0x1.a13fep-18f},
    {0x1.e1ep-1f, -0x1.fba66cp6f, 0x1.a13fep-18f},
    {0x1.c72p-1f, -0x1.fb520cp6f, 0x1.4737b6p-18f},
    {0x1.c72p-1f, -0x1.fb520cp6f, 0x1.4737b6p-18f},
    {0x1.af2p-1f, -0x1.fb0204p6f, 0x1.90a976p-18f},
    {0x1.af2p-1f, -0x1.fb0204p6f, 0x1.90a976p-18f},
    {0x1.99ap-1f, -0x1.fab67p6f, 0x1.be8e5ap-20f},
    {0x1.99ap-1f, -0x1.fab67p6f, 0x1.be8e5ap-20f},
    {0x1.862p-1f, -0x1.fa6e6p6f, -0x1.31bf2cp-18f},
    {0x1.862p-1f, -0x1.fa6e6p6f, -0x1.31bf2cp-18f},
    {0x1.746p-1f, -0x1.fa2998p6f, 0x1.b36b06p-18f},
    {0x1.746p-1f, -0x1.fa2998p6f, 0x1.b36b06p-18f},
    {0x1.642p-1f, -0x1.f9e7acp6f, 0x1.21ca5p-19f},
    {0x1.642p-1f, -0x1.f9e7acp6f, 0x1.21ca5p-19f},
    {0x1.556p-1f, -0x1.f9a92cp6f, -0x1.c0ee34p-18f},
    {0x1.556p-1f, -0x1.f9a92cp6f, -0x1.c0ee34p-18f},
    {0x1.47ap-1f, -0x1.f96c7p6f, -0x1.7aa4dap-18f},
    {0x1.47ap-1f, -0x1.f96c7p6f, -0x1.7aa4dap-18f},
    {0x1.3b2p-1f, -0x1.f932f8p6f, -0x1.a2490ap-18f},
    {0x1.3b2p-1f, -0x1.f932f8p6f, -0x1.a2490ap-18f},
    {0x1.2f6p-1f, -0x1.f8fad8p6f, 0x1.a08224p-18f},
    {0x1.2f6p-1f, -0x1.f8fad8p6f, 0x1.a08224p-18f},
    {0x1.24ap-1f, -0x1.f8c588p6f, -0x1.fe8cbcp-18f},
    {0x1.24ap-1f, -0x1.f8c588p6f, -0x1.fe8cbcp-18f},
    {0x1.1dp-1f, -0x1.f89e88p6f, -0x1.46d9a8p-19f},
    {0x1.182p-1f, -0x1.f8850cp6f, 0x1.bc5b4p-20f},
    {0x1.136p-1f, -0x1.f86bc8p6f, 0x1.69a678p-20f},
    {0x1.0ecp-1f, -0x1.f852cp6f, -0x1.d47816p-18f},
    {0x1.0a6p-1f, -0x1.f83abp6f, -0x1.80ad36p-19f},
    {0x1.062p-1f, -0x1.f822fp6f, 0x1.f7bc58p-18f},
    {0x1p-1f, -0x1.f8p6f, 0x0p0f},
};

// Double. log2(e) has a high part of 10 bits after the point.
inline constexpr double double_e_high = 0x1.714p0;
// Error relative to t at most 2^-63.5 for |t| <= 4.15e-3.
inline constexpr double double_ha_polynomial[] = {
    0x1.47652b82fe177p-12,
    -0x1.71547652b82ffp-1,
    0x1.ec709dc3a04dfp-2,
    -0x1.71547651ea3cdp-2,
    0x1.2776c4f54f398p-2,
    -0x1.ec73777208b9ep-3,
    0x1.a63348884de09p-3,
};

// Error relative to t at most 2^-54.2 for |t| <= 4.15e-3.
inline constexpr double double_la_polynomial[] = {
    0x1.71547652b82fep0,
    -0x1.71547652b83p-1,
    0x1.ec709dc33f5d3p-2,
    -0x1.715476517f3bep-2,
    0x1.277803e20ff63p-2,
    -0x1.ec740b39edba7p-3,
};

// Error relative to t at most 2^-27.2 for |t| <= 4.15e-3.
inline constexpr double double_ep_polynomial[] = {
    0x1.71547652a0a7p0,
    -0x1.715512ad3c3b3p-1,
    0x1.ec723eb56f35ap-2,
};

}  // namespace tmk::log2_data
