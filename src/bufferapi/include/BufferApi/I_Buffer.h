#pragma once
// An in-memory buffer: an owned, ordered list of frames with buffer attributes. A buffer made by
// ImportBuffer, CreateBuffer or a set's LoadBuffer belongs to the caller.
// The frame model and the buffer files are being built; this interface is what sets hand around.

#include <BufferApi/Export.h>

namespace BufferApi {

class BUFFERAPI_API I_Buffer {
public:
    virtual ~I_Buffer();
    // Number of frames.
    virtual unsigned GetNumberOfFrames() const = 0;
};

} // namespace BufferApi
