#pragma once
// The attributes of a BufferApi buffer or frame seen as a C_AttributesContainer. The view writes
// through to the buffer's or frame's attribute store, which must outlive it.
//
// Mapping: a text is a string attribute; numbers are an array attribute of their element type.
// An array of one element reads back as a single value, longer (and empty) arrays as lists.

#include <DataObjects/C_Attributes.h>

namespace BufferApi {
class AttributeStore;
class I_AttributeBase;
class I_Buffer;
class I_Frame;
} // namespace BufferApi

namespace DataObjects {

class DATAOBJECTS_API C_BufferAttributes : public C_AttributesContainer {
public:
    explicit C_BufferAttributes(BufferApi::I_Buffer& buffer);
    explicit C_BufferAttributes(BufferApi::I_Frame& frame);
    explicit C_BufferAttributes(BufferApi::AttributeStore& store);
    ~C_BufferAttributes() override;

    void Set(const std::string& name, const C_AttributeValue& value) override;
    bool Remove(const std::string& name) override;
    void Clear() override;
    bool Contains(const std::string& name) const override;
    bool IsEmpty() const override;
    C_Attribute GetAttribute(const std::string& name) const override;
    C_AttributeValue GetAttributeValue(const std::string& name) const override;
    std::vector<C_Attribute> GetAttributes() const override;
    // A C_Attributes with the same content.
    std::unique_ptr<C_AttributesContainer> Clone() const override;

private:
    BufferApi::AttributeStore& m_store;
};

// The value of one buffer attribute by the mapping above.
DATAOBJECTS_API C_AttributeValue ToAttributeValue(const BufferApi::I_AttributeBase& attribute);
// All attributes of a store, in order.
DATAOBJECTS_API C_Attributes ToAttributes(const BufferApi::AttributeStore& store);

} // namespace DataObjects
