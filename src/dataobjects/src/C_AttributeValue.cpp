#include <DataObjects/C_AttributeValue.h>

#include <RTE/Exception.h>

#include <charconv>

namespace DataObjects {

namespace {

template <typename T>
std::vector<T> One(T value)
{
    return std::vector<T>{value};
}

template <typename T>
std::string NumberText(T value)
{
    // The shortest text that reads back to the same value, of the value's own type.
    char text[64];
    const std::to_chars_result result = std::to_chars(text, text + sizeof(text), value);
    return std::string(text, result.ptr);
}

} // namespace

C_AttributeValue::C_AttributeValue(char const* text) : m_value(std::string(text ? text : "")) {}
C_AttributeValue::C_AttributeValue(const std::string& text) : m_value(text) {}
C_AttributeValue::C_AttributeValue(std::string&& text) : m_value(std::move(text)) {}
C_AttributeValue::C_AttributeValue(unsigned short value) : m_value(One(value)) {}
C_AttributeValue::C_AttributeValue(int value) : m_value(One(value)) {}
C_AttributeValue::C_AttributeValue(float value) : m_value(One(value)) {}
C_AttributeValue::C_AttributeValue(double value) : m_value(One(value)) {}
C_AttributeValue::C_AttributeValue(std::vector<unsigned short> values) : m_value(std::move(values)), m_isList(true) {}
C_AttributeValue::C_AttributeValue(std::vector<int> values) : m_value(std::move(values)), m_isList(true) {}
C_AttributeValue::C_AttributeValue(std::vector<float> values) : m_value(std::move(values)), m_isList(true) {}
C_AttributeValue::C_AttributeValue(std::vector<double> values) : m_value(std::move(values)), m_isList(true) {}

C_AttributeValue::E_Type C_AttributeValue::GetType() const
{
    switch (m_value.index()) {
    case 0: return TYPE_NULL;
    case 1: return TYPE_STRING;
    case 2: return m_isList ? TYPE_WORD_LIST : TYPE_WORD;
    case 3: return m_isList ? TYPE_INT_LIST : TYPE_INT;
    case 4: return m_isList ? TYPE_FLOAT_LIST : TYPE_FLOAT;
    default: return m_isList ? TYPE_DOUBLE_LIST : TYPE_DOUBLE;
    }
}

std::size_t C_AttributeValue::Count() const
{
    return std::visit(
        [](const auto& held) -> std::size_t {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>)
                return 0;
            else if constexpr (std::is_same_v<Held, std::string>)
                return 1;
            else
                return held.size();
        },
        m_value);
}

std::string C_AttributeValue::ToString() const
{
    return std::visit(
        [](const auto& held) -> std::string {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_same_v<Held, std::monostate>) {
                return std::string();
            } else if constexpr (std::is_same_v<Held, std::string>) {
                return held;
            } else {
                std::string text;
                for (std::size_t i = 0; i < held.size(); ++i) {
                    if (i > 0)
                        text += ';';
                    text += NumberText(held[i]);
                }
                return text;
            }
        },
        m_value);
}

bool C_AttributeValue::operator==(const C_AttributeValue& other) const
{
    return m_value == other.m_value && (IsNull() || IsString() || m_isList == other.m_isList);
}

void C_AttributeValue::ThrowWrongType(const char* requested)
{
    RTE_THROW_MSG(RTE::VerificationFailed, "Attribute value is not " << requested);
}

} // namespace DataObjects
