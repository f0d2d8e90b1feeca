#pragma once
// The attributes of a buffer: the global ones and one store per frame (in frame order).

#include <DataObjects/C_Attributes.h>

#include <string>
#include <vector>

namespace BufferApi {
class I_Buffer;
}

namespace DataObjects {

struct DATAOBJECTS_API GlobalAndFrameAttributes {
    C_Attributes global;
    std::vector<C_Attributes> frames;

    // The global attribute of that name; a null value when there is none.
    C_AttributeValue GetAttributeValue(const std::string& name) const { return global.GetAttributeValue(name); }
    // Whether there is a store for at least one frame.
    bool HasFrameAttributes() const { return !frames.empty(); }

    bool operator==(const GlobalAndFrameAttributes& other) const
    {
        return global == other.global && frames == other.frames;
    }
    bool operator!=(const GlobalAndFrameAttributes& other) const { return !(*this == other); }
};

// All attributes of the buffer, with one frame store per frame of the buffer (empty ones too).
// Works on a head buffer as well.
DATAOBJECTS_API GlobalAndFrameAttributes GetBufferAttributes(const BufferApi::I_Buffer& buffer);

} // namespace DataObjects
