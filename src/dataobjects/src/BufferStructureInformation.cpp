#include <DataObjects/BufferStructureInformation.h>

#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

namespace DataObjects {

bool BufferStructureInformation::operator==(const BufferStructureInformation& other) const
{
    return frameCount == other.frameCount && width == other.width && height == other.height &&
           depth == other.depth && dataType == other.dataType && isImage == other.isImage &&
           isVector == other.isVector && isVector3C == other.isVector3C && hasMask == other.hasMask &&
           vectorGridSize == other.vectorGridSize;
}

BufferStructureInformation GetBufferStructureInformationForBuffer(const BufferApi::I_Buffer& buffer)
{
    BufferStructureInformation info;
    info.frameCount = buffer.GetNumberOfFrames();
    if (info.frameCount == 0)
        return info;
    const BufferApi::I_Frame* frame = buffer.GetFrame(0);
    info.width = frame->GetWidth();
    info.height = frame->GetHeight();
    info.depth = frame->GetDepth();
    info.dataType = frame->GetDataType();
    info.isImage = dynamic_cast<const BufferApi::I_FrameImage*>(frame) != nullptr;
    // Components exist in a head frame too; only their planes lack memory.
    info.hasMask = frame->HasMask();
    if (const auto* vector = dynamic_cast<const BufferApi::I_FrameVector*>(frame)) {
        info.isVector = true;
        info.vectorGridSize = static_cast<int>(vector->GetGridSize());
    }
    if (const auto* vector3C = dynamic_cast<const BufferApi::I_FrameVector3C*>(frame)) {
        info.isVector3C = true;
        info.vectorGridSize = static_cast<int>(vector3C->GetGridSize());
    }
    return info;
}

bool IsXYPlotBuffer(const BufferApi::I_Buffer& buffer)
{
    const unsigned frameCount = buffer.GetNumberOfFrames();
    if (frameCount == 0)
        return false;
    for (unsigned i = 0; i < frameCount; ++i) {
        const BufferApi::I_Frame* frame = buffer.GetFrame(i);
        if (dynamic_cast<const BufferApi::I_FrameImage*>(frame) == nullptr || frame->GetHeight() != 2 ||
            frame->GetDepth() != 1 || frame->GetDataType() != BufferApi::DATATYPE_FLOAT)
            return false;
    }
    return true;
}

} // namespace DataObjects
