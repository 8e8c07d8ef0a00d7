// Made by tools/tables/vector/logarithm/log1p.sollya.
#pragma once

#include "vector/logarithm/log_row.hpp"

namespace tmk::log1p_data {

// Error relative to t at most 2^-63.5 for |t| <= 4.15e-3.
inline constexpr double double_polynomial[] = {
    -0x1.0000000000001p-1,
    0x1.5555555555558p-2,
    -0x1.fffffffe9f4cdp-3,
    0x1.999999980f2b1p-3,
    -0x1.5557799fc550bp-3,
    0x1.249463cd1c18dp-3,
};

// Error relative to t at most 2^-36.5 for |t| <= 4.15e-3.
inline constexpr double single_polynomial[] = {
    -0x1.ffffffffa5e7dp-2,
    0x1.555614de2625fp-2,
    -0x1.00011079dea17p-2,
};

}  // namespace tmk::log1p_data
