#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <RTE/AtomicFileWrite.h>
#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <exception>

namespace SetApi {

namespace {

const QString RootElement = QStringLiteral("ReaderCfg");
const QString ReaderInfoElement = QStringLiteral("ReaderInfo");
const QString ContentPurposeElement = QStringLiteral("ContentPurpose");
const QString RepairedElement = QStringLiteral("CorruptionRepaired");

const QString NameAttribute = QStringLiteral("Name");
const QString TypeAttribute = QStringLiteral("Type");
const QString FilePrefixAttribute = QStringLiteral("FilePrefix");
const QString FormatDescriptionAttribute = QStringLiteral("FormatDescription");
const QString FramesAttribute = QStringLiteral("IsAssociatedToFrames");
const QString EntireImageAttribute = QStringLiteral("IsAssociatedToEntireImage");
const QString AllImagesAttribute = QStringLiteral("IsAssociatedToAllImages");
const QString StartFrameAttribute = QStringLiteral("StartFrame");
const QString EndFrameAttribute = QStringLiteral("EndFrame");
const QString DetailsAttribute = QStringLiteral("Details");

const char* const ConfigurationFileName = "ReaderConfiguration.xml";

QString TextOf(bool flag) { return flag ? QStringLiteral("true") : QStringLiteral("false"); }

// Only the exact text "true" is true; "True", "1" or a missing attribute are false.
bool FlagOf(const QXmlStreamAttributes& attributes, const QString& name)
{
    return attributes.value(name) == QLatin1String("true");
}

// A missing frame number reads as 0, and so does one that is no decimal unsigned 32-bit number.
std::uint32_t FrameOf(const QXmlStreamAttributes& attributes, const QString& name)
{
    if (!attributes.hasAttribute(name))
        return 0;
    bool ok = false;
    const uint value = attributes.value(name).toUInt(&ok, 10);
    return ok ? value : 0;
}

// Reads the ReaderInfo element the reader stands on and the ContentPurpose that must follow it.
// The reader is left on the ContentPurpose element.
Private::C_ReaderInfo ReadReaderInfo(QXmlStreamReader& xml)
{
    const QXmlStreamAttributes attributes = xml.attributes();
    Private::C_ReaderInfo info;
    info.Name = attributes.value(NameAttribute).toString();
    info.Type = attributes.value(TypeAttribute).toString();
    info.FilePrefix = attributes.value(FilePrefixAttribute).toString();
    info.FormatDescription = attributes.value(FormatDescriptionAttribute).toString();

    do {
        xml.readNext();
    } while (!xml.atEnd() && !xml.isStartElement());
    if (!xml.isStartElement() || xml.name() != ContentPurposeElement)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Detected unexpected/invalid XML-content."));
    info.ContentPurpose = Private::ReadContentPurpose(xml);
    return info;
}

} // namespace

QString GetStreamSetConfigurationName(const QString& setName)
{
    return setName + QLatin1Char('/') + QLatin1String(ConfigurationFileName);
}

std::string GetStreamSetConfigurationName(const std::string& setName)
{
    return setName + '/' + ConfigurationFileName;
}

namespace Private {

C_ContentPurpose ReadContentPurpose(const QXmlStreamReader& xml)
{
    if (!xml.isStartElement() || xml.name() != ContentPurposeElement)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Current XML-element is no 'ContentPurpose'-node."));
    const QXmlStreamAttributes attributes = xml.attributes();
    return C_ContentPurpose(FlagOf(attributes, FramesAttribute), FlagOf(attributes, EntireImageAttribute),
                            FlagOf(attributes, AllImagesAttribute), FrameOf(attributes, StartFrameAttribute),
                            FrameOf(attributes, EndFrameAttribute));
}

C_ReaderConfiguration ReadReaderConfiguration(QIODevice& device)
{
    RTE_VERIFY(device.isReadable(), "Device is not readable.");

    // One pass over the tokens. Only two element names mean anything, wherever they stand; every
    // other element, the root included, is passed over token by token (not skipped as a whole), so
    // that unknown wrappers and additions leave the entries readable.
    C_ReaderConfiguration configuration;
    QXmlStreamReader xml(&device);
    xml.readNext();
    while (!xml.atEnd()) {
        if (xml.isStartElement()) {
            if (xml.name() == ReaderInfoElement)
                configuration.AddReader(ReadReaderInfo(xml));
            else if (xml.name() == RepairedElement)
                configuration.MarkAsRepaired(xml.attributes().value(DetailsAttribute).toString());
        }
        xml.readNext();
    }
    if (xml.hasError())
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Reading reader-configuration from XML-content failed:\nXML-error is:\n" << xml.errorString());
    return configuration;
}

C_ReaderConfiguration LoadReaderConfiguration(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        RTE_THROW_MSG(RTE::Exception, "Could not open file: " << path);
    return ReadReaderConfiguration(file);
}

void WriteReaderConfiguration(const C_ReaderConfiguration& configuration, QIODevice& device)
{
    if (!device.isWritable())
        RTE_THROW(RTE::FileWriteError, device, QStringLiteral("Device is not writable."));

    QXmlStreamWriter xml(&device);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(RootElement);
    for (unsigned i = 0; i < configuration.GetReaderCount(); ++i) {
        const C_ReaderInfo& info = configuration.GetReader(i);
        xml.writeStartElement(ReaderInfoElement);
        xml.writeAttribute(NameAttribute, info.Name);
        xml.writeAttribute(TypeAttribute, info.Type);
        xml.writeAttribute(FilePrefixAttribute, info.FilePrefix);
        xml.writeAttribute(FormatDescriptionAttribute, info.FormatDescription);

        const C_ContentPurpose& purpose = info.ContentPurpose;
        xml.writeStartElement(ContentPurposeElement);
        xml.writeAttribute(FramesAttribute, TextOf(purpose.IsAssociatedToFrames()));
        xml.writeAttribute(EntireImageAttribute, TextOf(purpose.IsAssociatedToEntireImage()));
        xml.writeAttribute(AllImagesAttribute, TextOf(purpose.IsAssociatedToAllImages()));
        if (purpose.IsAssociatedToFrames()) {
            xml.writeAttribute(StartFrameAttribute, QString::number(purpose.StartFrame()));
            xml.writeAttribute(EndFrameAttribute, QString::number(purpose.EndFrame()));
        }
        xml.writeEndElement(); // ContentPurpose
        xml.writeEndElement(); // ReaderInfo
    }
    if (configuration.HasBeenRepaired()) {
        xml.writeStartElement(RepairedElement);
        xml.writeAttribute(DetailsAttribute, configuration.GetDetailsOfRepair());
        xml.writeEndElement();
    }
    xml.writeEndElement(); // ReaderCfg
    xml.writeEndDocument();
    if (xml.hasError())
        RTE_THROW(RTE::FileWriteError, device, QStringLiteral("Writing the reader configuration failed."));
}

void SaveReaderConfiguration(const C_ReaderConfiguration& configuration, const QString& path)
{
    QByteArray document;
    {
        QBuffer buffer(&document);
        buffer.open(QIODevice::WriteOnly);
        WriteReaderConfiguration(configuration, buffer);
    }

    try {
        RTE::WriteFileAtomically(path.toStdString(), document.constData(), static_cast<std::size_t>(document.size()));
    } catch (const std::exception&) {
        // The file system's failure has been logged where it arose; the caller learns the path.
        RTE_THROW(RTE::FileWriteError, path);
    }
}

} // namespace Private
} // namespace SetApi
