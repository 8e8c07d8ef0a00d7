// SPDX-License-Identifier: Apache-2.0
// The generators that seeds make random streams of, on every machine.
#pragma once

#include <tmk/random.hpp>

namespace tmk {

inline constexpr generator every[] = {generator::mcg31m1, generator::r250,      generator::mrg32k3a,
                                      generator::mcg59,   generator::wh,        generator::mt19937,
                                      generator::mt2203,  generator::sfmt19937, generator::philox4x32x10};

}  // namespace tmk
