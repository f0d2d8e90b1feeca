#include "model/Plane.h"

#include <RTE/Exception.h>

#include <cstring>
#include <type_traits>

namespace BufferApi {
namespace Private {

namespace {
void VerifyShape(E_DataType type, unsigned width, unsigned height)
{
    if (!IsValidDataType(type))
        RTE_THROW_MSG(RTE::VerificationFailed, "Unknown element type " << int(type) << " for a plane");
    if (width == 0 || height == 0)
        RTE_THROW_MSG(RTE::VerificationFailed, "Plane size " << width << " x " << height << " is empty");
}

// Calls make.template operator()<T>() with T the C++ type of `type` (RGB is unsigned int).
template <class Make>
std::unique_ptr<I_PlaneBase> ForType(E_DataType type, Make&& make)
{
    switch (type) {
    case DATATYPE_BYTE: return make(static_cast<unsigned char*>(nullptr));
    case DATATYPE_RGB:
    case DATATYPE_UINT32: return make(static_cast<unsigned int*>(nullptr));
    case DATATYPE_DOUBLE: return make(static_cast<double*>(nullptr));
    case DATATYPE_FLOAT: return make(static_cast<float*>(nullptr));
    case DATATYPE_INT32: return make(static_cast<int*>(nullptr));
    case DATATYPE_WORD: return make(static_cast<unsigned short*>(nullptr));
    default: break;
    }
    RTE_THROW_MSG(RTE::VerificationFailed, "Unknown element type " << int(type) << " for a plane");
}
} // namespace

std::unique_ptr<I_PlaneBase> MakePlane(E_DataType type, unsigned width, unsigned height, PlaneMemory memory)
{
    VerifyShape(type, width, height);
    return ForType(type, [&](auto* tag) -> std::unique_ptr<I_PlaneBase> {
        using T = std::remove_pointer_t<decltype(tag)>;
        return std::make_unique<Plane<T>>(type, width, height, memory);
    });
}

std::unique_ptr<I_PlaneBase> MakeViewPlane(E_DataType type, unsigned width, unsigned height, void* external)
{
    VerifyShape(type, width, height);
    RTE_VERIFY(external != nullptr, "A plane over external memory needs that memory");
    return ForType(type, [&](auto* tag) -> std::unique_ptr<I_PlaneBase> {
        using T = std::remove_pointer_t<decltype(tag)>;
        return std::make_unique<Plane<T>>(type, width, height, external);
    });
}

std::unique_ptr<I_PlaneBase> ClonePlane(const I_PlaneBase& source)
{
    const bool hasData = source.HasData();
    auto copy = MakePlane(source.GetDataType(), source.GetWidth(), source.GetHeight(),
                          hasData ? PlaneMemory::Uninitialised : PlaneMemory::None);
    if (hasData)
        std::memcpy(copy->GetData(), source.GetData(), source.GetByteSize());
    return copy;
}

} // namespace Private
} // namespace BufferApi
