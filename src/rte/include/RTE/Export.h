#pragma once
// Symbol visibility of the RTE library: exported while it is built, imported by its users.
#if defined(_WIN32)
#  if defined(RTE_BUILDING)
#    define RTE_API __declspec(dllexport)
#  else
#    define RTE_API __declspec(dllimport)
#  endif
#else
#  define RTE_API __attribute__((visibility("default")))
#endif
