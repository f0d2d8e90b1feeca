#pragma once
// The attributes of a buffer: the global ones and those of each frame, as name and text value.

#include <DataObjects/Export.h>

#include <string>
#include <utility>
#include <vector>

namespace DataObjects {

struct DATAOBJECTS_API GlobalAndFrameAttributes {
    using AttributeList = std::vector<std::pair<std::string, std::string>>;
    AttributeList global;
    std::vector<AttributeList> frames;
};

} // namespace DataObjects
