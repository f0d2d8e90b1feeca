#include <StreamIO/ScaleXml.h>

#include "scales/NumberText.h"

#include <RTE/Exception.h>

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace SetApi {
namespace Private {

namespace {

// A text for a message: long texts are cut, so that a huge attribute cannot flood the log.
QString Excerpt(const QString& text)
{
    constexpr int kMax = 40;
    return text.size() <= kMax ? text : text.left(kMax) + QStringLiteral("...");
}

double Number(const QXmlStreamAttributes& attributes, const QString& element, qint64 line, const char* name)
{
    const QString key = QString::fromLatin1(name);
    if (!attributes.hasAttribute(key))
        RTE_THROW_MSG(RTE::VerificationFailed, "Scale element '" << element << "' in line " << line
                                                                 << " has no attribute '" << key << "'");
    const QString text = attributes.value(key).toString();
    double value = 0.0;
    if (!ParseNumber(text, value))
        RTE_THROW_MSG(RTE::VerificationFailed, "Scale element '" << element << "' in line " << line
                                                                 << ": attribute '" << key << "' is not a number: '"
                                                                 << Excerpt(text) << "'");
    return value;
}

} // namespace

RTE::S_Scale ReadScale(QXmlStreamReader& reader)
{
    if (!reader.isStartElement())
        RTE_THROW_MSG(RTE::VerificationFailed, "A scale is read from the start of its XML element, not from a "
                                                   << reader.tokenString() << " token in line " << reader.lineNumber());
    const QString element = reader.name().toString();
    const qint64 line = reader.lineNumber();
    const QXmlStreamAttributes attributes = reader.attributes();
    reader.skipCurrentElement();
    if (reader.hasError())
        RTE_THROW_MSG(RTE::VerificationFailed, "Scale element '" << element << "' in line " << line
                                                                 << " cannot be read: " << reader.errorString());
    RTE::S_Scale scale;
    scale.factor = Number(attributes, element, line, "factor");
    scale.offset = Number(attributes, element, line, "offset");
    scale.unit = attributes.value(QStringLiteral("unit")).toString();
    scale.description = attributes.value(QStringLiteral("description")).toString();
    return scale;
}

void WriteScale(QXmlStreamWriter& writer, const QString& elementName, const RTE::S_Scale& scale)
{
    writer.writeStartElement(elementName);
    writer.writeAttribute(QStringLiteral("factor"), FormatNumber(scale.factor));
    writer.writeAttribute(QStringLiteral("offset"), FormatNumber(scale.offset));
    writer.writeAttribute(QStringLiteral("unit"), scale.unit);
    writer.writeAttribute(QStringLiteral("description"), scale.description);
    writer.writeEndElement();
}

} // namespace Private
} // namespace SetApi
