# SPDX-License-Identifier: Apache-2.0
# Of use to those who build often; a user's build of the library does not read this.
find_program(TMK_CCACHE ccache)
if(TMK_CCACHE)
  foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_LAUNCHER ${TMK_CCACHE} CACHE STRING "")
  endforeach()
endif()
