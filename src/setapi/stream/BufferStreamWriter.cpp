// Storing one image: the check against the shape of the first image, the frames appended in a
// parallel loop, then the attribute records in the calling thread.

#include <SetApi/stream/BufferStreamWriter.h>

#include "BufferStreamFormatGuard.h"
#include "FrameTeam.h"
#include "RecordingWriters.h"

#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/TypedScalar.h>
#include <DataObjects/ImageBufferVariant.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <exception>
#include <mutex>
#include <string>
#include <vector>

namespace SetApi {

namespace {

using Private::ImageStreamRecordingWriter;

ImageStreamRecordingWriter& ImageStream(const std::unique_ptr<I_RecordingWriter>& writer)
{
    // The image, mask and scalar field vectors hold only image stream writers.
    return static_cast<ImageStreamRecordingWriter&>(*writer);
}

Private::AttributeRecordingWriter& AttributeStream(const std::unique_ptr<I_RecordingWriter>& writer)
{
    return static_cast<Private::AttributeRecordingWriter&>(*writer);
}

// Appends one image of one stream: depth 1 as a frame, deeper frames plane by plane. `planeData`
// gives the memory of plane p; it is handed on as it is, without a copy.
template <class PlaneData>
void AppendToStream(ImageStreamRecordingWriter& writer, unsigned depth, const PlaneData& planeData)
{
    if (depth == 1) {
        writer.AppendFramesOfOneImage(planeData(0u));
        return;
    }
    std::vector<const void*> planes(depth);
    for (unsigned p = 0; p < depth; ++p)
        planes[p] = planeData(p);
    writer.AppendPlanesOfOneImage(planes);
}

// The writers of one frame: its image stream, its mask stream (or none), its scalar field streams.
struct FrameStreams {
    ImageStreamRecordingWriter* image = nullptr;
    ImageStreamRecordingWriter* mask = nullptr;
    std::vector<ImageStreamRecordingWriter*> fields;
};

void AppendFrame(const BufferApi::I_Frame& frame, const FrameStreams& streams)
{
    const auto& image = static_cast<const BufferApi::I_FrameImage&>(frame);
    const unsigned depth = frame.GetDepth();
    AppendToStream(*streams.image, depth, [&](unsigned p) { return image.GetPixelPlane(p)->GetData(); });
    if (streams.mask != nullptr) {
        const BufferApi::I_Component* mask = frame.GetMask();
        AppendToStream(*streams.mask, depth, [&](unsigned p) { return mask->GetPlane(p)->GetData(); });
    }
    if (streams.fields.empty())
        return;
    // C_TypedScalarFrame takes a changeable frame; the planes are only read.
    auto& readable = const_cast<BufferApi::I_Frame&>(frame);
    const std::vector<std::string> names = BufferApi::GetNamesOfFrameBoundTypedScalars(&frame);
    for (std::size_t k = 0; k < streams.fields.size(); ++k) {
        BufferApi::C_TypedScalarFrame field(&readable, names.at(k));
        AppendToStream(*streams.fields[k], depth, [&](unsigned p) -> const void* { return field.GetComponent(p)->GetData(); });
    }
}

void AppendFrame(const DataObjects::ImageVolumeVariant& volume, const void* (*pixels)(const DataObjects::ImageDataVariant&),
                 const FrameStreams& streams)
{
    const unsigned depth = volume.GetDepth();
    AppendToStream(*streams.image, depth, [&](unsigned p) { return pixels(volume.GetXYPlane(p).GetImageData()); });
    if (streams.mask != nullptr)
        AppendToStream(*streams.mask, depth, [&](unsigned p) -> const void* {
            return volume.GetXYPlane(p).GetMask().GetData();
        });
    for (std::size_t k = 0; k < streams.fields.size(); ++k)
        AppendToStream(*streams.fields[k], depth, [&](unsigned p) {
            return volume.GetXYPlane(p).GetScalarFields().At(k).GetData();
        });
}

// The first failure of the frames of one image, kept until the loop has ended: an exception must
// not leave a parallel region, and the other frames are written all the same.
class FirstFailure {
public:
    void Keep(std::exception_ptr failure)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_failure)
            m_failure = failure;
    }
    bool HasFailed() const { return static_cast<bool>(m_failure); }
    void Rethrow() const
    {
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    std::mutex m_mutex;
    std::exception_ptr m_failure;
};

// Runs `append(i)` for every frame at once on the frame team and keeps the first failure in
// `failure`; the other frames are written all the same.
template <class Append>
void AppendFramesInParallel(Private::FrameTeam& team, unsigned frameCount, FirstFailure& failure, const Append& append)
{
    team.Run(frameCount, [&](unsigned i) {
        try {
            append(i);
        } catch (...) {
            failure.Keep(std::current_exception());
        }
    });
}

// Writes the attribute records of the image, then raises the first failure of its frames. The
// records are written also after a failed frame: the other frames of the image are in their
// streams, and an attribute stream that ended before them would count as damaged.
template <class WriteRecords>
void FinishImage(const FirstFailure& frameFailure, const WriteRecords& writeRecords)
{
    if (!frameFailure.HasFailed()) {
        writeRecords();
        return;
    }
    try {
        writeRecords();
    } catch (...) {
        // Logged where it was raised; the frame's failure is the one the caller learns of.
    }
    frameFailure.Rethrow();
}

} // namespace

