# Code shared by the test programs and fuzz targets: support/ (helpers, replaced allocation), oracle/ (brute-force answers).
find_package(GTest REQUIRED)
set(QUARN_NETWORKS_DIR ${PROJECT_SOURCE_DIR}/../shared/networks CACHE PATH
  "Optional folder of larger networks with reference answers; tests that need an absent file skip themselves")

add_library(quarn_test_base INTERFACE)
target_include_directories(quarn_test_base INTERFACE ${PROJECT_SOURCE_DIR}/include
  ${CMAKE_CURRENT_LIST_DIR}/support ${CMAKE_CURRENT_LIST_DIR}/oracle)
target_compile_definitions(quarn_test_base INTERFACE
  QUARN_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
  QUARN_NETWORKS_DIR="${QUARN_NETWORKS_DIR}"
  $<$<BOOL:${QUARN_INSTRUMENTED}>:QUARN_INSTRUMENTED>)
target_link_libraries(quarn_test_base INTERFACE GTest::gmock)

set(helpers "")
foreach(folder support oracle)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/${folder}/*.cpp)
  if(sources)
    add_library(quarn_test_${folder} STATIC ${sources})
    target_link_libraries(quarn_test_${folder} PRIVATE quarn_test_base)
    quarn_warnings(quarn_test_${folder})
    list(PREPEND helpers quarn_test_${folder})
  endif()
endforeach()
