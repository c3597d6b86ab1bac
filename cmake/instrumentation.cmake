# Sanitizers, coverage and fuzzing. QUARN_INSTRUMENTED tells the tests that look at the binaries themselves to stay away.
set(QUARN_INSTRUMENTED OFF)

if(QUARN_BUILD_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "QUARN_BUILD_FUZZ needs clang: libFuzzer is part of it (the preset 'fuzz' chooses it)")
  endif()
  if(QUARN_SANITIZE)
    message(FATAL_ERROR "QUARN_BUILD_FUZZ brings its own sanitizers: leave QUARN_SANITIZE empty")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined)
  add_link_options(-fsanitize=address,undefined)
elseif(QUARN_SANITIZE)
  add_compile_options(-fsanitize=${QUARN_SANITIZE})
  add_link_options(-fsanitize=${QUARN_SANITIZE})
endif()

if(QUARN_BUILD_FUZZ OR QUARN_SANITIZE)
  set(QUARN_INSTRUMENTED ON)
  add_compile_options(-fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_compile_definitions(_GLIBCXX_ASSERTIONS)
endif()

if(QUARN_COVERAGE)
  set(QUARN_INSTRUMENTED ON)
  add_compile_options(--coverage -fprofile-update=atomic)  # counted right in several threads
  add_link_options(--coverage)
endif()
