// SPDX-License-Identifier: Apache-2.0
// The words that a generator's state is made of, from what a caller has for a seed.
#pragma once

#include <cstdint>
#include <tmk/seed_sequence.hpp>
#include <vector>

namespace tmk::detail {

// As many words as the generator of that identifier takes. Seeds that differ in one bit, and identifiers that
// differ in kind or set, give words that have nothing in common.
std::vector<std::uint32_t> expand_seed(const seed_sequence& seeds, std::int32_t id);

}  // namespace tmk::detail
