#include "NarrowText.h"

#include <algorithm>

namespace SetApi {
namespace Private {

namespace {

// Length of the valid UTF-8 sequence at s[pos] (no overlong forms, no surrogates, at most
// U+10FFFF), or 0 if there is none; the code point goes to cp.
size_t Utf8Sequence(const std::string& s, size_t pos, char32_t& cp)
{
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(s[i]); };
    const unsigned char b0 = byte(pos);
    size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;
    if (b0 >= 0xC2 && b0 <= 0xDF) {
        length = 2;
        cp = b0 & 0x1F;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
        length = 3;
        cp = b0 & 0x0F;
        low = b0 == 0xE0 ? 0xA0 : 0x80;
        high = b0 == 0xED ? 0x9F : 0xBF;
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
        length = 4;
        cp = b0 & 0x07;
        low = b0 == 0xF0 ? 0x90 : 0x80;
        high = b0 == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (s.size() - pos < length)
        return 0;
    for (size_t i = 1; i < length; ++i) {
        const unsigned char b = byte(pos + i);
        if (b < (i == 1 ? low : 0x80) || b > (i == 1 ? high : 0xBF))
            return 0;
        cp = (cp << 6) | (b & 0x3F);
    }
    return length;
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

} // namespace

QString FromNarrow(const std::string& text)
{
    // Set files are ASCII almost always: take the cheap way when they are.
    if (std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    QString result;
    result.reserve(static_cast<qsizetype>(text.size()));
    for (size_t pos = 0; pos < text.size();) {
        const unsigned char b = static_cast<unsigned char>(text[pos]);
        if (b < 0x80) {
            result += QChar(static_cast<char16_t>(b));
            ++pos;
            continue;
        }
        char32_t cp = 0;
        const size_t length = Utf8Sequence(text, pos, cp);
        if (length == 0) {
            result += QChar(static_cast<char16_t>(0xDC00 + b));
            ++pos;
        } else if (cp < 0x10000) {
            result += QChar(static_cast<char16_t>(cp));
            pos += length;
        } else {
            result += QChar(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
            result += QChar(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
            pos += length;
        }
    }
    return result;
}

std::string ToNarrow(const QString& text)
{
    std::string result;
    result.reserve(static_cast<size_t>(text.size()));
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t unit = text.at(i).unicode();
        if (unit < 0x80) {
            result += static_cast<char>(unit);
        } else if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < n && text.at(i + 1).unicode() >= 0xDC00 &&
                   text.at(i + 1).unicode() <= 0xDFFF) {
            AppendUtf8(result, 0x10000 + ((char32_t(unit) - 0xD800) << 10) + (text.at(i + 1).unicode() - 0xDC00));
            ++i;
        } else if (unit >= 0xDC80 && unit <= 0xDCFF) {
            result += static_cast<char>(unit - 0xDC00); // a byte that was not UTF-8
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            AppendUtf8(result, 0xFFFD);
        } else {
            AppendUtf8(result, unit);
        }
    }
    return result;
}

} // namespace Private
} // namespace SetApi
