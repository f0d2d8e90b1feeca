#pragma once
// Operations on masks (component I_Frame::COMPONENT_MASK, byte planes, non-zero = valid).

#include <BufferApi/Export.h>

namespace BufferApi {

class I_Frame;

namespace MaskOp {
// Copies mask plane `sourcePlane` of `source` into mask plane `targetPlane` of `target`, adding
// the target's mask first if it has none. A source without mask copies "all valid". Frames of
// different width or height, or a plane out of range, raise RTE::VerificationFailed.
BUFFERAPI_API void CopyMask(I_Frame* source, unsigned sourcePlane, I_Frame* target, unsigned targetPlane);
} // namespace MaskOp

} // namespace BufferApi
