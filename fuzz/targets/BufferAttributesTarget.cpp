// The attribute section of a buffer file, decoded into a buffer of 0 to 3 frames. The first input
// byte picks the frame count (bits 0-1), the file's minor version (bits 2-3) and whether the
// section's checksum is left as it stands (bit 7); otherwise it is set right before decoding.

#include "BufferSeeds.h"
#include "FuzzTargets.h"

#include "common/Crc32.h"
#include "file/AttributeSection.h"
#include "file/FileFormat.h"

#include <BufferApi/Creation.h>
#include <BufferApi/I_Frame.h>

namespace SetApiFuzz {

using namespace BufferApi;

void RunBufferAttributes(const std::uint8_t* data, std::size_t size)
{
    QuietLogging();
    if (size == 0)
        return;
    const unsigned frames = data[0] & 3u;
    const std::uint16_t minor = std::uint16_t((data[0] >> 2) & 3u);
    Bytes section(data + 1, data + size);
    if (!(data[0] & 0x80u) && section.size() >= Private::BufferFile::kChecksumBytes) {
        const std::size_t checked = section.size() - Private::BufferFile::kChecksumBytes;
        const std::uint32_t crc = Private::Crc32(section.data(), checked);
        for (unsigned i = 0; i < 4; ++i)
            section[checked + i] = std::uint8_t(crc >> (8 * i));
    }
    std::unique_ptr<I_Buffer> buffer(CreateBuffer());
    for (unsigned f = 0; f < frames; ++f)
        buffer->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_WORD, 2, 2, 1)));
    Guarded([&] {
        Private::BufferFile::DecodeAttributes(section.data(), section.size(), minor, *buffer, "input");
    });
}

std::vector<Bytes> SeedsBufferAttributes()
{
    std::vector<Bytes> seeds;
    for (const auto& buffer : SmallBuffers()) {
        Bytes seed{std::uint8_t(buffer->GetNumberOfFrames() & 3u)};
        const Bytes section = Private::BufferFile::EncodeAttributes(*buffer);
        seed.insert(seed.end(), section.begin(), section.end());
        seeds.push_back(std::move(seed));
    }
    return seeds;
}

} // namespace SetApiFuzz
