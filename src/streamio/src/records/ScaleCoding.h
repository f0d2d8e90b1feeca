#pragma once
// A scale in the binary side-stream layouts: f64 factor, f64 offset, then unit and description as
// texts (u32 byte count + UTF-8). At least 24 bytes.

#include "records/ByteCoding.h"

#include <RTE/Scale.h>

namespace SetApi {
namespace Private {
namespace Records {

constexpr std::uint32_t kMinScaleBytes = 8 + 8 + 4 + 4;

inline void WriteScale(ByteWriter& out, const RTE::S_Scale& scale)
{
    out.F64(scale.factor);
    out.F64(scale.offset);
    out.Str(scale.unit.toUtf8());
    out.Str(scale.description.toUtf8());
}

inline RTE::S_Scale ReadScale(ByteReader& in)
{
    RTE::S_Scale scale;
    scale.factor = in.F64();
    scale.offset = in.F64();
    scale.unit = in.Str();
    scale.description = in.Str();
    return scale;
}

} // namespace Records
} // namespace Private
} // namespace SetApi
