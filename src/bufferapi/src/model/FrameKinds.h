#pragma once
// The three concrete frame kinds.

#include "model/FrameCore.h"

#include <BufferApi/Export.h>
#include <BufferApi/I_Frame.h>

namespace BufferApi {
namespace Private {

class BUFFERAPI_API ImageFrame final : public FrameBase<I_FrameImage> {
public:
    ImageFrame(E_DataType type, unsigned width, unsigned height, unsigned depth, PlaneMemory memory);
    E_FrameKind GetKind() const override { return E_FrameKind::Image; }
    std::unique_ptr<I_Frame> Clone() const override;
};

class BUFFERAPI_API VectorFrame final : public FrameBase<I_FrameVector> {
public:
    VectorFrame(E_DataType type, unsigned width, unsigned height, unsigned depth, unsigned gridSize,
                PlaneMemory memory);
    E_FrameKind GetKind() const override { return E_FrameKind::Vector; }
    unsigned GetGridSize() const override { return m_gridSize; }
    void SetGridSize(unsigned gridSize) override { m_gridSize = gridSize; }
    std::unique_ptr<I_Frame> Clone() const override;

private:
    unsigned m_gridSize;
};

class BUFFERAPI_API Vector3CFrame final : public FrameBase<I_FrameVector3C> {
public:
    Vector3CFrame(E_DataType type, unsigned width, unsigned height, unsigned depth, unsigned gridSize,
                  PlaneMemory memory);
    E_FrameKind GetKind() const override { return E_FrameKind::Vector3C; }
    unsigned GetGridSize() const override { return m_gridSize; }
    void SetGridSize(unsigned gridSize) override { m_gridSize = gridSize; }
    std::unique_ptr<I_Frame> Clone() const override;

private:
    unsigned m_gridSize;
};

} // namespace Private
} // namespace BufferApi
