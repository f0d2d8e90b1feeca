#include "file/HeadCodec.h"

#include "codec/PlaneCodec.h"
#include "file/ByteCoding.h"
#include "common/Crc32.h"
#include "file/FileError.h"

#include <RTE/Exception.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>

namespace BufferApi {
namespace Private {
namespace BufferFile {
namespace {

// The smallest records a count can claim: a frame with empty texts and no components, a
// component with an empty name and no scale (plane entries are checked by depth).
constexpr std::size_t kMinFrameRecordBytes = 4 + 4 + 16 + 8 + SCALE_TYPE_COUNT * 24 + 4;
constexpr std::size_t kMinComponentRecordBytes = 4 + 4 + 4;
// The smallest packed stream per chunk of the largest size: a table entry and one byte.
constexpr std::uint64_t kPackedHeaderBytes = 24;
constexpr std::uint64_t kPackedBytesPerChunk = 9;

void PutScale(ByteWriter& w, const ScaleInfo& scale)
{
    w.F64(scale.factor);
    w.F64(scale.offset);
    w.Str(scale.unit);
    w.Str(scale.description);
}

ScaleInfo GetScale(ByteReader& r)
{
    ScaleInfo scale;
    scale.factor = r.F64();
    scale.offset = r.F64();
    scale.unit = r.Str();
    scale.description = r.Str();
    return scale;
}

QString Quoted(const std::string& text) { return QLatin1Char('\'') + QString::fromStdString(text) + QLatin1Char('\''); }

QString FrameLabel(std::size_t index) { return QStringLiteral("frame ") + QString::number(index); }

QString ComponentLabel(std::size_t frame, const std::string& name)
{
    return QStringLiteral("component ") + Quoted(name) + QStringLiteral(" of frame ") + QString::number(frame);
}

bool IsFrameKind(unsigned kind) { return kind >= 1 && kind <= 3; }

void CheckPlane(const PlaneEntry& plane, std::uint64_t planeBytes, const Head& head, const QString& where,
                const std::string& path)
{
    const auto fail = [&](const QString& what) { FailCorrupt(path, where + QStringLiteral(": ") + what); };
    if (plane.codec > std::uint8_t(PlaneCodec::Fast))
        fail(QStringLiteral("unknown codec ") + QString::number(plane.codec));
    if (plane.offset % kPlaneAlignment != 0)
        fail(QStringLiteral("data offset ") + QString::number(plane.offset) + QStringLiteral(" is not aligned"));
    if (plane.offset < head.DataStart())
        fail(QStringLiteral("data offset ") + QString::number(plane.offset) +
             QStringLiteral(" lies inside head or attributes"));
    if (plane.offset > head.fileBytes || plane.storedBytes > head.fileBytes - plane.offset)
        fail(QString::number(plane.storedBytes) + QStringLiteral(" bytes at ") + QString::number(plane.offset) +
             QStringLiteral(" reach past the end of the file"));
    if (plane.codec == std::uint8_t(PlaneCodec::Raw)) {
        if (plane.storedBytes != planeBytes)
            fail(QString::number(plane.storedBytes) + QStringLiteral(" bytes stored for a raw plane of ") +
                 QString::number(planeBytes));
    } else {
        const std::uint64_t chunks = (planeBytes + kMaxChunkBytes - 1) / kMaxChunkBytes;
        if (plane.storedBytes < kPackedHeaderBytes + kPackedBytesPerChunk * chunks)
            fail(QString::number(plane.storedBytes) + QStringLiteral(" bytes cannot hold a packed plane of ") +
                 QString::number(planeBytes));
    }
}

ComponentInfo DecodeComponent(ByteReader& frameReader, const FrameInfo& frame, std::size_t frameIndex,
                              const Head& head)
{
    ByteReader r = frameReader.Record(QStringLiteral("a component record of ") + FrameLabel(frameIndex));
    ComponentInfo component;
    component.name = r.Str();
    const QString where = ComponentLabel(frameIndex, component.name);
    const auto fail = [&](const QString& what) { FailCorrupt(r.Path(), where + QStringLiteral(": ") + what); };
    if (component.name.empty())
        FailCorrupt(r.Path(), FrameLabel(frameIndex) + QStringLiteral(" has a component without name"));
    const unsigned type = r.U8();
    const unsigned hasScale = r.U8();
    r.U16(); // reserved
    if (!IsValidDataType(int(type)))
        fail(QStringLiteral("unknown element type ") + QString::number(type));
    if (hasScale > 1)
        fail(QStringLiteral("scale flag ") + QString::number(hasScale));
    component.type = E_DataType(type);
    component.hasScale = hasScale == 1;
    if (component.hasScale)
        component.scale = GetScale(r);

    const std::uint64_t planeBytes = frame.PlaneBytes(component.type);
    if (planeBytes > kMaxPlaneBytes)
        fail(QStringLiteral("planes of ") + QString::number(planeBytes) + QStringLiteral(" bytes exceed the limit"));
    if (std::uint64_t(frame.depth) * kPlaneEntryBytes > r.Remaining())
        fail(QString::number(frame.depth) + QStringLiteral(" plane entries cannot fit in ") +
             QString::number(r.Remaining()) + QStringLiteral(" bytes"));
    component.planes.resize(frame.depth);
    for (std::uint32_t i = 0; i < frame.depth; ++i) {
        PlaneEntry& plane = component.planes[i];
        plane.offset = r.U64();
        plane.storedBytes = r.U64();
        plane.codec = r.U8();
        r.Take(7); // reserved
        CheckPlane(plane, planeBytes, head, where + QStringLiteral(", plane ") + QString::number(i), r.Path());
    }
    return component;
}

FrameInfo DecodeFrame(ByteReader& headReader, std::size_t index, const Head& head)
{
    ByteReader r = headReader.Record(FrameLabel(index));
    const auto fail = [&](const QString& what) { FailCorrupt(r.Path(), FrameLabel(index) + QStringLiteral(": ") + what); };
    FrameInfo frame;
    const unsigned kind = r.U8();
    const unsigned type = r.U8();
    r.U16(); // reserved
    frame.width = r.U32();
    frame.height = r.U32();
    frame.depth = r.U32();
    frame.gridSize = r.U32();
    if (!IsFrameKind(kind))
        fail(QStringLiteral("unknown kind ") + QString::number(kind));
    if (!IsValidDataType(int(type)))
        fail(QStringLiteral("unknown element type ") + QString::number(type));
    if (frame.width == 0 || frame.height == 0 || frame.depth == 0)
        fail(QStringLiteral("size ") + QString::number(frame.width) + QLatin1Char('x') + QString::number(frame.height) +
             QLatin1Char('x') + QString::number(frame.depth));
    frame.kind = E_FrameKind(kind);
    frame.type = E_DataType(type);
    frame.name = r.Str();
    frame.settings = r.Str();
    for (ScaleInfo& scale : frame.scales)
        scale = GetScale(r);

    const std::uint32_t count =
        r.Count(kMinComponentRecordBytes, std::numeric_limits<std::uint32_t>::max(), QStringLiteral("components"));
    frame.components.reserve(count);
    std::set<std::string> names;
    for (std::uint32_t i = 0; i < count; ++i) {
        frame.components.push_back(DecodeComponent(r, frame, index, head));
        if (!names.insert(frame.components.back().name).second)
            fail(QStringLiteral("component ") + Quoted(frame.components.back().name) + QStringLiteral(" appears twice"));
    }
    return frame;
}

} // namespace

std::vector<std::uint8_t> EncodeHead(const Head& head)
{
    ByteWriter w;
    w.Raw(kMagic.data(), kMagic.size());
    w.U16(head.major);
    w.U16(head.minor);
    w.U32(std::uint32_t(kPreambleBytes));
    const std::size_t headBytesAt = w.Size();
    w.U32(0);
    w.U32(std::uint32_t(head.frames.size()));
    w.U64(head.attributesOffset);
    w.U64(head.attributesBytes);
    w.U64(head.fileBytes);

    for (const FrameInfo& frame : head.frames) {
        const std::size_t frameAt = w.BeginRecord();
        w.U8(std::uint8_t(frame.kind));
        w.U8(std::uint8_t(frame.type));
        w.U16(0);
        w.U32(frame.width);
        w.U32(frame.height);
        w.U32(frame.depth);
        w.U32(frame.gridSize);
        w.Str(frame.name);
        w.Str(frame.settings);
        for (const ScaleInfo& scale : frame.scales)
            PutScale(w, scale);
        w.U32(std::uint32_t(frame.components.size()));
        for (const ComponentInfo& component : frame.components) {
            const std::size_t componentAt = w.BeginRecord();
            w.Str(component.name);
            w.U8(std::uint8_t(component.type));
            w.U8(component.hasScale ? 1 : 0);
            w.U16(0);
            if (component.hasScale)
                PutScale(w, component.scale);
            for (const PlaneEntry& plane : component.planes) {
                w.U64(plane.offset);
                w.U64(plane.storedBytes);
                w.U8(plane.codec);
                for (int i = 0; i < 7; ++i)
                    w.U8(0);
            }
            w.EndRecord(componentAt);
        }
        w.EndRecord(frameAt);
    }

    const std::uint64_t headBytes = w.Size() + kChecksumBytes;
    RTE_VERIFY(headBytes <= kMaxHeadBytes, "The buffer's head is too large for a buffer file");
    w.PatchU32(headBytesAt, std::uint32_t(headBytes));
    w.U32(Crc32(w.Bytes().data(), w.Size()));
    return std::move(w.Bytes());
}

Preamble DecodePreamble(const std::uint8_t* bytes, std::size_t available, std::uint64_t fileSize,
                        const std::string& path)
{
    if (fileSize == 0)
        Fail(path, QStringLiteral("is empty"));
    const std::size_t magicBytes = std::min<std::size_t>(available, kMagic.size());
    if (std::memcmp(bytes, kMagic.data(), magicBytes) != 0)
        Fail(path, QStringLiteral("is not a buffer file (it does not begin with the buffer file signature)"));
    if (available < kPreambleBytes)
        FailTruncated(path, QString::number(fileSize) + QStringLiteral(" bytes, the preamble alone needs ") +
                                QString::number(kPreambleBytes));

    Preamble preamble;
    ByteReader r(bytes + kMagic.size(), kPreambleBytes - kMagic.size(), path, QStringLiteral("the preamble"));
    preamble.major = r.U16();
    preamble.minor = r.U16();
    const QString version = QString::number(preamble.major) + QLatin1Char('.') + QString::number(preamble.minor);
    if (preamble.major > kMajorVersion)
        Fail(path, QStringLiteral("was written by a newer version (") + version +
                       QStringLiteral(") of the buffer file format; this library reads version ") +
                       QString::number(kMajorVersion) + QStringLiteral(".x"));
    if (preamble.major < kMajorVersion)
        Fail(path, QStringLiteral("has an unknown format version (") + version + QLatin1Char(')'));
    preamble.preambleBytes = r.U32();
    preamble.headBytes = r.U32();
    preamble.frameCount = r.U32();
    if (preamble.preambleBytes < kPreambleBytes)
        FailCorrupt(path, QStringLiteral("preamble of ") + QString::number(preamble.preambleBytes) + QStringLiteral(" bytes"));
    if (preamble.headBytes > kMaxHeadBytes || std::uint64_t(preamble.preambleBytes) + kChecksumBytes > preamble.headBytes)
        FailCorrupt(path, QStringLiteral("head of ") + QString::number(preamble.headBytes) + QStringLiteral(" bytes"));
    if (preamble.headBytes > fileSize)
        FailTruncated(path, QStringLiteral("the head needs ") + QString::number(preamble.headBytes) +
                                QStringLiteral(" bytes, the file has ") + QString::number(fileSize));
    return preamble;
}

Head DecodeHead(const Preamble& preamble, const std::uint8_t* bytes, std::uint64_t fileSize, const std::string& path)
{
    const std::size_t checkedBytes = preamble.headBytes - kChecksumBytes;
    if (Crc32(bytes, checkedBytes) != std::uint32_t(LoadLE(bytes + checkedBytes, 4)))
        FailCorrupt(path, QStringLiteral("head checksum mismatch"));

    Head head;
    head.major = preamble.major;
    head.minor = preamble.minor;
    head.headBytes = preamble.headBytes;
    ByteReader fixed(bytes + 24, kPreambleBytes - 24, path, QStringLiteral("the preamble"));
    head.attributesOffset = fixed.U64();
    head.attributesBytes = fixed.U64();
    head.fileBytes = fixed.U64();

    if (fileSize < head.fileBytes)
        FailTruncated(path, QString::number(fileSize) + QStringLiteral(" of ") + QString::number(head.fileBytes) +
                                QStringLiteral(" bytes"));
    if (fileSize > head.fileBytes)
        FailCorrupt(path, QString::number(fileSize) + QStringLiteral(" bytes, but ") + QString::number(head.fileBytes) +
                              QStringLiteral(" were written"));

    ByteReader r(bytes + preamble.preambleBytes, checkedBytes - preamble.preambleBytes, path, QStringLiteral("the head"));
    if (preamble.frameCount > kMaxFrames || std::uint64_t(preamble.frameCount) * kMinFrameRecordBytes > r.Remaining())
        FailCorrupt(path, QStringLiteral("the head claims ") + QString::number(preamble.frameCount) +
                              QStringLiteral(" frames, which cannot fit in its ") + QString::number(r.Remaining()) +
                              QStringLiteral(" bytes"));
    const std::uint64_t minAttributeBytes = 4 * (std::uint64_t(preamble.frameCount) + 1) + kChecksumBytes;
    if (head.attributesOffset < head.headBytes || head.attributesOffset > head.fileBytes ||
        head.attributesBytes > head.fileBytes - head.attributesOffset || head.attributesBytes < minAttributeBytes ||
        head.attributesBytes > kMaxAttributeBytes)
        FailCorrupt(path, QStringLiteral("attribute section of ") + QString::number(head.attributesBytes) +
                              QStringLiteral(" bytes at ") + QString::number(head.attributesOffset));

    head.frames.reserve(preamble.frameCount);
    for (std::uint32_t i = 0; i < preamble.frameCount; ++i)
        head.frames.push_back(DecodeFrame(r, i, head));
    return head;
}

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
