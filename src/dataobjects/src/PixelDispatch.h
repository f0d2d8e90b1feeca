#pragma once
// Finding the pixel type of an image object by dynamic_cast, one supported type after the other,
// and making objects of the pixel type of an element type code.

#include <DataObjects/Image.h>
#include <DataObjects/ImageData.h>

#include <BufferApi/DataType.h>

namespace DataObjects::Private {

template <typename T> struct TypeTag { using type = T; };

// Calls f(TypeTag<T>) for the first supported T whose Holder<T> the object is; false when none.
template <template <typename> class Holder, typename Base, typename F>
bool DispatchByCast(const Base& object, F&& f)
{
    auto attempt = [&](auto tag) {
        using T = typename decltype(tag)::type;
        if (dynamic_cast<const Holder<T>*>(&object) == nullptr)
            return false;
        f(tag);
        return true;
    };
    return attempt(TypeTag<unsigned char>{}) || attempt(TypeTag<unsigned short>{}) || attempt(TypeTag<int>{}) ||
           attempt(TypeTag<unsigned int>{}) || attempt(TypeTag<float>{}) || attempt(TypeTag<double>{});
}

// Calls f(TypeTag<T>) for the pixel type of the code; false for RGB and unknown codes.
template <typename F>
bool DispatchByDataType(BufferApi::E_DataType type, F&& f)
{
    switch (type) {
    case BufferApi::DATATYPE_BYTE: f(TypeTag<unsigned char>{}); return true;
    case BufferApi::DATATYPE_DOUBLE: f(TypeTag<double>{}); return true;
    case BufferApi::DATATYPE_FLOAT: f(TypeTag<float>{}); return true;
    case BufferApi::DATATYPE_INT32: f(TypeTag<int>{}); return true;
    case BufferApi::DATATYPE_UINT32: f(TypeTag<unsigned int>{}); return true;
    case BufferApi::DATATYPE_WORD: f(TypeTag<unsigned short>{}); return true;
    default: return false;
    }
}

} // namespace DataObjects::Private
