#include "model/FrameKinds.h"

namespace BufferApi {
namespace Private {

ImageFrame::ImageFrame(E_DataType type, unsigned width, unsigned height, unsigned depth, PlaneMemory memory)
    : FrameBase(type, width, height, depth, memory)
{
}

std::unique_ptr<I_Frame> ImageFrame::Clone() const
{
    return std::unique_ptr<I_Frame>(new ImageFrame(*this));
}

VectorFrame::VectorFrame(E_DataType type, unsigned width, unsigned height, unsigned depth, unsigned gridSize,
                         PlaneMemory memory)
    : FrameBase(type, width, height, depth, memory), m_gridSize(gridSize)
{
}

std::unique_ptr<I_Frame> VectorFrame::Clone() const
{
    return std::unique_ptr<I_Frame>(new VectorFrame(*this));
}

Vector3CFrame::Vector3CFrame(E_DataType type, unsigned width, unsigned height, unsigned depth, unsigned gridSize,
                             PlaneMemory memory)
    : FrameBase(type, width, height, depth, memory), m_gridSize(gridSize)
{
}

std::unique_ptr<I_Frame> Vector3CFrame::Clone() const
{
    return std::unique_ptr<I_Frame>(new Vector3CFrame(*this));
}

} // namespace Private
} // namespace BufferApi
