#include <Storage/Settings.h>

#include "SettingsCopy.h"

#include <QLocale>
#include <QRegularExpression>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace Storage {

namespace {

const QString kTrue = QStringLiteral("true");
const QString kFalse = QStringLiteral("false");
const QString kNanPrefix = QStringLiteral("nan:");

std::uint64_t BitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

double FromBits(std::uint64_t bits)
{
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// An optional minus sign and decimal digits, nothing else (QString::toLongLong alone would also
// take a plus sign and surrounding blanks).
bool IsStrictInteger(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^-?[0-9]+$"));
    return pattern.match(text).hasMatch();
}

QString FormatDouble(double value)
{
    if (std::isnan(value)) {
        const std::uint64_t bits = BitsOf(value);
        if (bits == BitsOf(std::numeric_limits<double>::quiet_NaN()))
            return QStringLiteral("nan");
        return kNanPrefix + QStringLiteral("%1").arg(bits, 16, 16, QLatin1Char('0'));
    }
    if (value == 0 && std::signbit(value))
        return QStringLiteral("-0");
    // The shortest text that reads back to the same double.
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

bool ParseDouble(const QString& text, double& value)
{
    if (text.startsWith(kNanPrefix)) {
        const QString hex = text.mid(kNanPrefix.size());
        static const QRegularExpression pattern(QStringLiteral("^[0-9a-fA-F]{16}$"));
        if (!pattern.match(hex).hasMatch())
            return false;
        bool ok = false;
        const std::uint64_t bits = hex.toULongLong(&ok, 16);
        if (!ok)
            return false;
        value = FromBits(bits);
        return true;
    }
    if (text.isEmpty() || text.front().isSpace() || text.back().isSpace())
        return false;
    bool ok = false;
    const double parsed = text.toDouble(&ok);
    if (!ok)
        return false;
    value = parsed;
    return true;
}

QString EscapeListItem(const QString& item)
{
    QString escaped;
    escaped.reserve(item.size() + 1);
    for (const QChar c : item) {
        if (c == QLatin1Char('\\') || c == QLatin1Char(';'))
            escaped += QLatin1Char('\\');
        escaped += c;
    }
    return escaped;
}

bool ParseList(const QString& text, QStringList& list)
{
    QStringList items;
    QString current;
    bool pending = false; // something of the current item has been read
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('\\')) {
            if (i + 1 >= text.size())
                return false;
            current += text.at(++i);
            pending = true;
        } else if (c == QLatin1Char(';')) {
            items.append(current);
            current.clear();
            pending = false;
        } else {
            current += c;
            pending = true;
        }
    }
    if (pending)
        items.append(current);
    list = items;
    return true;
}

} // namespace

Settings::~Settings() = default;

int Settings::GetInt(const QString& name, int defaultValue) const
{
    const QString text = GetValue(name);
    if (!IsStrictInteger(text))
        return defaultValue;
    bool ok = false;
    const int value = text.toInt(&ok, 10);
    return ok ? value : defaultValue;
}

void Settings::SetInt(const QString& name, int value) { SetValue(name, QString::number(value)); }

qint64 Settings::GetInt64(const QString& name, qint64 defaultValue) const
{
    const QString text = GetValue(name);
    if (!IsStrictInteger(text))
        return defaultValue;
    bool ok = false;
    const qint64 value = text.toLongLong(&ok, 10);
    return ok ? value : defaultValue;
}

void Settings::SetInt64(const QString& name, qint64 value) { SetValue(name, QString::number(value)); }

double Settings::GetDouble(const QString& name, double defaultValue) const
{
    double value = 0;
    return ParseDouble(GetValue(name), value) ? value : defaultValue;
}

void Settings::SetDouble(const QString& name, double value) { SetValue(name, FormatDouble(value)); }

bool Settings::GetBool(const QString& name, bool defaultValue) const
{
    const QString text = GetValue(name);
    if (text == kTrue || text == QLatin1String("1"))
        return true;
    if (text == kFalse || text == QLatin1String("0"))
        return false;
    return defaultValue;
}

void Settings::SetBool(const QString& name, bool value) { SetValue(name, value ? kTrue : kFalse); }

QStringList Settings::GetStringList(const QString& name, const QStringList& defaultValue) const
{
    if (!HasValue(name))
        return defaultValue;
    QStringList list;
    return ParseList(GetValue(name), list) ? list : defaultValue;
}

void Settings::SetStringList(const QString& name, const QStringList& value)
{
    QString text;
    for (const QString& item : value) {
        text += EscapeListItem(item);
        text += QLatin1Char(';');
    }
    SetValue(name, text);
}

void Settings::CopyFrom(const Settings& source)
{
    if (&source == this)
        return;
    // Source may be a descendant of this object: take a copy before clearing.
    const std::unique_ptr<Settings> copy = source.Clone();
    for (const QString& name : GetValueNames())
        RemoveValue(name);
    while (GetChildCount() > 0)
        RemoveChild(GetChildCount() - 1);
    Private::CopyContent(*copy, *this);
}

Settings& Settings::AddCopy(const Settings& source)
{
    const std::unique_ptr<Settings> copy = source.Clone();
    Settings& child = AddChild(copy->GetName());
    Private::CopyContent(*copy, child);
    return child;
}

bool AreEqual(const Settings& left, const Settings& right)
{
    std::vector<std::pair<const Settings*, const Settings*>> work{{&left, &right}};
    while (!work.empty()) {
        const Settings& a = *work.back().first;
        const Settings& b = *work.back().second;
        work.pop_back();
        if (a.GetName() != b.GetName() || a.GetClass() != b.GetClass() || a.GetVersion() != b.GetVersion())
            return false;
        const QStringList names = a.GetValueNames();
        if (names != b.GetValueNames())
            return false;
        for (const QString& name : names)
            if (a.GetValue(name) != b.GetValue(name))
                return false;
        if (a.GetChildCount() != b.GetChildCount())
            return false;
        for (int i = 0; i < a.GetChildCount(); ++i)
            work.emplace_back(&a.GetChild(i), &b.GetChild(i));
    }
    return true;
}

} // namespace Storage
