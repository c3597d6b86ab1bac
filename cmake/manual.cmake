# The reference manual: HTML from the comments of the public headers (target `manual`). A test sees to it that there is a
# comment to every function and that none refers to nothing, wherever doxygen is at hand.
find_program(QUARN_DOXYGEN doxygen)

set(QUARN_MANUAL_DIR ${PROJECT_BINARY_DIR}/manual)
configure_file(${PROJECT_SOURCE_DIR}/cmake/manual/Doxyfile.in ${QUARN_MANUAL_DIR}/Doxyfile @ONLY)

if(QUARN_BUILD_MANUAL)
  if(NOT QUARN_DOXYGEN)
    message(FATAL_ERROR "The manual needs doxygen: scripts/setup manual")
  endif()
  add_custom_target(manual
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${QUARN_MANUAL_DIR}/html
    COMMAND ${QUARN_DOXYGEN} ${QUARN_MANUAL_DIR}/Doxyfile
    COMMENT "Writing ${QUARN_MANUAL_DIR}/html/index.html" VERBATIM)
endif()

if(QUARN_BUILD_TESTS AND QUARN_DOXYGEN)
  add_test(NAME manual
    COMMAND ${PROJECT_SOURCE_DIR}/tests/scripts/manual.sh ${QUARN_DOXYGEN} ${QUARN_MANUAL_DIR}/Doxyfile ${PROJECT_SOURCE_DIR})
endif()
