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

void AppendUtf8(std::string& out, char32_t cp)
{
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

bool DecodeUtf8(const std::string& s, size_t& pos, char32_t& cp)
{
    if (pos >= s.size())
        return false;
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(s[i]); };
    const unsigned char b0 = byte(pos);
    size_t length = 0;
    unsigned char low = 0x80, high = 0xBF; // allowed range of the second byte
    if (b0 < 0x80) {
        cp = b0;
        ++pos;
        return true;
    } else if (b0 >= 0xC2 && b0 <= 0xDF) {
        length = 2;
        cp = b0 & 0x1F;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
        length = 3;
        cp = b0 & 0x0F;
        if (b0 == 0xE0)
            low = 0xA0;
        if (b0 == 0xED)
            high = 0x9F;
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
        length = 4;
        cp = b0 & 0x07;
        if (b0 == 0xF0)
            low = 0x90;
        if (b0 == 0xF4)
            high = 0x8F;
    } else {
        return false;
    }
    if (s.size() - pos < length)
        return false;
    for (size_t i = 1; i < length; ++i) {
        const unsigned char b = byte(pos + i);
        const unsigned char min = i == 1 ? low : 0x80;
        const unsigned char max = i == 1 ? high : 0xBF;
        if (b < min || b > max)
            return false;
        cp = (cp << 6) | (b & 0x3F);
    }
    pos += length;
    return true;
}

} // namespace String
} // namespace RTE
