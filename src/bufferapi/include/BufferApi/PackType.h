#pragma once
// How a buffer's planes are packed when it is written to a file. Passed to ExportBuffer as the
// integer option "PackType" and through to the stream writers.

namespace BufferApi {

// The underlying type is fixed, so that every int is a value of the type: callers pass other
// numbers for the fast pack.
enum BufferPackType_t : int {
    BUFFER_PACK_NONE = 0, // planes stored as they lie in memory
    BUFFER_PACK_FAST = 1, // the library's own fast lossless pack ("IMX"); any value but 0 and 2 means it
    BUFFER_PACK_ZLIB = 2  // zlib
};

} // namespace BufferApi
