// SPDX-License-Identifier: Apache-2.0
// What kernels include: registers of the tier, the small functions of its instruction set, partial moves and
// tables. Vector intrinsics are used in src/simd, and elsewhere only by the generator that consists of AES
// rounds.
#pragma once

#include "simd/instructions.hpp"  // IWYU pragma: export
#include "simd/partial.hpp"       // IWYU pragma: export
#include "simd/tables.hpp"        // IWYU pragma: export
#include "simd/types.hpp"         // IWYU pragma: export
