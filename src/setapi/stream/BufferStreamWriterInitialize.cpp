// Setting up the streams of a recording from its first image: which streams exist, their entries
// in "ReaderConfiguration.xml" (in the order of registration), the scales, and the opened streams.
// Everything about the streams is decided before the first writer is made, so that an image that
// cannot be stored registers nothing; and a failure half-way leaves the writer as it was, ready to
// try the next image as a first one.

#include <SetApi/stream/BufferStreamWriter.h>

#include "RecordingWriters.h"

#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>
#include <DataObjects/ImageBufferVariant.h>
#include <DataObjects/LinearScale.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <string>
#include <vector>

namespace SetApi {

namespace {

using Bits = C_ImageWriter::E_BitsPerPixel;

// The compression of image streams; masks and scalar fields are never compressed.
QString CompressionText(BufferApi::BufferPackType_t compression)
{
    switch (static_cast<int>(compression)) {
    case BufferApi::BUFFER_PACK_NONE:
        return QString();
    case BufferApi::BUFFER_PACK_ZLIB:
        return QStringLiteral("Zlib");
    default:
        return QStringLiteral("IMX");
    }
}

Bits ImageBitsOf(BufferApi::E_DataType type)
{
    switch (type) {
    case BufferApi::DATATYPE_BYTE:
        return C_ImageWriter::Byte;
    case BufferApi::DATATYPE_DOUBLE:
        return C_ImageWriter::Double;
    case BufferApi::DATATYPE_FLOAT:
        return C_ImageWriter::Float;
    case BufferApi::DATATYPE_WORD:
        return C_ImageWriter::Word;
    default:
        RTE_THROW(RTE::Exception, QStringLiteral("Invalid datatype of image for storage in stream set."));
    }
}

Bits ScalarBitsOf(BufferApi::E_DataType type, const std::string& name)
{
    switch (type) {
    case BufferApi::DATATYPE_DOUBLE:
        return C_ImageWriter::Double;
    case BufferApi::DATATYPE_FLOAT:
        return C_ImageWriter::Float;
    case BufferApi::DATATYPE_WORD:
        return C_ImageWriter::Word;
    default:
        RTE_THROW_MSG(RTE::Exception, "Invalid datatype of scalar field " << name << " for storage in stream set.");
    }
}

// What the first image asks of the streams of one frame.
struct ScalarFieldPlan {
    std::string name;
    Bits bits;
    RTE::S_Scale scale;
};
struct FramePlan {
    unsigned width = 0;
    unsigned height = 0;
    unsigned depth = 0;
    Bits bits = C_ImageWriter::Word;
    std::vector<ScalarFieldPlan> fields;
    RTE::S_Scale x, y, intensity;
};

FramePlan PlanOf(const BufferApi::I_Frame& frame, bool withFields)
{
    FramePlan plan;
    plan.width = frame.GetWidth();
    plan.height = frame.GetHeight();
    plan.depth = frame.GetDepth();
    plan.bits = ImageBitsOf(frame.GetDataType());
    if (withFields) {
        auto& readable = const_cast<BufferApi::I_Frame&>(frame); // only read
        for (const std::string& name : BufferApi::GetNamesOfFrameBoundTypedScalars(&frame)) {
            const BufferApi::C_TypedScalarFrame field(&readable, name);
            plan.fields.push_back({name, ScalarBitsOf(field.GetDataType(), name),
                                   DataObjects::LinearScale(field.GetScale()).ToScale()});
        }
    }
    plan.x = DataObjects::GetScaleFromFrame(frame, BufferApi::SCALE_X).ToScale();
    plan.y = DataObjects::GetScaleFromFrame(frame, BufferApi::SCALE_Y).ToScale();
    plan.intensity = DataObjects::GetScaleFromFrame(frame, BufferApi::SCALE_I).ToScale();
    return plan;
}

Bits ImageBitsOf(const DataObjects::ImageDataVariant& data)
{
    if (dynamic_cast<const DataObjects::ImageData<double>*>(&data) != nullptr)
        return C_ImageWriter::Double;
    if (dynamic_cast<const DataObjects::ImageData<float>*>(&data) != nullptr)
        return C_ImageWriter::Float;
    if (dynamic_cast<const DataObjects::ImageData<unsigned char>*>(&data) != nullptr)
        return C_ImageWriter::Byte;
    if (dynamic_cast<const DataObjects::ImageData<unsigned short>*>(&data) != nullptr)
        return C_ImageWriter::Word;
    // Other pixel types would be written with the wrong element size.
    RTE_THROW(RTE::Exception, QStringLiteral("Invalid datatype of image for storage in stream set."));
}

FramePlan PlanOf(const DataObjects::ImageVolumeVariant& volume, bool withFields)
{
    const DataObjects::ImageVariant& first = volume.GetXYPlane(0);
    FramePlan plan;
    plan.width = volume.GetWidth();
    plan.height = volume.GetHeight();
    plan.depth = volume.GetDepth();
    plan.bits = ImageBitsOf(first.GetImageData());
    if (withFields) {
        const DataObjects::ScalarFields& fields = first.GetScalarFields();
        for (std::size_t k = 0; k < fields.GetCount(); ++k) {
            const DataObjects::ScalarField& field = fields.At(k);
            plan.fields.push_back(
                {field.GetName(), ScalarBitsOf(field.GetDataType(), field.GetName()), field.GetScale().ToScale()});
        }
    }
    plan.x = first.GetScaleX().ToScale();
    plan.y = first.GetScaleY().ToScale();
    plan.intensity = first.GetScaleI().ToScale();
    return plan;
}

using WriterList = std::vector<std::unique_ptr<I_RecordingWriter>>;

struct Writers {
    WriterList images, masks, fields, scales, attributes;
};

// Makes, registers, saves, writes the scales and opens, in this order: the configuration and the
// scales are on disk before the first byte of a stream.
Writers CreateWriters(StreamSetConfiguration& configuration, const std::vector<FramePlan>& frames,
                      const QString& compression, bool masks)
{
    Writers writers;
    for (unsigned i = 0; i < frames.size(); ++i) {
        const FramePlan& frame = frames[i];
        const C_ContentPurpose purpose = C_ContentPurpose::CreateFrameLink(i);
        writers.images.push_back(std::make_unique<Private::GeneralImageWriter>(frame.width, frame.height, frame.depth,
                                                                               1, frame.bits, compression));
        configuration.RegisterWriter(*writers.images.back(), purpose);
        if (masks) {
            writers.masks.push_back(std::make_unique<Private::MaskWriter>(frame.width, frame.height, frame.depth, 1));
            configuration.RegisterWriter(*writers.masks.back(), purpose);
        }
        for (const ScalarFieldPlan& field : frame.fields) {
            writers.fields.push_back(std::make_unique<Private::ScalarFieldWriter>(
                frame.width, frame.height, frame.depth, 1, field.bits, QString::fromStdString(field.name),
                field.scale));
            configuration.RegisterWriter(*writers.fields.back(), purpose);
        }
    }
    for (unsigned i = 0; i < frames.size(); ++i) {
        writers.scales.push_back(std::make_unique<Private::ScaleRecordingWriter>());
        configuration.RegisterWriter(*writers.scales.back(), C_ContentPurpose::CreateFrameLink(i));
    }
    for (unsigned i = 0; i < frames.size(); ++i) {
        writers.attributes.push_back(std::make_unique<Private::AttributeRecordingWriter>());
        configuration.RegisterWriter(*writers.attributes.back(), C_ContentPurpose::CreateFrameLink(i));
    }
    writers.attributes.push_back(std::make_unique<Private::AttributeRecordingWriter>());
    configuration.RegisterWriter(*writers.attributes.back(), C_ContentPurpose::CreateGlobalAttributesLink());

    configuration.Save();

    // Scales are fixed by the first image and written once, valid for every image.
    for (unsigned i = 0; i < frames.size(); ++i)
        static_cast<Private::ScaleRecordingWriter&>(*writers.scales[i])
            .WriteScalesForAllImages(frames[i].x, frames[i].y, frames[i].intensity);

    for (unsigned i = 0; i < frames.size(); ++i) {
        static_cast<Private::ImageStreamRecordingWriter&>(*writers.images[i]).Open();
        if (masks)
            static_cast<Private::ImageStreamRecordingWriter&>(*writers.masks[i]).Open();
    }
    for (const auto& field : writers.fields)
        static_cast<Private::ImageStreamRecordingWriter&>(*field).Open();
    // Attribute streams open with their first record.
    return writers;
}

} // namespace

void BufferStreamWriter::InitializeWriters(const BufferApi::I_Buffer* buffer)
{
    // Without a mask in frame 0 there are no mask streams, and the check of every later image
    // requires images without masks.
    const bool masks = m_maskStorage && buffer->GetFrame(0)->HasMask();
    std::vector<FramePlan> frames;
    for (unsigned i = 0; i < buffer->GetNumberOfFrames(); ++i)
        frames.push_back(PlanOf(*buffer->GetFrame(i), m_scalarFieldStorage));

    // Registration changes the configuration; a failure from here on restores it, so that the
    // next image registers its streams afresh under the same prefixes.
    const StreamSetConfiguration before = m_configuration;
    Writers writers;
    try {
        writers = CreateWriters(m_configuration, frames, CompressionText(m_compression), masks);
    } catch (...) {
        m_configuration = before;
        throw;
    }
    m_maskStorage = masks;
    m_imageWriters = std::move(writers.images);
    m_maskWriters = std::move(writers.masks);
    m_scalarFieldWriters = std::move(writers.fields);
    m_scaleWriters = std::move(writers.scales);
    m_attributeWriters = std::move(writers.attributes);
    RTE::C_Logger("Set").info("Recording " + m_name.toStdString() + ": " +
                              std::to_string(m_configuration.GetWriterCount()) + " streams");
}

void BufferStreamWriter::InitializeWriters(const DataObjects::ImageBufferVariant& buffer)
{
    std::vector<FramePlan> frames;
    for (unsigned i = 0; i < buffer.GetListSize(); ++i)
        frames.push_back(PlanOf(buffer.GetImageVolume(i), m_scalarFieldStorage));

    const StreamSetConfiguration before = m_configuration;
    Writers writers;
    try {
        writers = CreateWriters(m_configuration, frames, CompressionText(m_compression), m_maskStorage);
    } catch (...) {
        m_configuration = before;
        throw;
    }
    m_imageWriters = std::move(writers.images);
    m_maskWriters = std::move(writers.masks);
    m_scalarFieldWriters = std::move(writers.fields);
    m_scaleWriters = std::move(writers.scales);
    m_attributeWriters = std::move(writers.attributes);
    RTE::C_Logger("Set").info("Recording " + m_name.toStdString() + ": " +
                              std::to_string(m_configuration.GetWriterCount()) + " streams");
}

} // namespace SetApi
