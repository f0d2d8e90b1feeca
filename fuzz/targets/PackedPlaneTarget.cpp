// One packed plane: CheckPackedPlane, then UnpackPlane into a plane of the expected size. The
// first input byte picks the codec (value % 3 of bits 0-1), the element size (bits 2-3: 1, 2, 4
// or 8 bytes), whether the checksums are left as they stand (bit 4; otherwise the header and chunk
// checksums are set right before unpacking) and whether the expected plane size is one element
// more than the stream's header says (bit 5). Raw planes expect the size of the input.

#include "FuzzTargets.h"

#include "codec/PlaneCodec.h"
#include "common/Crc32.h"

#include <algorithm>
#include <cstring>

namespace SetApiFuzz {

using namespace BufferApi::Private;

namespace {

constexpr std::size_t kHeaderBytes = 24;
// Planes above this are not unpacked: the target looks for faults, not for memory.
constexpr std::uint64_t kMaxPlaneBytes = 8u << 20;

std::uint64_t Load(const Bytes& bytes, std::size_t at, unsigned size)
{
    std::uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i)
        value |= std::uint64_t(bytes[at + i]) << (8 * i);
    return value;
}

void Store32(Bytes& bytes, std::size_t at, std::uint32_t value)
{
    for (unsigned i = 0; i < 4; ++i)
        bytes[at + i] = std::uint8_t(value >> (8 * i));
}

// Sets header and chunk checksums of a chunked stream as far as the stream holds them.
void FixChecksums(Bytes& stream)
{
    if (stream.size() < kHeaderBytes)
        return;
    const std::uint64_t chunks = Load(stream, 16, 4);
    const std::uint64_t tableEnd = kHeaderBytes + chunks * 8;
    if (tableEnd > stream.size())
        return;
    std::size_t offset = std::size_t(tableEnd);
    for (std::uint64_t c = 0; c < chunks; ++c) {
        const std::size_t entry = kHeaderBytes + std::size_t(c) * 8;
        const std::uint64_t packed = Load(stream, entry, 4);
        if (packed > stream.size() - offset)
            break;
        Store32(stream, entry + 4, Crc32(stream.data() + offset, std::size_t(packed)));
        offset += std::size_t(packed);
    }
    std::uint32_t crc = Crc32(stream.data(), 20);
    crc = Crc32Update(crc, stream.data() + kHeaderBytes, std::size_t(tableEnd - kHeaderBytes));
    Store32(stream, 20, crc);
}

} // namespace

void RunPackedPlane(const std::uint8_t* data, std::size_t size)
{
    QuietLogging();
    if (size == 0)
        return;
    const std::uint8_t control = data[0];
    const PlaneCodec codec = PlaneCodec((control & 3u) % 3u);
    const unsigned elementSize = 1u << ((control >> 2) & 3u);
    Bytes stream(data + 1, data + size);
    std::uint64_t planeBytes = stream.size();
    if (codec != PlaneCodec::Raw) {
        if (stream.size() < kHeaderBytes)
            planeBytes = elementSize;
        else
            planeBytes = Load(stream, 8, 8);
        if (control & 0x20u)
            planeBytes += elementSize;
        if (!(control & 0x10u))
            FixChecksums(stream);
    }
    if (planeBytes > kMaxPlaneBytes)
        return;
    Guarded([&] {
        CheckPackedPlane(codec, stream.data(), stream.size(), std::size_t(planeBytes), elementSize);
        Bytes plane(static_cast<std::size_t>(planeBytes));
        UnpackPlane(codec, stream.data(), stream.size(), plane.data(), plane.size(), elementSize);
    });
}

std::vector<Bytes> SeedsPackedPlane()
{
    std::vector<Bytes> seeds;
    for (unsigned sizeCode = 0; sizeCode < 4; ++sizeCode) {
        const unsigned elementSize = 1u << sizeCode;
        Bytes plane(elementSize * 96);
        for (std::size_t i = 0; i < plane.size(); ++i)
            plane[i] = std::uint8_t((i * 7) / 5 % 251);
        for (PlaneCodec codec : {PlaneCodec::Raw, PlaneCodec::Zlib, PlaneCodec::Fast}) {
            Bytes packed;
            // Small chunks, so that the seeds hold several.
            PackPlane(codec, plane.data(), plane.size(), elementSize, packed, elementSize * 32);
            Bytes seed{std::uint8_t(unsigned(codec) | (sizeCode << 2))};
            seed.insert(seed.end(), packed.begin(), packed.end());
            seeds.push_back(std::move(seed));
        }
    }
    return seeds;
}

} // namespace SetApiFuzz
