# SPDX-License-Identifier: Apache-2.0
# Of use to those who build often; a user's build of the library does not read this.
find_program(TMK_CCACHE ccache)
if(TMK_CCACHE)
  # Without these, units with precompiled headers are not cached. What a header holds is compared all the same.
  set(TMK_CCACHE_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
                          ${TMK_CCACHE})
  foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_LAUNCHER ${TMK_CCACHE_LAUNCHER})
  endforeach()
endif()
