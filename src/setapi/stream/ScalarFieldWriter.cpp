#include <SetApi/stream/ScalarFieldWriter.h>

#include <SetApi/stream/ScalarFieldReader.h>

#include <RTE/Exception.h>
#include <StreamIO/ScaleXml.h>

#include <QFile>
#include <QXmlStreamWriter>

namespace SetApi {

ScalarFieldWriter::ScalarFieldWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage,
                                     C_ImageWriter::E_BitsPerPixel bits, const QString& name,
                                     const RTE::S_Scale& intensityScale)
    : C_ImageWriter(width, height, depth, framesPerImage, bits, QString()), m_name(name),
      m_intensityScale(intensityScale)
{
    RTE_VERIFY(!name.isEmpty(), "Empty name of scalar field is not allowed");
    // The reader tells a field's type only as word, float or double.
    if (bits != C_ImageWriter::Word && bits != C_ImageWriter::Float && bits != C_ImageWriter::Double)
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Scalar field '" << name << "' must hold word, float or double data, not bits-per-pixel value "
                                       << int(bits));
}

ScalarFieldWriter::~ScalarFieldWriter() = default;

QString ScalarFieldWriter::GetFilenameForScalarFieldName(const QString& destination)
{
    return QStringLiteral("%1-0.sfn").arg(destination);
}

void ScalarFieldWriter::Open(const QString& destination)
{
    const QString path = GetFilenameForScalarFieldName(destination);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Opening file '" << path << "' for writing failed: " << file.errorString());

    QXmlStreamWriter xml(&file);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("ScalarField"));
    xml.writeStartElement(QStringLiteral("Name"));
    xml.writeAttribute(QStringLiteral("Name"), m_name);
    xml.writeEndElement();
    Private::WriteScale(xml, QStringLiteral("ScaleI"), m_intensityScale);
    xml.writeEndElement();
    xml.writeEndDocument();
    if (xml.hasError() || !file.flush())
        RTE_THROW(RTE::FileWriteError, file, QStringLiteral("Writing file '%1' failed").arg(path));
    file.close();

    C_ImageWriter::Open(destination);
}

void ScalarFieldWriter::Close() { C_ImageWriter::Close(); }

QString ScalarFieldWriter::GetCorrespondingReaderType() const
{
    return QString::fromStdString(C_ScalarFieldReader::PluginKey());
}

QString ScalarFieldWriter::GetCorrespondingReaderName() const
{
    return QString::fromStdString(C_ScalarFieldReader::PluginName());
}

QString ScalarFieldWriter::GetFormatDescription() const { return QStringLiteral("Qualmora scalar field stream format"); }

} // namespace SetApi
