#include <DataObjects/ScalarFields.h>

#include "ElementAccess.h"

#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>
#include <RTE/Exception.h>

#include <algorithm>
#include <cstring>

namespace DataObjects {

namespace {

bool IsBorrowed(const void* data, const std::vector<unsigned char>& owned)
{
    return data != nullptr && data != owned.data();
}

} // namespace

ScalarField::ScalarField(std::string name, BufferApi::E_DataType type, unsigned width, unsigned height,
                         LinearScale scale)
    : m_name(std::move(name)), m_type(type), m_width(width), m_height(height), m_scale(std::move(scale))
{
    if (!BufferApi::IsValidDataType(type))
        RTE_THROW_MSG(RTE::VerificationFailed, "Scalar field '" << m_name << "' has an unknown element type "
                                                                << static_cast<int>(type));
    m_owned.assign(GetByteSize(), 0);
    m_data = m_owned.data();
}

ScalarField::ScalarField(Borrowed, std::string name, BufferApi::E_DataType type, unsigned width, unsigned height,
                         LinearScale scale, void* data)
    : m_name(std::move(name)), m_type(type), m_width(width), m_height(height), m_scale(std::move(scale)),
      m_data(data)
{
}

ScalarField::ScalarField(const ScalarField& other)
    : m_name(other.m_name), m_type(other.m_type), m_width(other.m_width), m_height(other.m_height),
      m_scale(other.m_scale)
{
    if (other.m_data != nullptr) {
        const auto* bytes = static_cast<const unsigned char*>(other.m_data);
        m_owned.assign(bytes, bytes + other.GetByteSize());
        m_data = m_owned.data();
    }
}

ScalarField& ScalarField::operator=(const ScalarField& other)
{
    if (this != &other) {
        ScalarField copy(other);
        *this = std::move(copy);
    }
    return *this;
}

ScalarField::ScalarField(ScalarField&& other) noexcept
    : m_name(std::move(other.m_name)), m_type(other.m_type), m_width(other.m_width), m_height(other.m_height),
      m_scale(std::move(other.m_scale))
{
    const bool borrowed = IsBorrowed(other.m_data, other.m_owned);
    m_owned = std::move(other.m_owned);
    m_data = borrowed ? other.m_data : m_owned.data();
    other.m_owned.clear();
    other.m_data = nullptr;
}

ScalarField& ScalarField::operator=(ScalarField&& other) noexcept
{
    if (this != &other) {
        m_name = std::move(other.m_name);
        m_type = other.m_type;
        m_width = other.m_width;
        m_height = other.m_height;
        m_scale = std::move(other.m_scale);
        const bool borrowed = IsBorrowed(other.m_data, other.m_owned);
        m_owned = std::move(other.m_owned);
        m_data = borrowed ? other.m_data : m_owned.data();
        other.m_owned.clear();
        other.m_data = nullptr;
    }
    return *this;
}

ScalarField::~ScalarField() = default;

std::size_t ScalarField::GetByteSize() const
{
    return std::size_t(m_width) * m_height * BufferApi::GetDataTypeSize(m_type);
}

void* ScalarField::CheckedData(BufferApi::E_DataType requested)
{
    if (requested != m_type)
        RTE_THROW_MSG(RTE::VerificationFailed, "Scalar field '" << m_name << "' has element type "
                                                                << static_cast<int>(m_type) << ", not "
                                                                << static_cast<int>(requested));
    return m_data;
}

double ScalarField::GetValue(unsigned x, unsigned y) const
{
    return Private::ElementAsDouble(m_data, m_type, std::size_t(y) * m_width + x);
}

bool ScalarField::operator==(const ScalarField& other) const
{
    if (m_name != other.m_name || m_type != other.m_type || m_width != other.m_width ||
        m_height != other.m_height || m_scale != other.m_scale || HasData() != other.HasData())
        return false;
    return !HasData() || std::memcmp(m_data, other.m_data, GetByteSize()) == 0;
}

ScalarFields::ScalarFields(BufferApi::I_Frame& frame, unsigned plane) : m_frame(&frame), m_plane(plane)
{
    RTE_VERIFY(plane < frame.GetDepth(), "Scalar field plane index out of range");
    ReadFrame();
}

ScalarFields::ScalarFields(const ScalarFields& other) : m_fields(other.m_fields) {}

ScalarFields& ScalarFields::operator=(const ScalarFields& other)
{
    if (this != &other) {
        m_fields = other.m_fields;
        m_frame = nullptr;
        m_plane = 0;
    }
    return *this;
}

ScalarFields::~ScalarFields() = default;

void ScalarFields::ReadFrame()
{
    m_fields.clear();
    for (const std::string& name : BufferApi::GetNamesOfFrameBoundTypedScalars(m_frame)) {
        BufferApi::C_TypedScalarFrame scalar(m_frame, name);
        BufferApi::I_PlaneBase* plane = scalar.GetComponent(m_plane);
        m_fields.push_back(ScalarField(ScalarField::Borrowed{}, name, scalar.GetDataType(), plane->GetWidth(),
                                       plane->GetHeight(), LinearScale(scalar.GetScale()), plane->GetData()));
    }
}

std::vector<std::string> ScalarFields::GetNames() const
{
    std::vector<std::string> names;
    names.reserve(m_fields.size());
    for (const ScalarField& field : m_fields)
        names.push_back(field.GetName());
    return names;
}

ScalarField* ScalarFields::Find(const std::string& name)
{
    auto it = std::find_if(m_fields.begin(), m_fields.end(),
                           [&](const ScalarField& field) { return field.GetName() == name; });
    return it == m_fields.end() ? nullptr : &*it;
}

bool ScalarFields::Contains(const std::string& name) const
{
    return const_cast<ScalarFields*>(this)->Find(name) != nullptr;
}

ScalarField& ScalarFields::At(std::size_t index)
{
    RTE_VERIFY(index < m_fields.size(), "Scalar field index out of range");
    return m_fields[index];
}

const ScalarField& ScalarFields::At(std::size_t index) const
{
    return const_cast<ScalarFields*>(this)->At(index);
}

ScalarField& ScalarFields::Get(const std::string& name)
{
    ScalarField* field = Find(name);
    if (field == nullptr)
        RTE_THROW_MSG(RTE::VerificationFailed, "No scalar field '" << name << "'");
    return *field;
}

const ScalarField& ScalarFields::Get(const std::string& name) const
{
    return const_cast<ScalarFields*>(this)->Get(name);
}

void ScalarFields::Set(const ScalarField& field)
{
    if (m_frame == nullptr) {
        if (ScalarField* existing = Find(field.GetName()))
            *existing = field;
        else
            m_fields.push_back(field);
        return;
    }
    const std::string& name = field.GetName();
    if (field.GetWidth() != m_frame->GetWidth() || field.GetHeight() != m_frame->GetHeight())
        RTE_THROW_MSG(RTE::VerificationFailed, "Scalar field '" << name << "' of " << field.GetWidth() << "x"
                                                                << field.GetHeight() << " does not fit a frame of "
                                                                << m_frame->GetWidth() << "x"
                                                                << m_frame->GetHeight());
    if (const ScalarField* existing = Find(name)) {
        if (existing->GetDataType() != field.GetDataType())
            RTE_THROW_MSG(RTE::VerificationFailed,
                          "Scalar field '" << name << "' has another element type in the frame");
    } else {
        BufferApi::CreateTypedScalarInFrame(m_frame, name, field.GetDataType());
    }
    BufferApi::C_TypedScalarFrame scalar(m_frame, name);
    BufferApi::I_PlaneBase* plane = scalar.GetComponent(m_plane);
    if (field.HasData()) {
        RTE_VERIFY(plane->HasData(), "Frame has no memory for scalar fields");
        std::memmove(plane->GetData(), field.GetData(), field.GetByteSize());
    }
    const LinearScale& scale = field.GetScale();
    scalar.SetLinearScale(scale.GetFactor(), scale.GetOffset(), scale.GetUnit(), scale.GetDescription());
    ReadFrame();
}

bool ScalarFields::Remove(const std::string& name)
{
    RTE_VERIFY(m_frame == nullptr, "Scalar fields of a frame cannot be removed");
    auto it = std::find_if(m_fields.begin(), m_fields.end(),
                           [&](const ScalarField& field) { return field.GetName() == name; });
    if (it == m_fields.end())
        return false;
    m_fields.erase(it);
    return true;
}

void ScalarFields::Clear()
{
    RTE_VERIFY(m_frame == nullptr, "Scalar fields of a frame cannot be removed");
    m_fields.clear();
}

void ScalarFields::DeepCopyFrom(const ScalarFields& other)
{
    if (this == &other)
        return;
    if (m_frame == nullptr) {
        m_fields = other.m_fields;
        return;
    }
    // A copy first: `other` may be bound to this very frame.
    const std::vector<ScalarField> fields = other.m_fields;
    for (const ScalarField& field : fields)
        Set(field);
}

} // namespace DataObjects
