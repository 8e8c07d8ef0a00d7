// SPDX-License-Identifier: Apache-2.0
// Versions: TMK_VERSION_MAJOR, _MINOR, _PATCH and _STRING, and TMK_VERSION, one number, are those of the
// headers.
#pragma once

#include <tmk/abi/version.h>

#include <string_view>

namespace tmk {

/// The version of the library that runs, such as "0.1.0". It may be newer than the headers:
/// TMK_VERSION_STRING.
inline std::string_view version() { return tmk_version_string(); }

}  // namespace tmk
