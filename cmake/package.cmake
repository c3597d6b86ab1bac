# What `cmake --install` puts down: library, header, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quarn)

install(TARGETS quarn EXPORT quarnTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/quarn.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT quarnTargets NAMESPACE quarn:: DESTINATION ${config_dir})

configure_package_config_file(cmake/quarnConfig.cmake.in ${PROJECT_BINARY_DIR}/quarnConfig.cmake
  INSTALL_DESTINATION ${config_dir} NO_SET_AND_CHECK_MACRO)
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quarnConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quarnConfig.cmake ${PROJECT_BINARY_DIR}/quarnConfigVersion.cmake
  DESTINATION ${config_dir})

# The prefix is written relative to the .pc file, so that an installed tree can be moved.
file(RELATIVE_PATH QUARN_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" QUARN_PC_PREFIX "${QUARN_PC_PREFIX}")
configure_file(cmake/quarn.pc.in ${PROJECT_BINARY_DIR}/quarn.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quarn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
