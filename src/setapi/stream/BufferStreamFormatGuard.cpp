#include "BufferStreamFormatGuard.h"

#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/TypedScalar.h>
#include <DataObjects/ImageBufferVariant.h>

#include <RTE/Exception.h>

namespace SetApi {
namespace Private {

namespace {

using FrameShape = BufferStreamFormatGuard::FrameShape;

FrameShape ShapeOf(const BufferApi::I_Frame& frame)
{
    FrameShape shape;
    shape.isImage = dynamic_cast<const BufferApi::I_FrameImage*>(&frame) != nullptr && frame.HasData() &&
                    frame.GetComponent(BufferApi::I_FrameImage::COMPONENT_PIXEL) != nullptr;
    shape.width = frame.GetWidth();
    shape.height = frame.GetHeight();
    shape.depth = frame.GetDepth();
    shape.dataType = frame.GetDataType();
    shape.hasMask = frame.HasMask();
    shape.scalarNames = BufferApi::GetNamesOfFrameBoundTypedScalars(&frame);
    // C_TypedScalarFrame takes a changeable frame; it is only read here.
    auto& readable = const_cast<BufferApi::I_Frame&>(frame);
    for (const std::string& name : shape.scalarNames)
        shape.scalarTypes.push_back(BufferApi::C_TypedScalarFrame(&readable, name).GetDataType());
    return shape;
}

// The element type as the class of the image data tells it; DATATYPE_UNKNOWN for other classes.
BufferApi::E_DataType DataTypeOfImageData(const DataObjects::ImageDataVariant& data)
{
    if (dynamic_cast<const DataObjects::ImageData<unsigned short>*>(&data) != nullptr)
        return BufferApi::DATATYPE_WORD;
    if (dynamic_cast<const DataObjects::ImageData<float>*>(&data) != nullptr)
        return BufferApi::DATATYPE_FLOAT;
    if (dynamic_cast<const DataObjects::ImageData<double>*>(&data) != nullptr)
        return BufferApi::DATATYPE_DOUBLE;
    if (dynamic_cast<const DataObjects::ImageData<unsigned char>*>(&data) != nullptr)
        return BufferApi::DATATYPE_BYTE;
    return data.GetDataType();
}

FrameShape ShapeOf(const DataObjects::ImageVolumeVariant& volume)
{
    FrameShape shape;
    shape.width = volume.GetWidth();
    shape.height = volume.GetHeight();
    shape.depth = volume.GetDepth();
    shape.isImage = shape.depth != 0 && std::size_t(shape.width) * shape.height != 0;
    shape.hasMask = true;
    if (volume.IsEmpty())
        return shape;
    const DataObjects::ImageVariant& first = volume.GetXYPlane(0);
    shape.dataType = DataTypeOfImageData(first.GetImageData());
    shape.scalarNames = first.GetScalarFields().GetNames();
    for (const std::string& name : shape.scalarNames)
        shape.scalarTypes.push_back(first.GetScalarFields().Get(name).GetDataType());

    // The writers take every plane's mask and fields by the shape of plane 0: each plane must
    // have them, and at the plane's size, or they would read outside the memory.
    for (unsigned p = 0; p < shape.depth; ++p) {
        const DataObjects::ImageVariant& plane = volume.GetXYPlane(p);
        const DataObjects::Mask& mask = plane.GetMask();
        if (mask.GetWidth() != shape.width || mask.GetHeight() != shape.height)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("The mask of an image plane must have the plane's size"));
        if (plane.GetScalarFields().GetNames() != shape.scalarNames)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("List of scalar fields must not change"));
        for (std::size_t k = 0; k < shape.scalarNames.size(); ++k) {
            const DataObjects::ScalarField& field = plane.GetScalarFields().At(k);
            if (field.GetDataType() != shape.scalarTypes[k])
                RTE_THROW(RTE::VerificationFailed, QStringLiteral("Data type of typed scalar must not change"));
            if (field.GetWidth() != shape.width || field.GetHeight() != shape.height || !field.HasData())
                RTE_THROW_MSG(RTE::VerificationFailed,
                              "The scalar field " << field.GetName() << " must have the size of its image plane");
        }
    }
    return shape;
}

} // namespace

void BufferStreamFormatGuard::Check(const BufferApi::I_Buffer* buffer)
{
    if (buffer == nullptr || buffer->GetNumberOfFrames() == 0)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Buffer must not be empty"));
    std::vector<FrameShape> frames;
    frames.reserve(buffer->GetNumberOfFrames());
    for (unsigned i = 0; i < buffer->GetNumberOfFrames(); ++i)
        frames.push_back(ShapeOf(*buffer->GetFrame(i)));
    Check(frames, true);
}

void BufferStreamFormatGuard::Check(const DataObjects::ImageBufferVariant& buffer)
{
    if (buffer.GetListSize() == 0)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Buffer must not be empty"));
    std::vector<FrameShape> frames;
    frames.reserve(buffer.GetListSize());
    for (unsigned i = 0; i < buffer.GetListSize(); ++i)
        frames.push_back(ShapeOf(buffer.GetImageVolume(i)));
    Check(frames, false);
}

void BufferStreamFormatGuard::Reset()
{
    m_frames.clear();
    m_scalarTypes.clear();
}

void BufferStreamFormatGuard::Check(const std::vector<FrameShape>& frames, bool compareMasks)
{
    const bool first = m_frames.empty();
    if (!first && frames.size() != m_frames.size())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Number of frames must not change"));
    // The first image is compared with its frame 0, later ones with what the first image fixed.
    const FrameShape& reference = first ? frames.front() : m_frames.front();
    std::map<std::string, BufferApi::E_DataType> scalarTypes;
    for (std::size_t k = 0; k < reference.scalarNames.size(); ++k)
        scalarTypes[reference.scalarNames[k]] = reference.scalarTypes[k];

    for (std::size_t i = 0; i < frames.size(); ++i) {
        const FrameShape& frame = frames[i];
        // Every image, not only the first: a frame without pixel memory cannot be appended.
        if (!frame.isImage)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("Buffer must contain image frames"));
        if (!first) {
            const FrameShape& recorded = m_frames[i];
            if (frame.width != recorded.width)
                RTE_THROW(RTE::VerificationFailed, QStringLiteral("Image width must not change"));
            if (frame.height != recorded.height)
                RTE_THROW(RTE::VerificationFailed, QStringLiteral("Image height must not change"));
            if (frame.depth != recorded.depth)
                RTE_THROW(RTE::VerificationFailed, QStringLiteral("Image depth must not change"));
        }
        if (frame.dataType != reference.dataType)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("Data type must not change"));
        if (compareMasks && frame.hasMask != reference.hasMask)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("Mask may not change between existing and not existing"));
        if (frame.scalarNames != reference.scalarNames)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("List of scalar fields must not change"));
        for (std::size_t k = 0; k < frame.scalarNames.size(); ++k)
            if (frame.scalarTypes[k] != scalarTypes[frame.scalarNames[k]])
                RTE_THROW(RTE::VerificationFailed, QStringLiteral("Data type of typed scalar must not change"));
    }

    if (first) {
        m_frames = frames;
        m_scalarTypes = std::move(scalarTypes);
    }
}

} // namespace Private
} // namespace SetApi
