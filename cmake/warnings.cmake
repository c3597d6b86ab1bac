# Warnings are for our own code only, and errors only on request: a newer compiler must not break a user's build.
function(quarn_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)
  # g++ 12 sees an overlap in the standard library's own string concatenation where there is none.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
  endif()
  if(QUARN_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
