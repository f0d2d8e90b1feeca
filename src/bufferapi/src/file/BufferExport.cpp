// ExportBuffer: describe the buffer, pack its planes, lay the file out, write it under a temporary
// name beside the target and rename it into place. With the option "DirectIo" the file is written
// around the page cache: planes lie at 4 KiB multiples in the file and in memory (plane memory and
// packed planes alike), so that every whole block goes from memory to disk without a copy.

#include "codec/PlaneCodec.h"
#include "file/AttributeSection.h"
#include "file/FileFormat.h"
#include "file/HeadCodec.h"
#include "model/AlignedMemory.h"

#include <BufferApi/BufferFile.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>
#include <RTE/Parameter/Factory.h>

#include <algorithm>
#include <array>
#include <exception>
#include <limits>
#include <memory>
#include <vector>

namespace BufferApi {

using namespace Private::BufferFile;
using Private::PlaneCodec;

namespace {

// One plane on its way to the file.
struct PlaneJob {
    const I_PlaneBase* plane = nullptr;
    std::size_t bytes = 0;
    unsigned elementSize = 0;
    PlaneEntry* entry = nullptr;
    // The packed stream in 4 KiB aligned memory; null: stored raw.
    Private::AlignedBlock packed;
    std::size_t packedBytes = 0;
};

struct ExportOptions {
    int packType = 0;
    bool directIo = false;
    bool deferSync = false; // "DirectIo" 2: durable at the caller's SyncFolder, not at Close
};

long long IntegerOption(const boost::shared_ptr<RTE::Parameter::C_Tree>& options, const QString& name,
                        long long absent)
{
    if (!options)
        return absent;
    const boost::shared_ptr<RTE::Parameter::C_Node> node = options->Find(name);
    if (!node)
        return absent;
    const boost::shared_ptr<RTE::Parameter::C_Integer> value = RTE::Parameter::CastToInteger(node);
    if (!value)
        RTE_THROW_MSG(RTE::VerificationFailed, "ExportBuffer: the option \"" << name << "\" is not an integer");
    return value->GetValue();
}

ExportOptions OptionsOf(const boost::shared_ptr<RTE::Parameter::C_Tree>& options)
{
    ExportOptions result;
    const long long packType = IntegerOption(options, QStringLiteral("PackType"), 0);
    // Only 0 and 2 have meanings of their own; every other value selects the fast pack.
    result.packType = packType == 0 || packType == 2 ? int(packType) : 1;
    const long long directIo = IntegerOption(options, QStringLiteral("DirectIo"), 0);
    result.directIo = directIo != 0;
    result.deferSync = directIo == 2;
    return result;
}

ScaleInfo Describe(const I_Scale& scale)
{
    ScaleInfo info;
    info.factor = scale.GetFactor();
    info.offset = scale.GetOffset();
    info.unit = scale.GetUnit();
    info.description = scale.GetDescription();
    return info;
}

unsigned GridSizeOf(const I_Frame& frame)
{
    if (const auto* vector = dynamic_cast<const I_FrameVector*>(&frame))
        return vector->GetGridSize();
    if (const auto* vector3C = dynamic_cast<const I_FrameVector3C*>(&frame))
        return vector3C->GetGridSize();
    return 0;
}

// The head's description of the buffer, with plane offsets still open. Raises
// RTE::VerificationFailed for what cannot be stored (frames without memory, say).
Head Describe(const I_Buffer& buffer)
{
    if (buffer.GetNumberOfFrames() > kMaxFrames)
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "ExportBuffer: " << buffer.GetNumberOfFrames() << " frames are more than a buffer file holds");
    Head head;
    head.frames.resize(buffer.GetNumberOfFrames());
    for (unsigned f = 0; f < buffer.GetNumberOfFrames(); ++f) {
        const I_Frame& frame = *buffer.GetFrame(f);
        FrameInfo& info = head.frames[f];
        if (!frame.HasData())
            RTE_THROW_MSG(RTE::VerificationFailed, "ExportBuffer: frame " << f << " has no plane memory");
        info.kind = frame.GetKind();
        info.type = frame.GetDataType();
        info.width = frame.GetWidth();
        info.height = frame.GetHeight();
        info.depth = frame.GetDepth();
        info.gridSize = GridSizeOf(frame);
        info.name = frame.GetName();
        info.settings = frame.GetSettings();
        for (unsigned axis = 0; axis < SCALE_TYPE_COUNT; ++axis)
            info.scales[axis] = Describe(frame.GetScale(E_ScaleType(axis)));
        info.components.resize(frame.GetComponentCount());
        for (unsigned c = 0; c < frame.GetComponentCount(); ++c) {
            const I_Component& component = *frame.GetComponentAt(c);
            ComponentInfo& described = info.components[c];
            described.name = component.GetName();
            described.type = component.GetDataType();
            described.hasScale = component.GetScale() != nullptr;
            if (described.hasScale)
                described.scale = Describe(*component.GetScale());
            if (info.PlaneBytes(described.type) > kMaxPlaneBytes)
                RTE_THROW_MSG(RTE::VerificationFailed,
                              "ExportBuffer: the planes of frame " << f << " are larger than a buffer file holds");
            RTE_VERIFY(component.GetPlaneCount() == info.depth, "ExportBuffer: a component has not one plane per depth");
            described.planes.resize(info.depth);
        }
    }
    return head;
}

std::vector<PlaneJob> ListPlanes(const I_Buffer& buffer, Head& head)
{
    std::vector<PlaneJob> jobs;
    for (unsigned f = 0; f < buffer.GetNumberOfFrames(); ++f) {
        const I_Frame& frame = *buffer.GetFrame(f);
        for (unsigned c = 0; c < frame.GetComponentCount(); ++c) {
            const I_Component& component = *frame.GetComponentAt(c);
            for (unsigned p = 0; p < component.GetPlaneCount(); ++p) {
                const I_PlaneBase* plane = component.GetPlane(p);
                if (plane == nullptr || !plane->HasData())
                    RTE_THROW_MSG(RTE::VerificationFailed, "ExportBuffer: plane " << p << " of component '"
                                                                                  << component.GetName() << "' of frame "
                                                                                  << f << " has no memory");
                PlaneJob job;
                job.plane = plane;
                job.bytes = plane->GetByteSize();
                job.elementSize = unsigned(plane->GetElementSize());
                job.entry = &head.frames[f].components[c].planes[p];
                jobs.push_back(std::move(job));
            }
        }
    }
    return jobs;
}

// Packs every plane; a plane that packing does not make smaller stays raw. The codec packs the
// chunks of a large plane in parallel; small planes are packed in parallel with each other. The
// packed stream goes into aligned plane memory (not zero-filled, reused from the plane memory
// cache when a block of the size is there), which direct I/O writes as it is.
void Pack(std::vector<PlaneJob>& jobs, PlaneCodec codec)
{
    if (codec == PlaneCodec::Raw || jobs.empty())
        return;
    std::size_t largest = 0;
    for (const PlaneJob& job : jobs)
        largest = std::max(largest, job.bytes);
    const bool acrossPlanes = jobs.size() > 1 && largest <= 2 * Private::kDefaultChunkBytes;
    const long count = long(jobs.size());
    std::exception_ptr failure;
#pragma omp parallel for schedule(dynamic, 1) if (acrossPlanes)
    for (long i = 0; i < count; ++i) {
        PlaneJob& job = jobs[std::size_t(i)];
        try {
            const std::size_t capacity = Private::PackedPlaneCapacity(codec, job.bytes);
            job.packed = Private::AllocateAligned(capacity, false);
            job.packedBytes = Private::PackPlaneInto(codec, job.plane->GetData(), job.bytes, job.elementSize,
                                                     static_cast<std::uint8_t*>(job.packed.get()), capacity);
            if (job.packedBytes >= job.bytes) {
                job.packed.reset();
                job.packedBytes = 0;
            }
        } catch (...) {
#pragma omp critical(SetApiBufferFileExport)
            if (!failure)
                failure = std::current_exception();
        }
    }
    if (failure)
        std::rethrow_exception(failure);
}

// Gives every plane its place: behind head and attributes, each at a multiple of 4096.
void LayOut(Head& head, std::vector<PlaneJob>& jobs, std::size_t attributeBytes, PlaneCodec codec)
{
    head.attributesOffset = EncodeHead(head).size();
    head.attributesBytes = attributeBytes;
    std::uint64_t end = head.DataStart();
    for (PlaneJob& job : jobs) {
        const bool raw = !job.packed;
        job.entry->codec = std::uint8_t(raw ? PlaneCodec::Raw : codec);
        job.entry->storedBytes = raw ? job.bytes : job.packedBytes;
        job.entry->offset = AlignUp(end, kPlaneAlignment);
        end = job.entry->offset + job.entry->storedBytes;
    }
    head.fileBytes = end;
}

// The gap before a plane block is below one block (planes follow each other, and the head is
// padded to the first block only), so it goes in one append.
void AppendZeros(RTE::I_WritableFile& file, std::uint64_t count)
{
    static const std::array<std::uint8_t, kPlaneAlignment> zeros{};
    while (count > 0) {
        const std::size_t piece = std::size_t(std::min<std::uint64_t>(count, zeros.size()));
        file.Append(zeros.data(), piece);
        count -= piece;
    }
}

// Writes front to back. Every plane block starts at a 4 KiB multiple of the file from 4 KiB
// aligned memory, and what precedes it (head, attributes, the tail of the plane before, padding)
// fills whole blocks: with direct I/O the small pieces are gathered in the file's own block and
// every whole block of a plane goes straight from the plane's memory to the disk.
void WriteFile(const std::string& path, const std::vector<std::uint8_t>& headBytes,
               const std::vector<std::uint8_t>& attributes, const std::vector<PlaneJob>& jobs, bool directIo,
               bool deferSync)
{
    std::unique_ptr<RTE::I_WritableFile> file =
        RTE::FileSystem::OpenForWriting(path, directIo ? RTE::WriteMode::Direct : RTE::WriteMode::Buffered);
    if (deferSync)
        file->DeferSync();
    file->Append(headBytes.data(), headBytes.size());
    file->Append(attributes.data(), attributes.size());
    std::uint64_t position = headBytes.size() + attributes.size();
    for (const PlaneJob& job : jobs) {
        AppendZeros(*file, job.entry->offset - position);
        if (job.packed)
            file->Append(job.packed.get(), job.packedBytes);
        else
            file->Append(job.plane->GetData(), job.bytes);
        position = job.entry->offset + job.entry->storedBytes;
    }
    file->Close();
}

// `folder/prefix + name + suffix` for `folder/name`.
std::string Sibling(const std::string& path, const char* prefix, const char* suffix)
{
    const std::size_t separator = path.find_last_of("/\\");
    const std::size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
    return path.substr(0, nameStart) + prefix + path.substr(nameStart) + suffix;
}

// Puts the written file in place of the target in one step: a reader sees the earlier file or
// the new one, and a failure leaves the earlier file as it was.
void Commit(const std::string& temporary, const std::string& path)
{
    RTE::FileSystem::ReplaceFile(temporary, path);
}

void RemoveQuietly(const std::string& path)
{
    try {
        if (RTE::FileSystem::Exists(path))
            RTE::FileSystem::RemoveFile(path);
    } catch (const std::exception& e) {
        RTE::C_Logger("BufferApi").error("Could not remove '" + path + "': " + e.what());
    }
}

} // namespace

