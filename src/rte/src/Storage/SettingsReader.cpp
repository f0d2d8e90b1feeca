#include "SettingsReader.h"

#include <RTE/Exception.h>
#include <Storage/Settings.h>

#include "SettingsFormat.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <vector>

namespace Storage {
namespace Private {

namespace {

namespace Format = SettingsFormat;

// One pass over the document with QXmlStreamReader. Nesting is tracked on an explicit stack, so
// the stack depth of this code does not grow with the document.
class DocumentReader {
public:
    DocumentReader(const QString& path, QFile& file) : m_path(path), m_xml(&file) {}

    void Read(Settings& target)
    {
        ReadRoot();
        ReadBody(target);
        // Whatever follows the root element must be comment, processing instruction or blanks.
        while (!m_xml.atEnd())
            m_xml.readNext();
        CheckXml();
    }

private:
    [[noreturn]] void Fail(const QString& what) const
    {
        RTE_THROW_MSG(RTE::Exception, "Settings document '" << m_path << "' " << what << " (line "
                                                             << m_xml.lineNumber() << ", column "
                                                             << m_xml.columnNumber() << ")");
    }

    void CheckXml() const
    {
        if (m_xml.hasError())
            Fail(QStringLiteral("is not well-formed XML: ") + m_xml.errorString());
    }

    void Next()
    {
        m_xml.readNext();
        CheckXml();
        if (m_xml.tokenType() == QXmlStreamReader::DTD)
            Fail(QStringLiteral("contains a document type declaration, which settings documents do not use"));
    }

    void ReadRoot()
    {
        while (!m_xml.atEnd() && m_xml.tokenType() != QXmlStreamReader::StartElement)
            Next();
        CheckXml();
        if (m_xml.tokenType() != QXmlStreamReader::StartElement)
            Fail(QStringLiteral("is empty or has no root element"));
        if (m_xml.name() != Format::kRootElement)
            Fail(QStringLiteral("has the root element '%1' instead of '%2'")
                     .arg(m_xml.name().toString(), Format::kRootElement));
        const QXmlStreamAttributes attributes = m_xml.attributes();
        if (!attributes.hasAttribute(Format::kFormatAttribute))
            Fail(QStringLiteral("has no format version (attribute '%1')").arg(Format::kFormatAttribute));
        const QString version = attributes.value(Format::kFormatAttribute).toString();
        static const QRegularExpression pattern(QStringLiteral("^([0-9]{1,9})\\.([0-9]{1,9})$"));
        const QRegularExpressionMatch match = pattern.match(version);
        if (!match.hasMatch())
            Fail(QStringLiteral("has an invalid format version '%1'").arg(version));
        const int major = match.captured(1).toInt();
        if (major > Format::kMajorVersion)
            Fail(QStringLiteral("has format version %1, which is newer than the supported version %2.x")
                     .arg(version)
                     .arg(Format::kMajorVersion));
        if (major < Format::kMajorVersion)
            Fail(QStringLiteral("has the unknown format version %1").arg(version));
    }

    // Reads from just after the root's start tag to its end tag.
    void ReadBody(Settings& target)
    {
        std::vector<Settings*> open; // the Settings elements enclosing the reader's position
        bool haveTop = false;
        for (;;) {
            Next();
            if (m_xml.atEnd())
                Fail(QStringLiteral("ends before its root element is closed"));
            if (m_xml.isEndElement()) {
                if (open.empty())
                    break; // the root's end tag
                open.pop_back();
                continue;
            }
            if (!m_xml.isStartElement())
                continue; // text, comments, processing instructions
            const auto name = m_xml.name();
            if (name == Format::kSettingsElement) {
                Settings* node = nullptr;
                if (open.empty()) {
                    if (haveTop)
                        Fail(QStringLiteral("holds more than one top-level '%1' element").arg(Format::kSettingsElement));
                    haveTop = true;
                    node = &target;
                } else {
                    if (static_cast<int>(open.size()) >= Format::kMaxDepth)
                        Fail(QStringLiteral("nests settings deeper than %1 levels").arg(Format::kMaxDepth));
                    node = &open.back()->AddChild(QString());
                }
                ReadNodeAttributes(*node);
                open.push_back(node);
            } else if (name == Format::kValueElement && !open.empty()) {
                ReadValue(*open.back());
                SkipRestOfElement();
            } else {
                // Unknown here: a later minor version's addition. Ignore it with its content.
                SkipRestOfElement();
            }
        }
        if (!haveTop)
            Fail(QStringLiteral("holds no '%1' element").arg(Format::kSettingsElement));
    }

    void SkipRestOfElement()
    {
        m_xml.skipCurrentElement();
        CheckXml();
    }

    QString ReadString(const QXmlStreamAttributes& attributes, const QString& name)
    {
        QString text;
        switch (Format::ReadStringAttribute(attributes, name, text)) {
        case Format::AttributeStatus::Ok:
            break;
        case Format::AttributeStatus::BothForms:
            Fail(QStringLiteral("gives attribute '%1' both plain and in base64").arg(name));
        case Format::AttributeStatus::BadBase64:
            Fail(QStringLiteral("has invalid base64 text in attribute '%1Base64'").arg(name));
        }
        return text;
    }

    void ReadNodeAttributes(Settings& node)
    {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        node.SetName(ReadString(attributes, Format::kNameAttribute));
        node.SetClass(ReadString(attributes, Format::kClassAttribute));
        if (attributes.hasAttribute(Format::kVersionAttribute)) {
            const QString text = attributes.value(Format::kVersionAttribute).toString();
            static const QRegularExpression pattern(QStringLiteral("^-?[0-9]{1,10}$"));
            bool ok = false;
            const int version = pattern.match(text).hasMatch() ? text.toInt(&ok, 10) : 0;
            if (!ok)
                Fail(QStringLiteral("has an invalid settings version '%1'").arg(text));
            node.SetVersion(version);
        }
    }

    void ReadValue(Settings& node)
    {
        const QXmlStreamAttributes attributes = m_xml.attributes();
        const QString name = ReadString(attributes, Format::kNameAttribute);
        if (node.HasValue(name))
            Fail(QStringLiteral("holds the value '%1' twice in settings '%2'").arg(name, node.GetName()));
        node.SetValue(name, ReadString(attributes, Format::kValueAttribute));
    }

    QString m_path;
    QXmlStreamReader m_xml;
};

} // namespace

void ReadSettingsDocument(const QString& path, Settings& target)
{
    const QFileInfo info(path);
    if (!info.exists())
        RTE_THROW_MSG(RTE::FileError, "Settings document '" << path << "' does not exist");
    if (info.isDir())
        RTE_THROW_MSG(RTE::FileError, "Settings document '" << path << "' is a folder, not a file");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        RTE_THROW_MSG(RTE::FileError, "Settings document '" << path << "' could not be opened: " << file.errorString());
    DocumentReader(path, file).Read(target);
}

} // namespace Private
} // namespace Storage