BufferStreamWriter::BufferStreamWriter(QString name, I_Set::E_SetType type, BufferApi::BufferPackType_t compression)
    : m_name(std::move(name)), m_compression(compression), m_guard(std::make_unique<Private::BufferStreamFormatGuard>()),
      m_frameTeam(std::make_unique<Private::FrameTeam>())
{
    m_configuration.CreateSet(m_name, type, QString(), QString(), nullptr);
    m_configuration.SetFrameWriterContext(StreamSetConfiguration::Frame);
    RTE::C_Logger("Set").info("Buffer stream writer for " + m_name.toStdString() + " started");
}

// Members go in reverse order: attribute, scale, scalar field, mask and image writers, each
// completing its stream, then the guard and the configuration.
BufferStreamWriter::~BufferStreamWriter()
{
    RTE::C_Logger("Set").info("Buffer stream writer for " + m_name.toStdString() + " finished");
}

void BufferStreamWriter::SetCompressionType(BufferApi::BufferPackType_t compression)
{
    RTE_VERIFY(m_imageWriters.empty(), "Can't change storage parameters after storage of first image.");
    m_compression = compression;
}

void BufferStreamWriter::EnableMaskStorage()
{
    RTE_VERIFY(m_imageWriters.empty(), "Can't change storage parameters after storage of first image.");
    m_maskStorage = true;
}

void BufferStreamWriter::EnableScalarFieldsStorage()
{
    RTE_VERIFY(m_imageWriters.empty(), "Can't change storage parameters after storage of first image.");
    m_scalarFieldStorage = true;
}

void BufferStreamWriter::Store(std::shared_ptr<const BufferApi::I_Buffer> buffer) { Store(buffer.get()); }

void BufferStreamWriter::Store(const BufferApi::I_Buffer* buffer)
{
    // The check comes first, so that an image that cannot be stored leaves no trace, not even the
    // streams of a first image.
    m_guard->Check(buffer);
    if (m_imageWriters.empty()) {
        try {
            InitializeWriters(buffer);
        } catch (...) {
            m_guard->Reset();
            throw;
        }
    }

    const unsigned frameCount = buffer->GetNumberOfFrames();
    const std::size_t fieldCount = m_scalarFieldWriters.size() / frameCount;
    FirstFailure failure;
    AppendFramesInParallel(*m_frameTeam, frameCount, failure, [&](unsigned i) {
        FrameStreams streams;
        streams.image = &ImageStream(m_imageWriters[i]);
        if (!m_maskWriters.empty())
            streams.mask = &ImageStream(m_maskWriters[i]);
        for (std::size_t k = 0; k < fieldCount; ++k)
            streams.fields.push_back(&ImageStream(m_scalarFieldWriters[i * fieldCount + k]));
        AppendFrame(*buffer->GetFrame(i), streams);
    });

    FinishImage(failure, [&] {
        AttributeStream(m_attributeWriters.back()).WriteImage(buffer->GetAttributeStore());
        for (unsigned i = 0; i < frameCount; ++i)
            AttributeStream(m_attributeWriters[i]).WriteImage(buffer->GetFrame(i)->GetAttributeStore());
    });
}

void BufferStreamWriter::Store(const DataObjects::ImageBufferVariant& buffer)
{
    m_guard->Check(buffer);
    if (m_imageWriters.empty()) {
        try {
            InitializeWriters(buffer);
        } catch (...) {
            m_guard->Reset();
            throw;
        }
    }

    const unsigned frameCount = buffer.GetListSize();
    const std::size_t fieldCount = m_scalarFieldWriters.size() / frameCount;
    FirstFailure failure;
    AppendFramesInParallel(*m_frameTeam, frameCount, failure, [&](unsigned i) {
        FrameStreams streams;
        streams.image = &ImageStream(m_imageWriters[i]);
        if (!m_maskWriters.empty())
            streams.mask = &ImageStream(m_maskWriters[i]);
        for (std::size_t k = 0; k < fieldCount; ++k)
            streams.fields.push_back(&ImageStream(m_scalarFieldWriters[i * fieldCount + k]));
        AppendFrame(buffer.GetImageVolume(i), &BufferStreamWriter::GetRawPointerFromImageDataVariant, streams);
    });

    FinishImage(failure, [&] {
        AttributeStream(m_attributeWriters.back()).WriteImage(buffer.GetGlobalAttributes());
        for (unsigned i = 0; i < frameCount; ++i)
            AttributeStream(m_attributeWriters[i]).WriteImage(buffer.GetImageVolume(i).GetXYPlane(0).GetAttributes());
    });
}

const void* BufferStreamWriter::GetRawPointerFromImageDataVariant(const DataObjects::ImageDataVariant& data)
{
    if (const auto* bytes = dynamic_cast<const DataObjects::ImageData<unsigned char>*>(&data))
        return bytes->GetData();
    if (const auto* words = dynamic_cast<const DataObjects::ImageData<unsigned short>*>(&data))
        return words->GetData();
    if (const auto* floats = dynamic_cast<const DataObjects::ImageData<float>*>(&data))
        return floats->GetData();
    if (const auto* doubles = dynamic_cast<const DataObjects::ImageData<double>*>(&data))
        return doubles->GetData();
    return nullptr;
}

} // namespace SetApi
