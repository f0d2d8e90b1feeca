#pragma once
// The attributes of one buffer or frame: unique names, kept in the order of their first setting.
// Copying copies every attribute. Not thread-safe; a buffer is used by one thread at a time.

#include <BufferApi/I_Attribute.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace BufferApi {

class BUFFERAPI_API AttributeStore {
public:
    AttributeStore();
    AttributeStore(const AttributeStore& other);
    AttributeStore& operator=(const AttributeStore& other);
    AttributeStore(AttributeStore&&) noexcept;
    AttributeStore& operator=(AttributeStore&&) noexcept;
    ~AttributeStore();

    std::size_t GetCount() const;
    bool IsEmpty() const;
    // Attribute number `index` in order; another index raises RTE::VerificationFailed.
    const I_AttributeBase& At(std::size_t index) const;
    // The attribute of that name, or null.
    const I_AttributeBase* Find(const std::string& name) const;
    // Sets an attribute: one of the same name is replaced in its place, a new one goes last.
    // A null attribute or an empty name raise RTE::VerificationFailed (SetString likewise).
    void Set(std::unique_ptr<I_AttributeBase> attribute);
    void SetString(const std::string& name, const std::string& value);
    // Copies `count` elements; false (and nothing set) for an empty name, a type other than
    // word, 32-bit int, float and double, or null data with a non-zero count.
    bool SetArray(const std::string& name, unsigned count, E_DataType type, const void* data);
    // Whether there was one to remove.
    bool Remove(const std::string& name);
    void Clear();

private:
    std::vector<std::unique_ptr<I_AttributeBase>> m_attributes;
};

} // namespace BufferApi
