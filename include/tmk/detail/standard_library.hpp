// SPDX-License-Identifier: Apache-2.0
// The standard library that the C++ API needs: its vectors and strings cross the library's border.
#pragma once

#include <string>

#ifndef __GLIBCXX__
#error "tmk's C++ API needs GCC's standard library (clang: -stdlib=libstdc++)"
#elif defined(_GLIBCXX_DEBUG) && !defined(TMK_GLIBCXX_DEBUG)
#error \
    "_GLIBCXX_DEBUG changes std::vector, which tmk returns; use _GLIBCXX_ASSERTIONS, or compile tmk with _GLIBCXX_DEBUG, too, and define TMK_GLIBCXX_DEBUG"
#endif
