#pragma once
// Views of the attributes of a buffer or a frame. Both are RTE::I_AttributesSink, so readers of
// attribute streams can write into a buffer or a frame directly.

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>
#include <RTE/AttributesSink.h>

#include <string>
#include <vector>

namespace BufferApi {

class AttributeStore;
class I_AttributeBase;
class I_Buffer;
class I_Frame;

class BUFFERAPI_API C_AttributesView : public RTE::I_AttributesSink {
public:
    explicit C_AttributesView(AttributeStore& store);

    // The attribute of that name, or null.
    const I_AttributeBase* Get(const std::string& name) const;
    // All attributes in order; both vectors are replaced.
    void GetList(std::vector<std::string>& names, std::vector<const I_AttributeBase*>& attributes) const;
    bool Remove(const std::string& name);
    // See AttributeStore::SetArray; returns whether the attribute was set.
    bool SetArray(const std::string& name, unsigned count, E_DataType type, const void* data);
    // False for an empty name.
    bool SetString(const std::string& name, const std::string& value);
    // The value as text (see Attributes::GetString), or empty when there is none.
    std::string GetString(const std::string& name) const;

    // RTE::I_AttributesSink: names and texts as UTF-8.
    void Add(const QString& name, const QString& value) override;
    void AddArray(const QString& name, std::size_t count, const double* values) override;
    void AddArray(const QString& name, std::size_t count, const float* values) override;
    void AddArray(const QString& name, std::size_t count, const int* values) override;
    void AddArray(const QString& name, std::size_t count, const unsigned short* values) override;

private:
    AttributeStore& m_store;
};

class BUFFERAPI_API C_BufferAttributes : public C_AttributesView {
public:
    explicit C_BufferAttributes(I_Buffer* buffer);
};

class BUFFERAPI_API C_FrameAttributes : public C_AttributesView {
public:
    explicit C_FrameAttributes(I_Frame* frame);
};

namespace Attributes {
// Copies attributes from source to target: the buffer attributes when `global`, those of each
// frame to the frame of the same number when `frames` (as far as both have frames); an attribute
// already in the target is replaced only when `overwrite`.
BUFFERAPI_API void Copy(I_Buffer* target, I_Buffer* source, bool global, bool frames, bool overwrite);
// The value as text: a string as it is; an array as its elements separated by ";" (doubles and
// floats in the shortest form that reads back exactly). False for a null attribute.
BUFFERAPI_API bool GetString(const I_AttributeBase* attribute, std::string& value);
} // namespace Attributes

// Adds a text attribute for every "name=value" that the path carries in its folder and file names,
// where parts are separated by '/', '\' or '_' (as in "Run_Pressure=3.5/B00001_T=20.im7"); the
// extension of the last part is not part of its value. A later part of the same name wins.
BUFFERAPI_API void CreateAttributesFromPathValues(I_Buffer* buffer, const std::string& path);

} // namespace BufferApi
