# What `cmake --install` puts down beside what tools/ and python/ add: library, headers, CMake package, pkg-config file,
# documents. Each rule has a component, which becomes a Debian package (packages.cmake).
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/quarn)

install(TARGETS quarn EXPORT quarnTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES include/quarn.h include/quarn.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT quarnTargets NAMESPACE quarn:: DESTINATION ${config_dir} COMPONENT development)

configure_package_config_file(cmake/quarnConfig.cmake.in ${PROJECT_BINARY_DIR}/quarnConfig.cmake
  INSTALL_DESTINATION ${config_dir} NO_SET_AND_CHECK_MACRO)
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/quarnConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/quarnConfig.cmake ${PROJECT_BINARY_DIR}/quarnConfigVersion.cmake
  DESTINATION ${config_dir} COMPONENT development)

# The prefix is written relative to the .pc file, so that an installed tree can be moved.
file(RELATIVE_PATH QUARN_PC_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" QUARN_PC_PREFIX "${QUARN_PC_PREFIX}")
configure_file(cmake/quarn.pc.in ${PROJECT_BINARY_DIR}/quarn.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quarn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Beside each other as in the sources, so that their links and commands hold.
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documents
  FILES_MATCHING REGEX "[.](md|json|net|csv|c|cpp|py|svg)$" PATTERN manual EXCLUDE)
