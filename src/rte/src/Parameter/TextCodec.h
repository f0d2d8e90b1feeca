#pragma once
// The value spellings of the parameter tree text form: quoted strings, integers and doubles.

#include <QString>

#include <string>

namespace RTE {
namespace Parameter {
namespace Private {

// Appends the text between double quotes, escaped so that any QString (NUL, control characters,
// unpaired surrogates, non-BMP characters) reads back identically.
void AppendQuoted(std::string& out, const QString& text);

// Reads a quoted string starting at line[pos], which must be '"'. On success pos is behind the
// closing quote. On failure returns false with a reason in `error`.
bool ReadQuoted(const std::string& line, size_t& pos, QString& text, std::string& error);

// The shortest decimal that reads back to the same bits; inf, -inf; NaN as nan(0x<16 hex digits>).
std::string FormatDouble(double value);
// The whole token must be a double in the form FormatDouble writes (or any decimal, inf, nan).
bool ParseDouble(const std::string& token, double& value);
// The whole token must be a decimal 64-bit integer.
bool ParseInteger(const std::string& token, long long& value);

} // namespace Private
} // namespace Parameter
} // namespace RTE
