# Compiler settings that every target of ours shares.

# A compiler cache is used where there is one. Precompiled headers and its default strictness do not go together, so the
# laxness that they need is passed along, whoever asked for the cache.
if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(KR_CCACHE ccache)
  mark_as_advanced(KR_CCACHE)
  if(KR_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${KR_CCACHE}")
  endif()
endif()
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache$")
  list(PREPEND CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env "CCACHE_SLOPPINESS=pch_defines,time_macros")
  set(KR_CCACHE_USED TRUE)
endif()

# kr_compile_options(<target>): the flags of our own code.
function(kr_compile_options target)
  # Percentages are compared digit for digit, so no multiplication may be fused with an addition.
  target_compile_options(${target} PRIVATE -ffp-contract=off -Wall -Wextra -Wpedantic -Wconversion)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 sees uninitialised members in the arms of a std::variant that are not the live one.
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
  elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    # In C++, GCC's -Wconversion leaves signs alone; both compilers shall ask for the same.
    target_compile_options(${target} PRIVATE -Wno-sign-conversion)
  endif()
  if(KR_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(KR_CCACHE_USED AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -fpch-preprocess)
  endif()
endfunction()

if(KR_SANITIZE)
  # For every target, the fuzz programs' and the installed host's included: a mixed program reports nonsense.
  add_compile_options(-fsanitize=${KR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KR_SANITIZE})
endif()

if(KR_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "KR_FUZZ needs Clang: libFuzzer is part of it")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
