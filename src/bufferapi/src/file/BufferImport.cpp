// ImportBuffer and GetImportInformation: the head first, checked completely, then frames with
// plane memory (import) or without (head only), then the planes and the attributes.

#include "codec/PlaneCodec.h"
#include "file/AttributeSection.h"
#include "file/FileError.h"
#include "file/FileFormat.h"
#include "file/HeadCodec.h"
#include "file/SourceFile.h"
#include "model/FrameFactory.h"

#include <BufferApi/BufferFile.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <memory>
#include <vector>

namespace BufferApi {

using namespace Private::BufferFile;

namespace {

Head ReadHead(SourceFile& file)
{
    const std::vector<std::uint8_t>& first = file.First();
    const Preamble preamble = DecodePreamble(first.data(), first.size(), file.Size(), file.Path());
    std::vector<std::uint8_t> storage;
    const std::uint8_t* bytes = file.Bytes(0, preamble.headBytes, storage);
    return DecodeHead(preamble, bytes, file.Size(), file.Path());
}

std::unique_ptr<I_Scale> MakeScale(const ScaleInfo& scale)
{
    return std::unique_ptr<I_Scale>(
        C_ScaleFactory::GetInstance().CreateLinearScale(scale.factor, scale.offset, scale.unit, scale.description));
}

std::unique_ptr<I_Frame> MakeFrame(const FrameInfo& info, Private::PlaneMemory memory)
{
    std::unique_ptr<I_Frame> frame =
        Private::CreateEmptyFrame(info.kind, info.type, info.width, info.height, info.depth, info.gridSize, memory);
    frame->SetName(info.name);
    frame->SetSettings(info.settings);
    for (unsigned axis = 0; axis < SCALE_TYPE_COUNT; ++axis)
        frame->SetScale(E_ScaleType(axis), MakeScale(info.scales[axis]));
    for (const ComponentInfo& component : info.components) {
        I_Component* added = frame->AddComponent(component.name, component.type);
        if (component.hasScale)
            added->SetScale(MakeScale(component.scale));
    }
    return frame;
}

QString PlaneLabel(std::size_t frame, const ComponentInfo& component, std::size_t plane)
{
    return QStringLiteral("component '") + QString::fromStdString(component.name) + QStringLiteral("' of frame ") +
           QString::number(frame) + QStringLiteral(", plane ") + QString::number(plane);
}

// Reads one frame with its planes. Packed blocks are read and their stream headers checked
// before the frame's memory is allocated, so that a plane size the stream does not confirm never
// costs memory.
std::unique_ptr<I_Frame> ReadFrame(SourceFile& file, const FrameInfo& info, std::size_t frameIndex)
{
    std::vector<std::vector<std::vector<std::uint8_t>>> packed(info.components.size());
    for (std::size_t c = 0; c < info.components.size(); ++c) {
        const ComponentInfo& component = info.components[c];
        const std::size_t elementSize = GetDataTypeSize(component.type);
        packed[c].resize(component.planes.size());
        for (std::size_t p = 0; p < component.planes.size(); ++p) {
            const PlaneEntry& entry = component.planes[p];
            if (entry.codec == std::uint8_t(Private::PlaneCodec::Raw))
                continue;
            std::vector<std::uint8_t>& bytes = packed[c][p];
            bytes.resize(std::size_t(entry.storedBytes));
            file.ReadExactly(entry.offset, bytes.data(), bytes.size());
            try {
                // Header, chunk table and sizes: a plane size the stream does not confirm never costs memory.
                Private::CheckPackedPlane(Private::PlaneCodec(entry.codec), bytes.data(), bytes.size(),
                                          std::size_t(info.PlaneBytes(component.type)), unsigned(elementSize));
            } catch (const RTE::Exception& e) {
                FailCorrupt(file.Path(), PlaneLabel(frameIndex, component, p) + QStringLiteral(": ") + e.message());
            }
        }
    }

    std::unique_ptr<I_Frame> frame = MakeFrame(info, Private::PlaneMemory::Uninitialised);
    for (std::size_t c = 0; c < info.components.size(); ++c) {
        const ComponentInfo& component = info.components[c];
        I_Component* target = frame->GetComponentAt(unsigned(c));
        const unsigned elementSize = unsigned(GetDataTypeSize(component.type));
        for (std::size_t p = 0; p < component.planes.size(); ++p) {
            const PlaneEntry& entry = component.planes[p];
            I_PlaneBase* plane = target->GetPlane(unsigned(p));
            if (entry.codec == std::uint8_t(Private::PlaneCodec::Raw)) {
                file.ReadExactly(entry.offset, plane->GetData(), std::size_t(entry.storedBytes));
                continue;
            }
            const std::vector<std::uint8_t>& bytes = packed[c][p];
            try {
                Private::UnpackPlane(Private::PlaneCodec(entry.codec), bytes.data(), bytes.size(), plane->GetData(),
                                     plane->GetByteSize(), elementSize);
            } catch (const RTE::Exception& e) {
                FailCorrupt(file.Path(), PlaneLabel(frameIndex, component, p) + QStringLiteral(": ") + e.message());
            }
            packed[c][p] = std::vector<std::uint8_t>();
        }
    }
    // Every byte above came from the file; components the caller adds later start zero-filled.
    Private::SetPlaneMemory(*frame, Private::PlaneMemory::Zeroed);
    return frame;
}

void ReadAttributes(SourceFile& file, const Head& head, I_Buffer& buffer)
{
    std::vector<std::uint8_t> storage;
    const std::uint8_t* bytes = file.Bytes(head.attributesOffset, std::size_t(head.attributesBytes), storage);
    DecodeAttributes(bytes, std::size_t(head.attributesBytes), head.minor, buffer, file.Path());
}

} // namespace

I_Buffer* ImportBuffer(const std::string& path, boost::shared_ptr<RTE::Parameter::C_Tree> /*options*/)
{
    if (!RTE::FileSystem::Exists(path))
        return nullptr;
    SourceFile file(path);
    const Head head = ReadHead(file);
    std::unique_ptr<I_Buffer> buffer(CreateBuffer());
    for (std::size_t i = 0; i < head.frames.size(); ++i)
        buffer->AddFrame(ReadFrame(file, head.frames[i], i));
    ReadAttributes(file, head, *buffer);
    return buffer.release();
}

I_Buffer* GetImportInformation(const std::string& path, unsigned& frameCount, unsigned& width, unsigned& height,
                               unsigned& depth, bool withAttributes)
{
    if (!RTE::FileSystem::Exists(path))
        Fail(path, QStringLiteral("does not exist"));
    SourceFile file(path);
    const Head head = ReadHead(file);
    std::unique_ptr<I_Buffer> buffer(CreateBuffer());
    for (const FrameInfo& info : head.frames)
        buffer->AddFrame(MakeFrame(info, Private::PlaneMemory::None));
    if (withAttributes)
        ReadAttributes(file, head, *buffer);

    frameCount = unsigned(head.frames.size());
    width = head.frames.empty() ? 0 : head.frames[0].width;
    height = head.frames.empty() ? 0 : head.frames[0].height;
    depth = head.frames.empty() ? 0 : head.frames[0].depth;
    return buffer.release();
}

} // namespace BufferApi
