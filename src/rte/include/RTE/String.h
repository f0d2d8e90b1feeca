#pragma once
// Small text helpers on narrow strings. Case changes touch ASCII letters only, so that UTF-8 text
// and binary data pass through unchanged whatever the process locale is.

#include <RTE/Export.h>

#include <string>

namespace RTE {
namespace String {

// Turns 'a'..'z' into 'A'..'Z' in place.
RTE_API void ToUpper(std::string& text);
// Turns 'A'..'Z' into 'a'..'z' in place.
RTE_API void ToLower(std::string& text);
// Whether both texts are equal when ASCII case is ignored.
RTE_API bool EqualsIgnoreCase(const std::string& a, const std::string& b);

} // namespace String
} // namespace RTE
