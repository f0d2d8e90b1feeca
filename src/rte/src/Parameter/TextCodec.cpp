#include "TextCodec.h"

#include <RTE/String.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace RTE {
namespace Parameter {
namespace Private {

namespace {

const char kHex[] = "0123456789abcdef";

void AppendUnitEscape(std::string& out, char16_t unit)
{
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        out += kHex[(unit >> shift) & 0xF];
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

void AppendCodePoint(QString& text, char32_t cp)
{
    if (cp < 0x10000) {
        text += QChar(static_cast<char16_t>(cp));
    } else {
        const char32_t v = cp - 0x10000;
        text += QChar(static_cast<char16_t>(0xD800 + (v >> 10)));
        text += QChar(static_cast<char16_t>(0xDC00 + (v & 0x3FF)));
    }
}

} // namespace

void AppendQuoted(std::string& out, const QString& text)
{
    out += '"';
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t unit = text.at(i).unicode();
        switch (unit) {
        case u'\\': out += "\\\\"; continue;
        case u'"': out += "\\\""; continue;
        case u'\n': out += "\\n"; continue;
        case u'\r': out += "\\r"; continue;
        case u'\t': out += "\\t"; continue;
        default: break;
        }
        if (unit < 0x20 || unit == 0x7F) {
            AppendUnitEscape(out, unit);
        } else if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < n && text.at(i + 1).unicode() >= 0xDC00 &&
                   text.at(i + 1).unicode() <= 0xDFFF) {
            const char32_t cp = 0x10000 + ((char32_t(unit) - 0xD800) << 10) + (text.at(i + 1).unicode() - 0xDC00);
            RTE::String::AppendUtf8(out, cp);
            ++i;
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            AppendUnitEscape(out, unit); // an unpaired surrogate has no UTF-8 form
        } else {
            RTE::String::AppendUtf8(out, unit);
        }
    }
    out += '"';
}

bool ReadQuoted(const std::string& line, size_t& pos, QString& text, std::string& error)
{
    text.clear();
    if (pos >= line.size() || line[pos] != '"') {
        error = "a quoted string was expected";
        return false;
    }
    ++pos;
    while (pos < line.size()) {
        const char c = line[pos];
        if (c == '"') {
            ++pos;
            return true;
        }
        if (c != '\\') {
            char32_t cp = 0;
            if (!RTE::String::DecodeUtf8(line, pos, cp)) {
                error = "invalid UTF-8 in a string";
                return false;
            }
            AppendCodePoint(text, cp);
            continue;
        }
        if (pos + 1 >= line.size())
            break;
        const char e = line[pos + 1];
        pos += 2;
        switch (e) {
        case '\\': text += QLatin1Char('\\'); break;
        case '"': text += QLatin1Char('"'); break;
        case 'n': text += QLatin1Char('\n'); break;
        case 'r': text += QLatin1Char('\r'); break;
        case 't': text += QLatin1Char('\t'); break;
        case 'u': {
            if (line.size() - pos < 4) {
                error = "a \\u escape needs four hex digits";
                return false;
            }
            char16_t unit = 0;
            for (int k = 0; k < 4; ++k) {
                const int d = HexDigit(line[pos + static_cast<size_t>(k)]);
                if (d < 0) {
                    error = "a \\u escape needs four hex digits";
                    return false;
                }
                unit = static_cast<char16_t>((unit << 4) | d);
            }
            pos += 4;
            text += QChar(unit);
            break;
        }
        default:
            error = std::string("unknown escape \\") + (e >= 0x20 && e < 0x7F ? std::string(1, e) : "?");
            return false;
        }
    }
    error = "unterminated string";
    return false;
}

std::string FormatDouble(double value)
{
    if (std::isnan(value)) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        std::string out = "nan(0x";
        for (int shift = 60; shift >= 0; shift -= 4)
            out += kHex[(bits >> shift) & 0xF];
        out += ')';
        return out;
    }
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

bool ParseDouble(const std::string& token, double& value)
{
    static const char kNanPrefix[] = "nan(0x";
    const size_t prefixLength = sizeof kNanPrefix - 1;
    if (token.compare(0, prefixLength, kNanPrefix) == 0) {
        if (token.size() != prefixLength + 17 || token.back() != ')')
            return false;
        std::uint64_t bits = 0;
        for (size_t i = prefixLength; i < prefixLength + 16; ++i) {
            const int d = HexDigit(token[i]);
            if (d < 0)
                return false;
            bits = (bits << 4) | static_cast<std::uint64_t>(d);
        }
        double parsed = 0;
        std::memcpy(&parsed, &bits, sizeof parsed);
        if (!std::isnan(parsed))
            return false;
        value = parsed;
        return true;
    }
    if (token.empty())
        return false;
    double parsed = 0;
    const char* end = token.data() + token.size();
    const auto result = std::from_chars(token.data(), end, parsed);
    if (result.ec != std::errc() || result.ptr != end)
        return false;
    value = parsed;
    return true;
}

bool ParseInteger(const std::string& token, long long& value)
{
    if (token.empty())
        return false;
    long long parsed = 0;
    const char* end = token.data() + token.size();
    const auto result = std::from_chars(token.data(), end, parsed);
    if (result.ec != std::errc() || result.ptr != end)
        return false;
    value = parsed;
    return true;
}

} // namespace Private
} // namespace Parameter
} // namespace RTE
