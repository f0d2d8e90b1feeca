# One option away: -DSETAPI_SANITIZE=address (ASan with UBSan) or -DSETAPI_SANITIZE=thread (TSan).
if(SETAPI_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
elseif(SETAPI_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(NOT SETAPI_SANITIZE STREQUAL "")
  message(FATAL_ERROR "SETAPI_SANITIZE must be empty, 'address' or 'thread', not '${SETAPI_SANITIZE}'")
endif()

# The libraries' parallel loops (OpenMP) go through setapi_openmp. ThreadSanitizer cannot see the
# synchronisation inside the system's OpenMP runtime and would report every parallel loop, so a
# TSan build compiles the loops serial; their partitioning is proven by the plain and ASan builds.
add_library(setapi_openmp INTERFACE)
if(SETAPI_SANITIZE STREQUAL "thread")
  target_compile_options(setapi_openmp INTERFACE -Wno-unknown-pragmas)
else()
  target_link_libraries(setapi_openmp INTERFACE OpenMP::OpenMP_CXX)
endif()
