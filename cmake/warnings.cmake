# Warnings are for our own code only, and errors only on request: a newer compiler must not break a user's build.
# With several files in one (CMAKE_UNITY_BUILD), what one has at namespace scope is shadowed in the next, which is no mistake.
function(quarn_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wconversion -Wsign-conversion $<$<NOT:$<BOOL:${CMAKE_UNITY_BUILD}>>:-Wshadow>
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)
  # g++ 12 sees an overlap in the standard library's own string concatenation where there is none.
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
  endif()
  if(QUARN_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
