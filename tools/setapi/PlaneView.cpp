#include "PlaneView.h"

#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/ImagePlaneAccess.h>

#include <RTE/Exception.h>

#include <cstdint>
#include <cstring>

namespace SetApiTool {

namespace {

template <typename T>
double Element(const void* data, std::size_t i)
{
    T value;
    std::memcpy(&value, static_cast<const unsigned char*>(data) + i * sizeof(T), sizeof(T));
    return static_cast<double>(value);
}

} // namespace

S_PlaneView ViewOfFirstPlane(const BufferApi::I_Frame& frame)
{
    const BufferApi::C_ImagePlaneAccess access(&frame, 0);
    S_PlaneView view;
    view.type = access.GetDataType();
    view.width = access.GetWidth();
    view.height = access.GetHeight();
    view.data = access.GetData();
    RTE_VERIFY(view.data != nullptr, "The frame has no pixel memory.");

    // A mask that does not match the plane in shape or type is no mask for it; the picture then
    // shows every pixel rather than guessing.
    if (const BufferApi::I_Component* mask = frame.GetMask()) {
        if (mask->GetPlaneCount() > 0) {
            const BufferApi::I_PlaneBase* plane = mask->GetPlane(0);
            if (plane->GetDataType() == BufferApi::DATATYPE_BYTE && plane->GetWidth() == view.width
                && plane->GetHeight() == view.height && plane->HasData())
                view.mask = static_cast<const unsigned char*>(plane->GetData());
        }
    }
    return view;
}

double ValueAt(const S_PlaneView& view, std::size_t i)
{
    switch (view.type) {
    case BufferApi::DATATYPE_BYTE: return Element<std::uint8_t>(view.data, i);
    case BufferApi::DATATYPE_RGB: return Element<std::uint32_t>(view.data, i);
    case BufferApi::DATATYPE_DOUBLE: return Element<double>(view.data, i);
    case BufferApi::DATATYPE_FLOAT: return Element<float>(view.data, i);
    case BufferApi::DATATYPE_INT32: return Element<std::int32_t>(view.data, i);
    case BufferApi::DATATYPE_UINT32: return Element<std::uint32_t>(view.data, i);
    case BufferApi::DATATYPE_WORD: return Element<std::uint16_t>(view.data, i);
    case BufferApi::DATATYPE_UNKNOWN: break;
    }
    RTE_THROW_MSG(RTE::VerificationFailed, "Unknown element type " << int(view.type) << '.');
}

std::string DataTypeName(BufferApi::E_DataType type)
{
    switch (type) {
    case BufferApi::DATATYPE_BYTE: return "byte";
    case BufferApi::DATATYPE_RGB: return "rgb";
    case BufferApi::DATATYPE_DOUBLE: return "double";
    case BufferApi::DATATYPE_FLOAT: return "float";
    case BufferApi::DATATYPE_INT32: return "int32";
    case BufferApi::DATATYPE_UINT32: return "uint32";
    case BufferApi::DATATYPE_WORD: return "word";
    case BufferApi::DATATYPE_UNKNOWN: break;
    }
    return "unknown (" + std::to_string(int(type)) + ")";
}

} // namespace SetApiTool
