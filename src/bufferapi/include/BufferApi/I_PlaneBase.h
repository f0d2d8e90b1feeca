#pragma once
// A rectangular array of elements of one type: one plane of one component of a frame. Rows are
// packed (row y starts y * width elements after the start) and the memory of a plane that the
// library allocates starts on a 4 KiB boundary, so that it can go to and come from disk with
// direct I/O and no copy. A plane of a head buffer (GetImportInformation) has its shape but no
// memory: GetData() is null.

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>

#include <cstddef>

namespace BufferApi {

class BUFFERAPI_API I_PlaneBase {
public:
    virtual ~I_PlaneBase();
    virtual E_DataType GetDataType() const = 0;
    virtual unsigned GetWidth() const = 0;
    virtual unsigned GetHeight() const = 0;
    virtual void* GetData() = 0;
    virtual const void* GetData() const = 0;

    bool HasData() const { return GetData() != nullptr; }
    std::size_t GetElementSize() const { return GetDataTypeSize(GetDataType()); }
    std::size_t GetElementCount() const { return std::size_t(GetWidth()) * GetHeight(); }
    std::size_t GetByteSize() const { return GetElementCount() * GetElementSize(); }
};

// The typed form, reached by dynamic_cast from I_PlaneBase: every plane the library makes is an
// I_Plane<T> of the C++ type of its element type (DATATYPE_RGB planes are I_Plane<unsigned int>).
// Access by (x, y) does no range check.
template <typename T>
class I_Plane : public I_PlaneBase {
public:
    T* GetRow(unsigned y) { return static_cast<T*>(GetData()) + std::size_t(y) * GetWidth(); }
    const T* GetRow(unsigned y) const { return static_cast<const T*>(GetData()) + std::size_t(y) * GetWidth(); }
    T& operator()(unsigned x, unsigned y) { return GetRow(y)[x]; }
    const T& operator()(unsigned x, unsigned y) const { return GetRow(y)[x]; }
};

} // namespace BufferApi
