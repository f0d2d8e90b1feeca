#pragma once
// Scalar fields: further named per-pixel quantities of an image plane (a correlation value, a
// temperature...), each of its own element type and value scale. In a buffer they are the typed
// scalars of a frame.

#include <DataObjects/LinearScale.h>

#include <BufferApi/DataType.h>

#include <cstddef>
#include <string>
#include <vector>

namespace BufferApi {
class I_Frame;
}

namespace DataObjects {

// One field: width * height elements of one type, rows packed. A field either owns its memory or,
// inside a ScalarFields bound to a frame, refers to the frame's plane. Copies always own their
// memory (a deep copy).
class DATAOBJECTS_API ScalarField {
public:
    // Zero-filled. An element type outside the codes 1 to 7 raises RTE::VerificationFailed.
    ScalarField(std::string name, BufferApi::E_DataType type, unsigned width, unsigned height,
                LinearScale scale = LinearScale());
    ScalarField(const ScalarField& other);
    ScalarField& operator=(const ScalarField& other);
    ScalarField(ScalarField&& other) noexcept;
    ScalarField& operator=(ScalarField&& other) noexcept;
    ~ScalarField();

    const std::string& GetName() const { return m_name; }
    BufferApi::E_DataType GetDataType() const { return m_type; }
    unsigned GetWidth() const { return m_width; }
    unsigned GetHeight() const { return m_height; }
    const LinearScale& GetScale() const { return m_scale; }
    void SetScale(const LinearScale& scale) { m_scale = scale; }

    // Null only for a field of a frame without plane memory (a head buffer).
    void* GetData() { return m_data; }
    const void* GetData() const { return m_data; }
    bool HasData() const { return m_data != nullptr; }
    std::size_t GetByteSize() const;
    // The elements as T; a T of another element type raises RTE::VerificationFailed.
    template <typename T> T* GetDataAs() { return static_cast<T*>(CheckedData(BufferApi::DataTypeOf<T>::value)); }
    template <typename T> const T* GetDataAs() const
    {
        return static_cast<const T*>(const_cast<ScalarField*>(this)->CheckedData(BufferApi::DataTypeOf<T>::value));
    }
    // The raw element at (x, y) converted to double; no range check.
    double GetValue(unsigned x, unsigned y) const;

    // Same name, type, size, scale and bytes.
    bool operator==(const ScalarField& other) const;
    bool operator!=(const ScalarField& other) const { return !(*this == other); }

private:
    friend class ScalarFields;
    struct Borrowed {};
    ScalarField(Borrowed, std::string name, BufferApi::E_DataType type, unsigned width, unsigned height,
                LinearScale scale, void* data);
    void* CheckedData(BufferApi::E_DataType requested);

    std::string m_name;
    BufferApi::E_DataType m_type;
    unsigned m_width;
    unsigned m_height;
    LinearScale m_scale;
    std::vector<unsigned char> m_owned;
    void* m_data = nullptr; // m_owned's memory, or a frame plane's
};

// The scalar fields of one image plane, by unique name in the order of adding. Either held in
// memory, or bound to one plane of a frame (GetScalarFields(frame, plane)): then the fields are the
// frame's typed scalars, and Set and DeepCopyFrom write into the frame. A copy is always held in
// memory.
class DATAOBJECTS_API ScalarFields {
public:
    ScalarFields() = default;
    // Bound to plane `plane` of the frame, which must outlive this object. A plane not below the
    // frame's depth raises RTE::VerificationFailed.
    ScalarFields(BufferApi::I_Frame& frame, unsigned plane);
    ScalarFields(const ScalarFields& other);
    ScalarFields& operator=(const ScalarFields& other);
    ScalarFields(ScalarFields&& other) noexcept = default;
    ScalarFields& operator=(ScalarFields&& other) noexcept = default;
    ~ScalarFields();

    bool IsBoundToFrame() const { return m_frame != nullptr; }
    std::size_t GetCount() const { return m_fields.size(); }
    bool IsEmpty() const { return m_fields.empty(); }
    std::vector<std::string> GetNames() const;
    bool Contains(const std::string& name) const;
    // Field number `index` in order / the field of that name; a missing one raises
    // RTE::VerificationFailed.
    ScalarField& At(std::size_t index);
    const ScalarField& At(std::size_t index) const;
    ScalarField& Get(const std::string& name);
    const ScalarField& Get(const std::string& name) const;

    // Adds a copy of the field, or replaces the field of that name. Bound to a frame: the frame's
    // typed scalar is created if missing and takes the field's bytes and scale; a field of another
    // size than the frame, or of another type than the frame's existing scalar, raises
    // RTE::VerificationFailed.
    void Set(const ScalarField& field);
    // In memory only; bound to a frame they raise RTE::VerificationFailed.
    bool Remove(const std::string& name);
    void Clear();

    // Makes every field of `other` a deep copy here (see Set). In memory, fields that `other` does not
    // have are dropped as well; a bound frame keeps its other typed scalars.
    void DeepCopyFrom(const ScalarFields& other);

    // Same fields in the same order (ScalarField::operator==).
    bool operator==(const ScalarFields& other) const { return m_fields == other.m_fields; }
    bool operator!=(const ScalarFields& other) const { return !(*this == other); }

private:
    void ReadFrame();
    ScalarField* Find(const std::string& name);

    std::vector<ScalarField> m_fields;
    BufferApi::I_Frame* m_frame = nullptr;
    unsigned m_plane = 0;
};

} // namespace DataObjects
