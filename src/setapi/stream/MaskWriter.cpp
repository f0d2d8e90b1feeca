#include <SetApi/stream/MaskWriter.h>

#include <SetApi/stream/MaskReader.h>

namespace SetApi {

MaskWriter::MaskWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage)
    : C_ImageWriter(width, height, depth, framesPerImage, C_ImageWriter::Mask, QString())
{
}

MaskWriter::~MaskWriter() = default;

QString MaskWriter::GetCorrespondingReaderType() const { return QString::fromStdString(MaskReader::PluginKey()); }

QString MaskWriter::GetCorrespondingReaderName() const { return QString::fromStdString(MaskReader::PluginName()); }

QString MaskWriter::GetFormatDescription() const { return QStringLiteral("Qualmora mask stream format"); }

} // namespace SetApi
