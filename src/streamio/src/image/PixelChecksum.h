#pragma once
// XXH3-64, the checksum of an image stream's pixel data. Where the xxHash library offers it, the
// build takes its x86 dispatch, which picks the SSE2, AVX2 or AVX-512 code at run time: the same
// hash values, at the speed of the processor at hand rather than that of the oldest x86-64.

#include <xxhash.h>

#if defined(SETAPI_XXH3_DISPATCH)
#include <xxh_x86dispatch.h> // redefines XXH3_64bits and XXH3_64bits_update to the dispatching ones
#endif
