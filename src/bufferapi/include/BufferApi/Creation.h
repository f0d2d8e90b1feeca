#pragma once
// Making buffers, frames and planes. Everything returned belongs to the caller. Sizes are checked:
// a zero width or height, a zero depth, an unknown element type or a size whose bytes overflow
// raise RTE::VerificationFailed; memory that cannot be had raises RTE::Exception.

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

namespace BufferApi {

// New empty buffer.
BUFFERAPI_API I_Buffer* CreateBuffer();
// A deep copy of any buffer (frames and attributes) in a new buffer of this library's own, for
// a caller that keeps the original and may change it at once.
BUFFERAPI_API I_Buffer* CreateBufferCopy(const I_Buffer& source);
// New image frame with a zero-filled pixel component of that size and type.
BUFFERAPI_API I_FrameImage* CreateImageFrame(E_DataType type, unsigned width, unsigned height, unsigned depth);
// New image frame whose pixel planes start with unspecified content, for a reader that writes
// every element of every plane before anybody reads the frame: it saves zero-filling memory that
// is overwritten anyway. Components added later are zero-filled as with CreateImageFrame.
BUFFERAPI_API I_FrameImage* CreateImageFrameForOverwrite(E_DataType type, unsigned width, unsigned height,
                                                         unsigned depth);
// New vector frames with zero-filled components "U", "V" (and "W").
BUFFERAPI_API I_FrameVector* CreateVectorFrame(E_DataType type, unsigned width, unsigned height, unsigned depth,
                                               unsigned gridSize);
BUFFERAPI_API I_FrameVector3C* CreateVector3CFrame(E_DataType type, unsigned width, unsigned height,
                                                   unsigned depth, unsigned gridSize);
// New plane of that type and size over the given memory, which the caller keeps alive and owns;
// with null data the plane allocates its own zero-filled, 4 KiB aligned memory.
BUFFERAPI_API I_PlaneBase* CreatePlane(E_DataType type, unsigned width, unsigned height, void* data);

} // namespace BufferApi
