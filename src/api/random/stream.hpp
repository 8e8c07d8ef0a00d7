// SPDX-License-Identifier: Apache-2.0
// Statuses of streams as tmk::error.
#pragma once

#include <tmk/abi/vts.h>

#include <string>

namespace tmk::detail {

// Throw for a negative status; the second one names the stream's generator as argument g.
void check_status(const char* function, const char* argument, const std::string& value, int32_t status);
void check_status(const char* function, VtsStreamHandle g, int32_t status);

}  // namespace tmk::detail
