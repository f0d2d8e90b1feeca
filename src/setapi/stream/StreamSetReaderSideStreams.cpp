// Scales and attributes of an image, and the attributes alone without image data.

#include <SetApi/stream/StreamSetReader.h>

#include <StreamIO/I_AttributeReader.h>
#include <StreamIO/I_ScaleReader.h>

#include <BufferApi/Attributes.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_Scale.h>

#include <RTE/Exception.h>
#include <RTE/Scale.h>

#include <DataObjects/GlobalAndFrameAttributes.h>

namespace SetApi {
namespace Private {

namespace {

std::unique_ptr<BufferApi::I_Scale> LinearScale(const RTE::S_Scale& scale)
{
    return std::unique_ptr<BufferApi::I_Scale>(BufferApi::C_ScaleFactory::GetInstance().CreateLinearScale(
        scale.factor, scale.offset, scale.unit.toStdString(), scale.description.toStdString()));
}

} // namespace

void StreamSetReader::ReadScales(unsigned image, BufferApi::I_Buffer& buffer) const
{
    for (const auto& entry : m_scaleReaders) {
        RTE_VERIFY(entry.purpose.IsAssociatedToFrames(), "ScaleReader is not associated with frames.");
        for (std::uint64_t f = entry.purpose.StartFrame(); f <= entry.purpose.EndFrame(); ++f) {
            RTE::S_Scale x(1.0, 0.0);
            RTE::S_Scale y(1.0, 0.0);
            RTE::S_Scale intensity(1.0, 0.0);
            entry.reader->ReadScales(image, x, y, intensity);
            // GetFrame raises for a frame the buffer does not have, which ends the walk.
            BufferApi::I_Frame* frame = buffer.GetFrame(unsigned(f));
            frame->SetScale(BufferApi::SCALE_X, LinearScale(x));
            frame->SetScale(BufferApi::SCALE_Y, LinearScale(y));
            frame->SetScale(BufferApi::SCALE_I, LinearScale(intensity));
        }
    }
}

void StreamSetReader::ReadAttributes(unsigned image, BufferApi::I_Buffer& buffer) const
{
    for (const auto& entry : m_attributeReaders) {
        if (entry.purpose.IsAssociatedToEntireImage()) {
            BufferApi::C_BufferAttributes sink(&buffer);
            entry.reader->ReadAttributes(image, sink);
        } else if (entry.purpose.IsAssociatedToFrames()) {
            // The same attributes reach every frame of the range.
            for (std::uint64_t f = entry.purpose.StartFrame(); f <= entry.purpose.EndFrame(); ++f) {
                BufferApi::C_FrameAttributes sink(buffer.GetFrame(unsigned(f)));
                entry.reader->ReadAttributes(image, sink);
            }
        } else {
            RTE_THROW(RTE::Exception, QStringLiteral("Attribute reader has invalid content purpose."));
        }
    }
}

DataObjects::GlobalAndFrameAttributes StreamSetReader::GetAttributes(unsigned image) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    CheckImageIndex(image);
    // A buffer of one word pixel per frame takes the attributes; no image data is read.
    std::unique_ptr<BufferApi::I_Buffer> scratch(BufferApi::CreateBuffer());
    for (std::uint32_t frame = 0; frame < m_frameCount; ++frame)
        scratch->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 1, 1, 1)));
    ReadAttributes(image, *scratch);
    ReadTraces(image, *scratch);
    return DataObjects::GetBufferAttributes(*scratch);
}

} // namespace Private
} // namespace SetApi
