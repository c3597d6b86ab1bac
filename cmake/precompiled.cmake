# Headers that most files of a target include are compiled once (option QUARN_PRECOMPILE), which takes a quarter off the time
# for a file of the library. It hides includes that are missing, so it is off in daily work. It does not pay for the command:
# the inline functions of the headers of command-line parser and JSON cost more in every file than reading them.

set(quarn_standard_headers
  <algorithm> <array> <cstddef> <cstdint> <exception> <functional> <limits> <map> <memory> <numeric> <optional> <ranges>
  <set> <span> <stdexcept> <string> <string_view> <tuple> <unordered_map> <utility> <vector>)

# g++ 12 warns about the standard library itself where it does not come from a file of the system.
set(quarn_precompiled_options "")
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  set(quarn_precompiled_options
    $<$<COMPILE_LANGUAGE:CXX>:-Wno-array-bounds> $<$<COMPILE_LANGUAGE:CXX>:-Wno-stringop-overflow>
    $<$<COMPILE_LANGUAGE:CXX>:-Wno-stringop-overread>)
endif()

# quarn_precompile(TARGET [HEADER...]): the headers of the standard library and these.
function(quarn_precompile target)
  if(QUARN_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${quarn_standard_headers} ${ARGN})
    target_compile_options(${target} PRIVATE ${quarn_precompiled_options})
  endif()
endfunction()

# With those of another target, which is compiled with the same options.
function(quarn_reuse_precompiled target other)
  if(QUARN_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${other})
    target_compile_options(${target} PRIVATE ${quarn_precompiled_options})
  endif()
endfunction()
