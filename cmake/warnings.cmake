# Warnings are for our own code only, and errors only on request: a newer compiler must not break a user's build.
function(quarn_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wconversion -Wsign-conversion -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast>)
  if(QUARN_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()
