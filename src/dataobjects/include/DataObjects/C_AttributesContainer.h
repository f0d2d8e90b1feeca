#pragma once
// A store of attributes by unique name, kept in the order of their first setting.

#include <DataObjects/C_Attribute.h>

#include <memory>
#include <string>
#include <vector>

namespace DataObjects {

class DATAOBJECTS_API C_AttributesContainer {
public:
    virtual ~C_AttributesContainer();

    // Sets the value under the name: an attribute of that name is replaced in its place, a new one
    // goes last. A null value removes the name. An empty name raises RTE::VerificationFailed.
    virtual void Set(const std::string& name, const C_AttributeValue& value) = 0;
    // Whether there was one to remove.
    virtual bool Remove(const std::string& name) = 0;
    virtual void Clear() = 0;
    virtual bool Contains(const std::string& name) const = 0;
    virtual bool IsEmpty() const = 0;
    // The attribute of that name; a null C_Attribute (empty name, null value) when there is none.
    virtual C_Attribute GetAttribute(const std::string& name) const = 0;
    // The value of that name; a null value when there is none.
    virtual C_AttributeValue GetAttributeValue(const std::string& name) const = 0;
    // All attributes in order.
    virtual std::vector<C_Attribute> GetAttributes() const = 0;
    // An independent in-memory copy of the attributes.
    virtual std::unique_ptr<C_AttributesContainer> Clone() const = 0;

    // Sets every attribute of the other container, in its order (see Set).
    void SetAll(const C_AttributesContainer& other);

protected:
    C_AttributesContainer() = default;
    C_AttributesContainer(const C_AttributesContainer&) = default;
    C_AttributesContainer& operator=(const C_AttributesContainer&) = default;
};

} // namespace DataObjects
