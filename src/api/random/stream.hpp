// SPDX-License-Identifier: Apache-2.0
// What the two files of the random interface share.
#pragma once

#include <tmk/abi/vts.h>

#include <string>

namespace tmk::detail {

// Throw for a negative status of the C interface, with its sentence; the second blames the stream.
void check_status(const char* function, const char* argument, const std::string& value, int32_t status);
void check_status(const char* function, VtsStreamHandle g, int32_t status);

}  // namespace tmk::detail
