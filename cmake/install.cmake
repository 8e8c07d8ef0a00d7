# SPDX-License-Identifier: Apache-2.0
# What a user gets: headers, both libraries, their descriptions for CMake and pkg-config, and the pages.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tmk DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${TMK_PROTOTYPES} ${TMK_GENERATED}/tmk/abi/version.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tmk/abi)

# Two export sets: the static library needs a C++ link and a BLAS, which a project may not have.
set(TMK_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tmk)
foreach(library tmk tmk_static)
  install(TARGETS ${library} EXPORT ${library}_targets)
  install(EXPORT ${library}_targets NAMESPACE tmk:: DESTINATION ${TMK_CMAKE_DIR})
endforeach()

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/tmkConfig.cmake.in tmkConfig.cmake
                              INSTALL_DESTINATION ${TMK_CMAKE_DIR})
write_basic_package_version_file(tmkConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tmkConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/tmkConfigVersion.cmake
        DESTINATION ${TMK_CMAKE_DIR})

file(RELATIVE_PATH TMK_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/tmk.pc.in tmk.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tmk.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES LICENSE NOTICE README.md CHANGELOG.md SECURITY.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples data DESTINATION ${CMAKE_INSTALL_DOCDIR} PATTERN CMakeLists.txt EXCLUDE)
