#include "SettingsFormat.h"

#include <QByteArray>
#include <QXmlStreamAttributes>
#include <QXmlStreamWriter>

namespace Storage {
namespace Private {
namespace SettingsFormat {

const QString kRootElement = QStringLiteral("SettingsDocument");
const QString kFormatAttribute = QStringLiteral("formatVersion");
const QString kSettingsElement = QStringLiteral("Settings");
const QString kValueElement = QStringLiteral("Value");
const QString kNameAttribute = QStringLiteral("name");
const QString kClassAttribute = QStringLiteral("class");
const QString kVersionAttribute = QStringLiteral("version");
const QString kValueAttribute = QStringLiteral("value");

namespace {

const QString kBase64Suffix = QStringLiteral("Base64");

// Base64 of the UTF-16 code units, little-endian: exact for every QString, lone surrogates too.
QString EncodeBase64(const QString& text)
{
    QByteArray bytes;
    bytes.reserve(text.size() * 2);
    for (const QChar c : text) {
        const char16_t unit = c.unicode();
        bytes.append(static_cast<char>(unit & 0xFF));
        bytes.append(static_cast<char>(unit >> 8));
    }
    return QString::fromLatin1(bytes.toBase64());
}

bool DecodeBase64(const QString& encoded, QString& text)
{
    const auto result = QByteArray::fromBase64Encoding(encoded.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    // toLatin1 maps what is not Latin-1 to '?', which the decoder then refuses.
    if (!result || result.decoded.size() % 2 != 0)
        return false;
    const QByteArray& bytes = result.decoded;
    QString decoded;
    decoded.reserve(bytes.size() / 2);
    for (qsizetype i = 0; i < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]);
        const auto high = static_cast<unsigned char>(bytes[i + 1]);
        decoded.append(QChar(static_cast<char16_t>(low | (high << 8))));
    }
    text = decoded;
    return true;
}

} // namespace

bool IsXmlSafe(const QString& text)
{
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t c = text.at(i).unicode();
        if (c == 0x9 || c == 0xA || c == 0xD)
            continue;
        if (c < 0x20 || c == 0xFFFE || c == 0xFFFF)
            return false;
        if (c >= 0xD800 && c <= 0xDBFF) {
            // A high surrogate is fine only as the first half of a pair.
            if (i + 1 >= size)
                return false;
            const char16_t next = text.at(i + 1).unicode();
            if (next < 0xDC00 || next > 0xDFFF)
                return false;
            ++i;
            continue;
        }
        if (c >= 0xDC00 && c <= 0xDFFF)
            return false;
    }
    return true;
}

void WriteStringAttribute(QXmlStreamWriter& writer, const QString& name, const QString& text)
{
    if (IsXmlSafe(text))
        writer.writeAttribute(name, text);
    else
        writer.writeAttribute(name + kBase64Suffix, EncodeBase64(text));
}

AttributeStatus ReadStringAttribute(const QXmlStreamAttributes& attributes, const QString& name, QString& text)
{
    const QString encodedName = name + kBase64Suffix;
    const bool hasPlain = attributes.hasAttribute(name);
    const bool hasEncoded = attributes.hasAttribute(encodedName);
    if (hasPlain && hasEncoded)
        return AttributeStatus::BothForms;
    if (hasEncoded)
        return DecodeBase64(attributes.value(encodedName).toString(), text) ? AttributeStatus::Ok
                                                                           : AttributeStatus::BadBase64;
    text = attributes.value(name).toString();
    return AttributeStatus::Ok;
}

} // namespace SettingsFormat
} // namespace Private
} // namespace Storage
