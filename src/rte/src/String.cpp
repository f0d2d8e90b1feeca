#include <RTE/String.h>

namespace RTE {
namespace String {
namespace {

char UpperAscii(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

char LowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

} // namespace

void ToUpper(std::string& text)
{
    for (char& c : text)
        c = UpperAscii(c);
}

void ToLower(std::string& text)
{
    for (char& c : text)
        c = LowerAscii(c);
}

bool EqualsIgnoreCase(const std::string& a, const std::string& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (UpperAscii(a[i]) != UpperAscii(b[i]))
            return false;
    return true;
}

} // namespace String
} // namespace RTE
