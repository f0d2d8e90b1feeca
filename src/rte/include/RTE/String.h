#pragma once
// Small text helpers on narrow strings. Case changes touch ASCII letters only, so that UTF-8 text
// and binary data pass through unchanged whatever the process locale is.

#include <RTE/Export.h>

#include <cstddef>
#include <string>

namespace RTE {
namespace String {

// Turns 'a'..'z' into 'A'..'Z' in place.
RTE_API void ToUpper(std::string& text);
// Turns 'A'..'Z' into 'a'..'z' in place.
RTE_API void ToLower(std::string& text);
// Whether both texts are equal when ASCII case is ignored.
RTE_API bool EqualsIgnoreCase(const std::string& a, const std::string& b);

// Appends the UTF-8 form of a code point (at most U+10FFFF; surrogates are encoded as they are).
RTE_API void AppendUtf8(std::string& out, char32_t codePoint);
// Decodes the UTF-8 sequence at text[pos] strictly: no overlong forms, no encoded surrogates,
// nothing above U+10FFFF. On success the code point is in codePoint and pos is behind the
// sequence; an invalid or cut sequence gives false and leaves pos where it was.
RTE_API bool DecodeUtf8(const std::string& text, size_t& pos, char32_t& codePoint);

} // namespace String
} // namespace RTE
