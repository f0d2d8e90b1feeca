#pragma once
// Symbol visibility of the DataObjects library: exported while it is built, imported by its users.
#if defined(_WIN32)
#  if defined(DATAOBJECTS_BUILDING)
#    define DATAOBJECTS_API __declspec(dllexport)
#  else
#    define DATAOBJECTS_API __declspec(dllimport)
#  endif
#else
#  define DATAOBJECTS_API __attribute__((visibility("default")))
#endif
