#include <DataObjects/BufferStructureInformation.h>

namespace DataObjects {

bool BufferStructureInformation::operator==(const BufferStructureInformation& other) const
{
    return frameCount == other.frameCount && width == other.width && height == other.height &&
           depth == other.depth && dataType == other.dataType && isImage == other.isImage &&
           isVector == other.isVector && isVector3C == other.isVector3C && hasMask == other.hasMask &&
           vectorGridSize == other.vectorGridSize;
}

} // namespace DataObjects
