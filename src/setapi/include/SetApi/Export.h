#pragma once
// Symbol visibility of the SetApi library: exported while it is built, imported by its users.
#if defined(_WIN32)
#  if defined(SETAPI_BUILDING)
#    define SETAPI_API __declspec(dllexport)
#  else
#    define SETAPI_API __declspec(dllimport)
#  endif
#else
#  define SETAPI_API __attribute__((visibility("default")))
#endif
