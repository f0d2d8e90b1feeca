#pragma once
// Narrow strings (names and values of set files) to QString and back without loss.
//
// Valid UTF-8 is decoded as such. Each byte that is not part of a valid UTF-8 sequence becomes the
// lone surrogate U+DC00 + byte (U+DC80..U+DCFF), which no valid UTF-8 produces, and turns back into
// that byte. So any byte sequence survives FromNarrow followed by ToNarrow.

#include <QString>

#include <string>

namespace SetApi {
namespace Private {

QString FromNarrow(const std::string& text);
// Other unpaired surrogates, which a narrow string cannot hold, become U+FFFD.
std::string ToNarrow(const QString& text);

} // namespace Private
} // namespace SetApi
