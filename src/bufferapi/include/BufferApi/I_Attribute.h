#pragma once
// One attribute of a buffer or a frame: a name with either a text or an array of numbers of one
// element type (word, 32-bit int, float or double).

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>

#include <memory>
#include <string>

namespace BufferApi {

class BUFFERAPI_API I_AttributeBase {
public:
    virtual ~I_AttributeBase();
    virtual const std::string& GetName() const = 0;
    // True for a text attribute, false for an array.
    virtual bool IsString() const = 0;
    virtual std::unique_ptr<I_AttributeBase> Clone() const = 0;
};

// A text attribute (UTF-8).
class BUFFERAPI_API I_AttributeString : public I_AttributeBase {
public:
    virtual const std::string& GetValue() const = 0;
};

// An array attribute: GetCount() elements of GetDataType() (DATATYPE_WORD, DATATYPE_INT32,
// DATATYPE_FLOAT or DATATYPE_DOUBLE) packed from GetData(). An empty array has a null pointer.
class BUFFERAPI_API I_AttributePlane : public I_AttributeBase {
public:
    virtual E_DataType GetDataType() const = 0;
    virtual unsigned GetCount() const = 0;
    virtual const void* GetData() const = 0;
};

} // namespace BufferApi
