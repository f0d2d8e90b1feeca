# One option away: -DSETAPI_FUZZ=ON builds a libFuzzer program per reader (fuzz/), with ASan and
# UBSan. It needs clang; scripts/fuzz.sh configures the preset "fuzz" with clang-14.
option(SETAPI_FUZZ "Build the libFuzzer targets (clang; implies ASan with UBSan)" OFF)
if(SETAPI_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "SETAPI_FUZZ needs clang (libFuzzer), not ${CMAKE_CXX_COMPILER_ID}")
  endif()
  if(SETAPI_SANITIZE STREQUAL "")
    set(SETAPI_SANITIZE address CACHE STRING "Sanitizer build: empty, 'address' (ASan with UBSan) or 'thread' (TSan)" FORCE)
  elseif(NOT SETAPI_SANITIZE STREQUAL "address")
    message(FATAL_ERROR "SETAPI_FUZZ runs with SETAPI_SANITIZE=address only")
  endif()
  # Every library is instrumented for coverage; only the fuzz programs link libFuzzer's main.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
