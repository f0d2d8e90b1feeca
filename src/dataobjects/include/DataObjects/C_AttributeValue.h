#pragma once
// A typed attribute value: nothing (null), a text, or numbers of one element type (word, 32-bit
// int, float, double). Numbers come as a single value or as a list; a list keeps its form whatever
// its length, a single value is not a list.

#include <DataObjects/Export.h>

#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace DataObjects {

class DATAOBJECTS_API C_AttributeValue {
public:
    // The kinds of value, by stable codes (stored and switched on by writers of attributes).
    enum E_Type : int {
        TYPE_NULL = 0,
        TYPE_STRING = 1,
        TYPE_WORD_LIST = 2,   // std::vector<unsigned short>
        TYPE_INT_LIST = 3,    // std::vector<int>
        TYPE_FLOAT_LIST = 4,  // std::vector<float>
        TYPE_DOUBLE_LIST = 5, // std::vector<double>
        TYPE_WORD = 6,        // single unsigned short
        TYPE_INT = 7,         // single int
        TYPE_FLOAT = 8,       // single float
        TYPE_DOUBLE = 9       // single double
    };

    // Null.
    C_AttributeValue() = default;
    C_AttributeValue(char const* text);
    C_AttributeValue(const std::string& text);
    C_AttributeValue(std::string&& text);
    C_AttributeValue(unsigned short value);
    C_AttributeValue(int value);
    C_AttributeValue(float value);
    C_AttributeValue(double value);
    C_AttributeValue(std::vector<unsigned short> values);
    C_AttributeValue(std::vector<int> values);
    C_AttributeValue(std::vector<float> values);
    C_AttributeValue(std::vector<double> values);

    E_Type GetType() const;
    // 0 for null, 1 for a text or a single number, the length of a list.
    std::size_t Count() const;
    bool IsNull() const { return m_value.index() == 0; }
    bool IsString() const { return m_value.index() == 1; }
    // True when the value is a list (of any length) of exactly the element type T.
    template <typename T> bool IsList() const;

    // GetValue<std::string>(): the text. GetValue<std::vector<E>>(): the numbers of element type E
    // exactly (a single value gives a list of one). GetValue<E>() for a number type E: a single
    // value or a list of one, of any number type, converted to E. Anything else raises
    // RTE::VerificationFailed.
    template <typename T> T GetValue() const;

    // The value as text: a text as it is, numbers separated by ";" (floating point in the shortest
    // form that reads back exactly), empty for null.
    std::string ToString() const;

    bool operator==(const C_AttributeValue& other) const;
    bool operator!=(const C_AttributeValue& other) const { return !(*this == other); }

private:
    using Storage = std::variant<std::monostate, std::string, std::vector<unsigned short>, std::vector<int>,
                                 std::vector<float>, std::vector<double>>;
    template <typename E> static constexpr bool IsElement =
        std::is_same_v<E, unsigned short> || std::is_same_v<E, int> || std::is_same_v<E, float> ||
        std::is_same_v<E, double>;
    template <typename T> struct ListElement { using type = void; };
    template <typename E> struct ListElement<std::vector<E>> { using type = E; };

    [[noreturn]] static void ThrowWrongType(const char* requested);

    Storage m_value;
    bool m_isList = false;
};

template <typename T>
bool C_AttributeValue::IsList() const
{
    static_assert(IsElement<T>, "attribute lists hold unsigned short, int, float or double");
    return m_isList && std::holds_alternative<std::vector<T>>(m_value);
}

template <typename T>
T C_AttributeValue::GetValue() const
{
    if constexpr (std::is_same_v<T, std::string>) {
        if (const auto* text = std::get_if<std::string>(&m_value))
            return *text;
        ThrowWrongType("a text");
    } else if constexpr (IsElement<typename ListElement<T>::type>) {
        if (const auto* list = std::get_if<T>(&m_value))
            return *list;
        ThrowWrongType("a list of another element type");
    } else {
        static_assert(IsElement<T>, "GetValue takes std::string, a number type or a vector of one");
        T result{};
        bool found = false;
        std::visit(
            [&](const auto& held) {
                using Held = std::decay_t<decltype(held)>;
                if constexpr (!std::is_same_v<Held, std::monostate> && !std::is_same_v<Held, std::string>) {
                    if (held.size() == 1) {
                        result = static_cast<T>(held.front());
                        found = true;
                    }
                }
            },
            m_value);
        if (!found)
            ThrowWrongType("a single number");
        return result;
    }
}

} // namespace DataObjects
