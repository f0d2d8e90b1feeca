#pragma once
// Numbers of set file lines, read the same in every locale.

#include <string>

namespace SetApi {
namespace Private {

// Like atoi in the C locale: leading white space, an optional sign, then digits up to the first
// other character; 0 without digits. Values beyond the int range saturate instead of being
// undefined.
int ParseIntLikeAtoi(const std::string& text);

// Like atof in the C locale for decimal text, "inf", "infinity" and "nan" (any case): leading white
// space, an optional sign, then the longest number there is; 0 without one. A value too large gives
// infinity with its sign, one too small gives zero.
double ParseDoubleLikeAtof(const std::string& text);

} // namespace Private
} // namespace SetApi
