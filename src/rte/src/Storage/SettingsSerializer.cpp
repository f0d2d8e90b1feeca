#include <Storage/SettingsSerializer.h>

#include <RTE/Exception.h>
#include <Storage/Settings.h>

#include "SettingsFormat.h"

#include <QSaveFile>
#include <QXmlStreamWriter>

#include <vector>

namespace Storage {
namespace Private {

namespace {

namespace Format = SettingsFormat;

// Writes the start tag, attributes and values of one node; its children follow.
void WriteNodeHead(QXmlStreamWriter& writer, const Settings& node)
{
    writer.writeStartElement(Format::kSettingsElement);
    Format::WriteStringAttribute(writer, Format::kNameAttribute, node.GetName());
    Format::WriteStringAttribute(writer, Format::kClassAttribute, node.GetClass());
    writer.writeAttribute(Format::kVersionAttribute, QString::number(node.GetVersion()));
    for (const QString& name : node.GetValueNames()) {
        writer.writeEmptyElement(Format::kValueElement);
        Format::WriteStringAttribute(writer, Format::kNameAttribute, name);
        Format::WriteStringAttribute(writer, Format::kValueAttribute, node.GetValue(name));
    }
}

// Writes the tree without recursion; false if it nests deeper than a reader accepts.
bool WriteTree(QXmlStreamWriter& writer, const Settings& top)
{
    struct Open {
        const Settings* node;
        int nextChild;
    };
    std::vector<Open> open;
    WriteNodeHead(writer, top);
    open.push_back({&top, 0});
    while (!open.empty()) {
        Open& current = open.back();
        if (current.nextChild >= current.node->GetChildCount()) {
            writer.writeEndElement();
            open.pop_back();
            continue;
        }
        const Settings& child = current.node->GetChild(current.nextChild++);
        if (static_cast<int>(open.size()) >= Format::kMaxDepth)
            return false;
        WriteNodeHead(writer, child);
        open.push_back({&child, 0});
    }
    return true;
}

} // namespace

SettingsSerializer::SettingsSerializer(const Settings& settings) : m_settings(settings) {}

void SettingsSerializer::SaveAs(const QString& path) const
{
    // QSaveFile writes a temporary file beside the target, flushes it to disk on commit and
    // renames it over the target; when it is destroyed without a successful commit it removes
    // the temporary file, on every path out of this function.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        RTE_THROW(RTE::FileWriteError, file, QStringLiteral("Could not write settings document '%1'").arg(path));

    QXmlStreamWriter writer(&file);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(2);
    writer.writeStartDocument();
    writer.writeStartElement(Format::kRootElement);
    writer.writeAttribute(Format::kFormatAttribute,
                          QStringLiteral("%1.%2").arg(Format::kMajorVersion).arg(Format::kMinorVersion));
    if (!WriteTree(writer, m_settings)) {
        file.cancelWriting();
        RTE_THROW_MSG(RTE::FileWriteError, "Could not write settings document '"
                                               << path << "': settings nest deeper than "
                                               << Format::kMaxDepth << " levels");
    }
    writer.writeEndElement();
    writer.writeEndDocument();
    if (writer.hasError()) {
        file.cancelWriting();
        RTE_THROW(RTE::FileWriteError, file, QStringLiteral("Could not write settings document '%1'").arg(path));
    }
    if (!file.commit())
        RTE_THROW(RTE::FileWriteError, file, QStringLiteral("Could not write settings document '%1'").arg(path));
}

} // namespace Private
} // namespace Storage
