#include "NarrowText.h"

#include <RTE/String.h>

#include <algorithm>

namespace SetApi {
namespace Private {

QString FromNarrow(const std::string& text)
{
    // Set files are ASCII almost always: take the cheap way when they are.
    if (std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    QString result;
    result.reserve(static_cast<qsizetype>(text.size()));
    for (size_t pos = 0; pos < text.size();) {
        char32_t cp = 0;
        if (!RTE::String::DecodeUtf8(text, pos, cp)) {
            // A byte that is not UTF-8 is kept as a low surrogate, so that it converts back exactly.
            result += QChar(static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(text[pos])));
            ++pos;
        } else if (cp < 0x10000) {
            result += QChar(static_cast<char16_t>(cp));
        } else {
            result += QChar(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
            result += QChar(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
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
            RTE::String::AppendUtf8(result, 0x10000 + ((char32_t(unit) - 0xD800) << 10) + (text.at(i + 1).unicode() - 0xDC00));
            ++i;
        } else if (unit >= 0xDC80 && unit <= 0xDCFF) {
            result += static_cast<char>(unit - 0xDC00); // a byte that was not UTF-8
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            RTE::String::AppendUtf8(result, 0xFFFD);
        } else {
            RTE::String::AppendUtf8(result, unit);
        }
    }
    return result;
}

} // namespace Private
} // namespace SetApi
