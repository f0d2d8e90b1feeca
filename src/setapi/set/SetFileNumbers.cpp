#include "SetFileNumbers.h"

#include <charconv>
#include <limits>

namespace SetApi {
namespace Private {

namespace {
bool IsCSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Skips leading white space and one sign, as atoi and atof do; tells whether the sign was '-'.
bool SkipBlanksAndSign(const std::string& text, size_t& pos)
{
    while (pos < text.size() && IsCSpace(text[pos]))
        ++pos;
    bool negative = false;
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-'))
        negative = text[pos++] == '-';
    return negative;
}
} // namespace

int ParseIntLikeAtoi(const std::string& text)
{
    size_t pos = 0;
    const bool negative = SkipBlanksAndSign(text, pos);
    const long long limit = negative ? -static_cast<long long>(std::numeric_limits<int>::min())
                                     : std::numeric_limits<int>::max();
    long long magnitude = 0;
    for (; pos < text.size() && IsDigit(text[pos]); ++pos) {
        magnitude = magnitude * 10 + (text[pos] - '0');
        if (magnitude > limit)
            magnitude = limit; // saturated; later digits cannot lower it
    }
    return static_cast<int>(negative ? -magnitude : magnitude);
}

double ParseDoubleLikeAtof(const std::string& text)
{
    size_t pos = 0;
    const bool negative = SkipBlanksAndSign(text, pos);
    if (pos < text.size() && (text[pos] == '+' || text[pos] == '-'))
        return 0.0; // a second sign: no number
    const char* first = text.data() + pos;
    const char* last = text.data() + text.size();
    double value = 0.0;
    const auto result = std::from_chars(first, last, value, std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        // Overflow or underflow: decide by the exponent, or without one by the integer digits.
        bool tiny = true;
        const char* p = first;
        for (; p < result.ptr && *p != 'e' && *p != 'E' && *p != '.'; ++p)
            if (*p != '0')
                tiny = false;
        for (const char* e = first; e < result.ptr; ++e)
            if (*e == 'e' || *e == 'E') {
                tiny = e + 1 < result.ptr && e[1] == '-';
                break;
            }
        value = tiny ? 0.0 : std::numeric_limits<double>::infinity();
    } else if (result.ec != std::errc()) {
        value = 0.0;
    }
    return negative ? -value : value;
}

} // namespace Private
} // namespace SetApi
