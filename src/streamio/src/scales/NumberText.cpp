#include "scales/NumberText.h"

#include <QLocale>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace SetApi {
namespace Private {

namespace {
constexpr std::uint64_t kQuietNan = 0x7ff8000000000000ull;
const QString kNanPrefix = QStringLiteral("nan:0x");

std::uint64_t BitsOf(double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, 8);
    return bits;
}
} // namespace

QString FormatNumber(double value)
{
    if (std::isnan(value)) {
        const std::uint64_t bits = BitsOf(value);
        if (bits == kQuietNan)
            return QStringLiteral("nan");
        return kNanPrefix + QStringLiteral("%1").arg(bits, 16, 16, QLatin1Char('0'));
    }
    if (std::isinf(value))
        return value < 0 ? QStringLiteral("-inf") : QStringLiteral("inf");
    if (value == 0.0)
        return std::signbit(value) ? QStringLiteral("-0") : QStringLiteral("0");
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

bool ParseNumber(const QString& text, double& value)
{
    const QString trimmed = text.trimmed();
    if (trimmed == QLatin1String("nan")) {
        std::memcpy(&value, &kQuietNan, 8);
        return true;
    }
    if (trimmed.startsWith(kNanPrefix)) {
        const QString digits = trimmed.mid(kNanPrefix.size());
        bool ok = false;
        const std::uint64_t bits = digits.toULongLong(&ok, 16);
        double nan;
        std::memcpy(&nan, &bits, 8);
        if (!ok || digits.size() != 16 || !std::isnan(nan))
            return false;
        value = nan;
        return true;
    }
    // QString::toDouble reads the C locale's form only: no group separators, no hexadecimal; it
    // answers false for a decimal beyond the double range. Its own NaN spellings are refused, so
    // that every NaN comes back with the bits it was written with.
    if (trimmed.contains(QLatin1String("nan"), Qt::CaseInsensitive))
        return false;
    bool ok = false;
    const double parsed = trimmed.toDouble(&ok);
    if (!ok)
        return false;
    value = parsed;
    return true;
}

} // namespace Private
} // namespace SetApi
