# What a user gets: headers, both libraries, and their descriptions for CMake and pkg-config.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

add_library(tmk::tmk ALIAS tmk)
add_library(tmk::tmk_static ALIAS tmk_static)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tmk DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${TMK_PROTOTYPES} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tmk/abi)

# Two export sets: the static library needs a C++ link and OpenMP, which a C project may not have.
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
