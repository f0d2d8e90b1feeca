#pragma once
// Symbol visibility of the stream components: exported while it is built, imported by its users.
#if defined(_WIN32)
#  if defined(STREAMIO_BUILDING)
#    define STREAMIO_API __declspec(dllexport)
#  else
#    define STREAMIO_API __declspec(dllimport)
#  endif
#else
#  define STREAMIO_API __attribute__((visibility("default")))
#endif