void ExportBuffer(const I_Buffer* buffer, const std::string& path, boost::shared_ptr<RTE::Parameter::C_Tree> options)
{
    RTE_VERIFY(buffer != nullptr, "ExportBuffer: no buffer");
    RTE_VERIFY(!path.empty(), "ExportBuffer: empty path");
    const ExportOptions settings = OptionsOf(options);
    const PlaneCodec codec = Private::CodecForPackType(settings.packType);
    Head head = Describe(*buffer);
    std::vector<PlaneJob> jobs = ListPlanes(*buffer, head);
    if (RTE::FileSystem::IsDirectory(path))
        RTE_THROW_MSG(RTE::FileWriteError, "Cannot write buffer file '" << path << "': a folder of that name exists");

    const std::string temporary = Sibling(path, ".~", "");
    try {
        Pack(jobs, codec);
        const std::vector<std::uint8_t> attributes = EncodeAttributes(*buffer);
        LayOut(head, jobs, attributes.size(), codec);
        const std::vector<std::uint8_t> headBytes = EncodeHead(head);
        WriteFile(temporary, headBytes, attributes, jobs, settings.directIo, settings.deferSync);
        Commit(temporary, path);
    } catch (const std::exception& e) {
        RemoveQuietly(temporary);
        RTE_THROW_MSG(RTE::FileWriteError, "Cannot write buffer file '" << path << "': " << e.what());
    } catch (...) {
        RemoveQuietly(temporary);
        RTE_THROW_MSG(RTE::FileWriteError, "Cannot write buffer file '" << path << "': unknown failure");
    }
}

} // namespace BufferApi
