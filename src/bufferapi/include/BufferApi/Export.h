#pragma once
// Symbol visibility of the BufferApi library: exported while it is built, imported by its users.
#if defined(_WIN32)
#  if defined(BUFFERAPI_BUILDING)
#    define BUFFERAPI_API __declspec(dllexport)
#  else
#    define BUFFERAPI_API __declspec(dllimport)
#  endif
#else
#  define BUFFERAPI_API __attribute__((visibility("default")))
#endif
