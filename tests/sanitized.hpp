// SPDX-License-Identifier: Apache-2.0
// Whether the sanitizers watch: tests that take longest then do less of the same.
#pragma once

#ifdef __SANITIZE_ADDRESS__
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif
