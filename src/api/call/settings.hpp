// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace tmk::detail {

// Puts the widest tier in force unless the process has selected one; throws tmk::error for a malformed
// TMK_TIER.
void select_first_tier();

}  // namespace tmk::detail
