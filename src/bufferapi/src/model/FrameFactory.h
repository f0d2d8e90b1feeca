#pragma once
// Making frames with a chosen plane memory policy, for the buffer file reader and the public
// creation functions. The policy is kept by the frame: components added later (AddComponent,
// AddMask, typed scalars) get their planes the same way, and a clone keeps it too. The public
// creation functions use Zeroed.

#include "model/PlaneMemory.h"

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>
#include <BufferApi/I_Frame.h>

#include <memory>

namespace BufferApi {
namespace Private {

// A frame of that kind with its standard components: "PIXEL" for images; "U", "V" for vectors;
// "U", "V", "W" for 3-component vectors, all of `type`. `gridSize` is ignored for images.
// A zero width, height or depth, an unknown type or a plane size that overflows raise
// RTE::VerificationFailed; memory that cannot be had raises RTE::Exception.
BUFFERAPI_API std::unique_ptr<I_Frame> CreateFrame(E_FrameKind kind, E_DataType type, unsigned width, unsigned height,
                                                   unsigned depth, unsigned gridSize, PlaneMemory memory);

// The same frame without any component: the caller adds them in the order it wants.
BUFFERAPI_API std::unique_ptr<I_Frame> CreateEmptyFrame(E_FrameKind kind, E_DataType type, unsigned width,
                                                        unsigned height, unsigned depth, unsigned gridSize,
                                                        PlaneMemory memory);

// The policy of a frame made here (also through the public creation functions or a clone).
// A frame of another implementation raises RTE::VerificationFailed.
BUFFERAPI_API PlaneMemory GetPlaneMemory(const I_Frame& frame);

// Switches between Uninitialised and Zeroed. A reader that made a frame Uninitialised switches it
// to Zeroed before it hands the frame over, so that components its users add later are zero-filled
// as I_Frame::AddComponent promises. A switch from or to None (which would make HasData() lie
// about the planes) raises RTE::VerificationFailed.
BUFFERAPI_API void SetPlaneMemory(I_Frame& frame, PlaneMemory memory);

} // namespace Private
} // namespace BufferApi
