#pragma once
// Scoped read access to one plane of a frame's pixels: the pixel component of an image frame, or
// the first component of any other frame. A frame without that plane raises RTE::VerificationFailed.

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>

#include <cstddef>

namespace BufferApi {

class I_Frame;
class I_PlaneBase;

class BUFFERAPI_API C_ImagePlaneAccess {
public:
    C_ImagePlaneAccess(const I_Frame* frame, unsigned plane);
    unsigned GetWidth() const;
    unsigned GetHeight() const;
    E_DataType GetDataType() const;
    const void* GetData() const;
    const I_PlaneBase& GetPlane() const { return *m_plane; }
    // The element at (x, y) converted to double; no range check.
    double GetValue(unsigned x, unsigned y) const;
    template <typename T> const T* GetRow(unsigned y) const
    {
        return static_cast<const T*>(GetData()) + std::size_t(y) * GetWidth();
    }

private:
    const I_PlaneBase* m_plane;
};

} // namespace BufferApi
