#include "StreamSetBuilder.h"

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/MaskWriter.h>
#include <SetApi/stream/ScalarFieldWriter.h>

#include <StreamIO/AttributeWriter.h>

#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <StreamIO/ScaleWriter.h>
#include <StreamIO/TraceWriter.h>

#include <RTE/Exception.h>

#include <filesystem>
#include <fstream>
#include <memory>

namespace StreamSetTesting {

using SetApi::C_ContentPurpose;
using SetApi::C_ImageWriter;
using SetApi::Private::C_ReaderInfo;

std::uint16_t PixelValue(unsigned frame, unsigned image, unsigned plane, unsigned x, unsigned y)
{
    return std::uint16_t(1 + (frame * 7919u + image * 131u + plane * 17u + x * 3u + y * 5u) % 60000u);
}

bool MaskValue(unsigned frame, unsigned image, unsigned x, unsigned y) { return (x + y + image + frame) % 2 == 0; }

double ScalarValue(unsigned frame, unsigned image, unsigned x, unsigned y)
{
    return double(PixelValue(frame, image, 0, x, y)) + 100.0;
}

std::pair<double, double> TraceSample(unsigned trace, unsigned image, unsigned sample)
{
    return {double(image) + sample * 0.125, trace * 1000.0 + image * 2.0 + sample * 0.5};
}

QString FrameAttributeText(unsigned frame, unsigned image)
{
    return QStringLiteral("frame %1 image %2").arg(frame).arg(image);
}

QString GlobalAttributeText(unsigned image) { return QStringLiteral("counter %1").arg(image); }

namespace {

template <typename T>
std::vector<T> PlaneOf(unsigned frame, unsigned image, unsigned plane, unsigned width, unsigned height)
{
    std::vector<T> data(std::size_t(width) * height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            data[std::size_t(y) * width + x] = T(PixelValue(frame, image, plane, x, y));
    return data;
}

// Appends one image to an image stream, every plane of the frame from `values`.
template <typename T, typename Values>
void AppendImage(C_ImageWriter& writer, unsigned depth, unsigned width, unsigned height, const Values& values)
{
    std::vector<std::vector<T>> planes;
    for (unsigned plane = 0; plane < depth; ++plane) {
        std::vector<T> data(std::size_t(width) * height);
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = 0; x < width; ++x)
                data[std::size_t(y) * width + x] = values(plane, x, y);
        planes.push_back(std::move(data));
    }
    if (depth == 1) {
        writer.AppendFramesOfOneImage(planes[0].data());
        return;
    }
    std::vector<const void*> pointers;
    for (const auto& plane : planes)
        pointers.push_back(plane.data());
    writer.AppendPlanesOfOneImage(pointers);
}

C_ReaderInfo EntryOf(const QString& name, const QString& type, const QString& prefix, const QString& description,
                     const C_ContentPurpose& purpose)
{
    return C_ReaderInfo(name, type, prefix, description, purpose);
}

} // namespace

StreamSetBuilder::StreamSetBuilder(const std::string& name) : m_name(name)
{
    std::filesystem::create_directories(name);
}

QString StreamSetBuilder::ConfigurationPath() const
{
    return SetApi::GetStreamSetConfigurationName(QString::fromStdString(m_name));
}

QString StreamSetBuilder::Destination(const QString& prefix) const
{
    return QString::fromStdString(m_name) + QLatin1Char('/') + prefix;
}

QString StreamSetBuilder::NextPrefix(const char* kind)
{
    // The index is followed by a non-digit, so that no prefix begins another one.
    return QStringLiteral("%1%2_").arg(QLatin1String(kind)).arg(++m_streams);
}

QString StreamSetBuilder::AddCamera(unsigned width, unsigned height, unsigned images, C_ImageWriter::E_BitsPerPixel bits,
                                    unsigned depth)
{
    const unsigned frame = m_cameras++;
    const QString prefix = NextPrefix("Camera");
    C_ImageWriter writer(width, height, depth, 1, bits, QString());
    m_configuration.AddReader(EntryOf(writer.GetCorrespondingReaderName(), writer.GetCorrespondingReaderType(), prefix,
                                      writer.GetFormatDescription(), C_ContentPurpose::CreateFrameLink(frame)));
    writer.Open(Destination(prefix));
    for (unsigned image = 0; image < images; ++image) {
        const auto value = [&](unsigned plane, unsigned x, unsigned y) { return PixelValue(frame, image, plane, x, y); };
        switch (bits) {
        case C_ImageWriter::Float:
            AppendImage<float>(writer, depth, width, height, value);
            break;
        case C_ImageWriter::Double:
            AppendImage<double>(writer, depth, width, height, value);
            break;
        case C_ImageWriter::Byte:
        case C_ImageWriter::Mask:
            AppendImage<std::uint8_t>(writer, depth, width, height,
                                      [&](unsigned plane, unsigned x, unsigned y) { return value(plane, x, y) & 0xFF; });
            break;
        default:
            AppendImage<std::uint16_t>(writer, depth, width, height, value);
        }
    }
    writer.Close();
    return prefix;
}

QString StreamSetBuilder::AddMask(unsigned frame, unsigned width, unsigned height, unsigned images, unsigned depth)
{
    const QString prefix = NextPrefix("Mask");
    SetApi::MaskWriter writer(width, height, depth, 1);
    m_configuration.AddReader(EntryOf(writer.GetCorrespondingReaderName(), writer.GetCorrespondingReaderType(), prefix,
                                      writer.GetFormatDescription(), C_ContentPurpose::CreateFrameLink(frame)));
    writer.Open(Destination(prefix));
    for (unsigned image = 0; image < images; ++image)
        AppendImage<std::uint8_t>(writer, depth, width, height, [&](unsigned, unsigned x, unsigned y) {
            return std::uint8_t(MaskValue(frame, image, x, y) ? 1 : 0);
        });
    writer.Close();
    return prefix;
}

QString StreamSetBuilder::AddScalarField(unsigned frame, const QString& fieldName, C_ImageWriter::E_BitsPerPixel bits,
                                         const RTE::S_Scale& scale, unsigned width, unsigned height, unsigned images)
{
    const QString prefix = NextPrefix("Field");
    SetApi::ScalarFieldWriter writer(width, height, 1, 1, bits, fieldName, scale);
    m_configuration.AddReader(EntryOf(writer.GetCorrespondingReaderName(), writer.GetCorrespondingReaderType(), prefix,
                                      writer.GetFormatDescription(), C_ContentPurpose::CreateFrameLink(frame)));
    writer.Open(Destination(prefix));
    for (unsigned image = 0; image < images; ++image) {
        const auto value = [&](unsigned, unsigned x, unsigned y) { return ScalarValue(frame, image, x, y); };
        if (bits == C_ImageWriter::Double)
            AppendImage<double>(writer, 1, width, height, value);
        else if (bits == C_ImageWriter::Float)
            AppendImage<float>(writer, 1, width, height, value);
        else
            AppendImage<std::uint16_t>(writer, 1, width, height, value);
    }
    writer.Close();
    return prefix;
}

QString StreamSetBuilder::AddScales(unsigned frame, const RTE::S_Scale& x, const RTE::S_Scale& y,
                                    const RTE::S_Scale& intensity)
{
    const QString prefix = NextPrefix("Scales");
    SetApi::C_ScaleWriter writer(Destination(prefix));
    m_configuration.AddReader(EntryOf(writer.GetCorrespondingReaderName(), writer.GetCorrespondingReaderType(), prefix,
                                      writer.GetFormatDescription(), C_ContentPurpose::CreateFrameLink(frame)));
    writer.WriteScalesForAllImages(x, y, intensity);
    return prefix;
}

QString StreamSetBuilder::AddFrameAttributes(unsigned frame, unsigned images)
{
    const QString prefix = NextPrefix("Attributes");
    SetApi::AttributeWriter writer;
    m_configuration.AddReader(EntryOf(writer.GetCorrespondingReaderName(), writer.GetCorrespondingReaderType(), prefix,
                                      writer.GetFormatDescription(), C_ContentPurpose::CreateFrameLink(frame)));
    writer.Open(Destination(prefix));
    for (unsigned image = 0; image < images; ++image) {
        writer.Add(QStringLiteral("Exposure"), FrameAttributeText(frame, image));
        const int window[2] = {int(frame), int(image)};
        writer.AddArray(QStringLiteral("Window"), 2, window);
        writer.NextImage();
    }
    writer.Close();
    return prefix;
}

QString StreamSetBuilder::AddGlobalAttributes(unsigned images)
{
    const QString prefix = NextPrefix("GlobalAttributes");
    SetApi::AttributeWriter writer;
    m_configuration.AddReader(EntryOf(writer.GetCorrespondingReaderName(), writer.GetCorrespondingReaderType(), prefix,
                                      writer.GetFormatDescription(), C_ContentPurpose::CreateGlobalAttributesLink()));
    writer.Open(Destination(prefix));
    for (unsigned image = 0; image < images; ++image) {
        writer.Add(QStringLiteral("Counter"), GlobalAttributeText(image));
        writer.NextImage();
    }
    writer.Close();
    return prefix;
}

QString StreamSetBuilder::AddTraces(unsigned traces, unsigned images, unsigned samplesPerImage)
{
    const QString prefix = NextPrefix("Traces");
    SetApi::C_TraceWriter writer;
    m_configuration.AddReader(EntryOf(writer.GetCorrespondingReaderName(), writer.GetCorrespondingReaderType(), prefix,
                                      writer.GetFormatDescription(), C_ContentPurpose(false, true, true)));
    writer.Open(Destination(prefix));
    for (unsigned trace = 0; trace < traces; ++trace)
        writer.AddTrace(QStringLiteral("Channel%1").arg(trace), RTE::S_Scale(1.0, 0.0, QStringLiteral("ms"), QStringLiteral("Time")),
                        RTE::S_Scale(1.0, 0.0, QStringLiteral("V"), QStringLiteral("Voltage %1").arg(trace)));
    for (unsigned image = 0; image < images; ++image) {
        std::vector<std::vector<std::pair<double, double>>> samples(traces);
        for (unsigned trace = 0; trace < traces; ++trace)
            for (unsigned sample = 0; sample < samplesPerImage; ++sample)
                samples[trace].push_back(TraceSample(trace, image, sample));
        writer.AppendImage(samples);
    }
    writer.Close();
    return prefix;
}

void StreamSetBuilder::AddEntry(const C_ReaderInfo& info) { m_configuration.AddReader(info); }

void StreamSetBuilder::Finish(int setType)
{
    SetApi::Private::SaveReaderConfiguration(m_configuration, ConfigurationPath());
    SetApi::C_DataSetParameter parameters;
    parameters.SetValue("SetType", setType);
    parameters.Add("SetIdentifier", std::string("StreamSet"));
    if (!SetApi::C_SetUtilities::WriteSettings(m_name + ".set", parameters, std::string()))
        RTE_THROW(RTE::Exception, QStringLiteral("The set file cannot be written."));
}

std::vector<std::string> StreamSetBuilder::FilesOf(const QString& prefix) const
{
    std::vector<std::string> files;
    const std::string start = prefix.toStdString();
    for (const auto& entry : std::filesystem::directory_iterator(m_name))
        if (entry.path().filename().string().rfind(start, 0) == 0)
            files.push_back(entry.path().string());
    return files;
}

void StreamSetBuilder::RemoveStream(const QString& prefix) const
{
    for (const std::string& file : FilesOf(prefix))
        std::filesystem::remove(file);
}

std::uint64_t FileSize(const std::string& path) { return std::filesystem::file_size(path); }

void TruncateFile(const std::string& path, std::uint64_t size) { std::filesystem::resize_file(path, size); }

void FlipByte(const std::string& path, std::uint64_t offset)
{
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekg(std::streamoff(offset));
    char byte = 0;
    file.read(&byte, 1);
    byte = char(~byte);
    file.seekp(std::streamoff(offset));
    file.write(&byte, 1);
}

std::string CompareCameraImages(const SetApi::I_Set& set, unsigned images, unsigned frames, unsigned width,
                                unsigned height)
{
    if (!set.IsOpen())
        return "the set does not open";
    if (set.GetSize() != images)
        return "the set offers " + std::to_string(set.GetSize()) + " images, not " + std::to_string(images);
    for (unsigned image = 0; image < images; ++image) {
        const std::unique_ptr<BufferApi::I_Buffer> buffer = set.LoadBuffer(image);
        for (unsigned frame = 0; frame < frames; ++frame) {
            const auto* planeFrame = dynamic_cast<const BufferApi::I_FrameImage*>(buffer->GetFrame(frame));
            if (planeFrame == nullptr || planeFrame->GetWidth() < width || planeFrame->GetHeight() < height)
                return "image " + std::to_string(image) + " frame " + std::to_string(frame) + " has another shape";
            const auto* pixels = static_cast<const std::uint16_t*>(planeFrame->GetPixelPlane(0)->GetData());
            for (unsigned y = 0; y < height; ++y)
                for (unsigned x = 0; x < width; ++x)
                    if (pixels[std::size_t(y) * planeFrame->GetWidth() + x] != PixelValue(frame, image, 0, x, y))
                        return "image " + std::to_string(image) + " frame " + std::to_string(frame) + " differs at ("
                               + std::to_string(x) + ", " + std::to_string(y) + ")";
        }
    }
    return std::string();
}

} // namespace StreamSetTesting
