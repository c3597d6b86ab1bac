# Debian packages by CPack, one for each component of the installation: scripts/package sets them up and builds them.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL library development tools python documents)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # it would come before the descriptions below
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Quarn developers <quarn@quarn.invalid>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(debian ${CMAKE_CURRENT_LIST_DIR}/debian)
string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # or that of SOURCE_DATE_EPOCH
configure_file(${debian}/changelog.in ${PROJECT_BINARY_DIR}/debian/changelog @ONLY)
execute_process(COMMAND gzip -9nk --force ${PROJECT_BINARY_DIR}/debian/changelog COMMAND_ERROR_IS_FATAL ANY)

# The package that a component becomes, with the documents that each must have.
macro(quarn_package component name section depends kind contents)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "exact inference in probabilistic graphical models - ${kind}
Quarn reads or builds Bayesian networks, influence diagrams and LIMIDs over
discrete and conditional-Gaussian variables, and answers with exact beliefs,
expected utilities and the probability of the evidence.

This package holds ${contents}.")
  install(FILES ${debian}/copyright DESTINATION share/doc/${name} COMPONENT ${component})
  install(FILES ${PROJECT_BINARY_DIR}/debian/changelog.gz DESTINATION share/doc/${name}
    COMPONENT ${component})
endmacro()

set(library_package libquarn${PROJECT_VERSION_MAJOR})
set(same_library "${library_package} (= ${PROJECT_VERSION})")
quarn_package(library ${library_package} libs "" "library" "the shared library")
quarn_package(development libquarn-dev libdevel "${same_library}" "development files"
  "the C and C++ headers, and what CMake and pkg-config need")
quarn_package(tools quarn science "${same_library}" "command" "the command quarn")
quarn_package(python python3-quarn python "${same_library}, python3, python3-cffi" "Python package"
  "the package quarn for Python 3")
quarn_package(documents quarn-doc doc "" "documents" "the documents and examples")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${debian}/library/triggers)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS graphviz)
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS python3-numpy)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA ${debian}/python/postinst ${debian}/python/prerm)
set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_ARCHITECTURE all)

# Debian's pages are compressed.
install(CODE [[
  file(GLOB pages $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/man/man*/*.[1-9])
  if(pages)
    execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
  endif()
]] COMPONENT tools)

include(CPack)
