#pragma once
// Doubles as text that reads back bit for bit: the shortest decimal that converts back to the same
// double ("0.1", "1e-300", "-0"), "inf" and "-inf", "nan" for the usual quiet NaN and
// "nan:0x<16 hex digits>" for any other NaN, with its bits.

#include <QString>

namespace SetApi {
namespace Private {

QString FormatNumber(double value);
// Reads what FormatNumber writes, and any decimal number with optional sign and exponent, with
// surrounding white space. False for anything else, also for a decimal beyond the double range.
bool ParseNumber(const QString& text, double& value);

} // namespace Private
} // namespace SetApi
