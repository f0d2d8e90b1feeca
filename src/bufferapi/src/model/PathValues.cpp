// Attributes from the values a path carries. The path is cut at '/', '\' and '_'; every part of
// the form "name=value" with a non-empty name becomes the text attribute name -> value, in path
// order, so a later part of the same name wins. The last part loses its file extension: a final
// '.' followed by a letter and then only letters and digits ("T=20.im7" gives "20"), so that a
// decimal value such as "Pressure=3.5" at the end of a set name keeps its digits.
#include <BufferApi/Attributes.h>

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Buffer.h>

#include <RTE/Exception.h>


namespace BufferApi {

namespace {
bool IsSeparator(char c)
{
    return c == '/' || c == '\\' || c == '_';
}

bool IsAsciiLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The part without its extension, if it has one.
std::string WithoutExtension(const std::string& part)
{
    const std::size_t dot = part.rfind('.');
    if (dot == std::string::npos || dot + 1 >= part.size() || !IsAsciiLetter(part[dot + 1]))
        return part;
    for (std::size_t i = dot + 2; i < part.size(); ++i)
        if (!IsAsciiLetter(part[i]) && !IsAsciiDigit(part[i]))
            return part;
    return part.substr(0, dot);
}

void AddPart(AttributeStore& store, const std::string& part)
{
    const std::size_t equals = part.find('=');
    if (equals == std::string::npos || equals == 0)
        return;
    store.SetString(part.substr(0, equals), part.substr(equals + 1));
}
} // namespace

void CreateAttributesFromPathValues(I_Buffer* buffer, const std::string& path)
{
    RTE_VERIFY(buffer != nullptr, "Cannot add path values to a null buffer");
    AttributeStore& store = buffer->GetAttributeStore();
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = start;
        while (end < path.size() && !IsSeparator(path[end]))
            ++end;
        const bool last = end == path.size();
        std::string part = path.substr(start, end - start);
        AddPart(store, last ? WithoutExtension(part) : part);
        start = end + 1;
    }
}

} // namespace BufferApi
