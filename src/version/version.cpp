// SPDX-License-Identifier: Apache-2.0
#include <tmk/abi/version.h>

int tmk_version() { return TMK_VERSION; }

const char* tmk_version_string() { return TMK_VERSION_STRING; }
