#pragma once
// The concrete plane: an I_Plane<T> of the element's C++ type that owns 4 KiB aligned memory,
// views memory that its creator keeps alive, or has no memory at all (head frames).

#include "model/AlignedMemory.h"
#include "model/PlaneMemory.h"

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>
#include <BufferApi/I_PlaneBase.h>

#include <memory>

namespace BufferApi {
namespace Private {

template <typename T>
class Plane final : public I_Plane<T> {
public:
    // A plane over memory the library allocates per `memory`.
    Plane(E_DataType type, unsigned width, unsigned height, PlaneMemory memory)
        : m_type(type), m_width(width), m_height(height)
    {
        const std::size_t bytes = CheckedPlaneBytes(width, height, sizeof(T));
        if (memory != PlaneMemory::None) {
            m_owned = AllocateAligned(bytes, memory == PlaneMemory::Zeroed);
            m_data = m_owned.get();
        }
    }
    // A view of external memory, which stays the caller's.
    Plane(E_DataType type, unsigned width, unsigned height, void* external)
        : m_type(type), m_width(width), m_height(height), m_data(external)
    {
        CheckedPlaneBytes(width, height, sizeof(T));
    }

    E_DataType GetDataType() const override { return m_type; }
    unsigned GetWidth() const override { return m_width; }
    unsigned GetHeight() const override { return m_height; }
    void* GetData() override { return m_data; }
    const void* GetData() const override { return m_data; }
    bool OwnsData() const { return m_owned != nullptr; }

private:
    E_DataType m_type;
    unsigned m_width;
    unsigned m_height;
    AlignedBlock m_owned;
    void* m_data = nullptr;
};

// A plane of that type and size with library memory per `memory`. An unknown type, a zero width
// or height, or a size that overflows raise RTE::VerificationFailed.
BUFFERAPI_API std::unique_ptr<I_PlaneBase> MakePlane(E_DataType type, unsigned width, unsigned height,
                                                     PlaneMemory memory);
// A plane viewing `external`, which must not be null.
BUFFERAPI_API std::unique_ptr<I_PlaneBase> MakeViewPlane(E_DataType type, unsigned width, unsigned height,
                                                         void* external);
// A deep copy in library memory; a plane without memory gives a plane without memory.
BUFFERAPI_API std::unique_ptr<I_PlaneBase> ClonePlane(const I_PlaneBase& source);

} // namespace Private
} // namespace BufferApi
