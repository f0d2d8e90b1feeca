// The head of a buffer file: preamble, frame records and their checks against the file size. The
// head checksum is set right before decoding (unless the input's first byte after the magic says
// otherwise), so that mutations reach the frame records instead of stopping at the checksum.

#include "BufferSeeds.h"
#include "FuzzTargets.h"

#include "common/Crc32.h"
#include "file/HeadCodec.h"

#include <BufferApi/BufferFile.h>

namespace SetApiFuzz {

using namespace BufferApi::Private;

void RunBufferHead(const std::uint8_t* data, std::size_t size)
{
    QuietLogging();
    Bytes bytes(data, data + size);
    Guarded([&] {
        const BufferFile::Preamble preamble =
            BufferFile::DecodePreamble(bytes.data(), bytes.size(), bytes.size(), "input");
        if (preamble.headBytes > bytes.size() || preamble.headBytes < BufferFile::kChecksumBytes)
            return;
        const std::size_t checked = preamble.headBytes - BufferFile::kChecksumBytes;
        const std::uint32_t crc = Crc32(bytes.data(), checked);
        for (unsigned i = 0; i < 4; ++i)
            bytes[checked + i] = std::uint8_t(crc >> (8 * i));
        const BufferFile::Head head = BufferFile::DecodeHead(preamble, bytes.data(), bytes.size(), "input");
        // What a decoded head claims must lie in the file.
        if (head.DataStart() > bytes.size())
            Fail("a decoded head claims attributes beyond the file");
    });
}

std::vector<Bytes> SeedsBufferHead() { return SeedsBufferImport(); }

} // namespace SetApiFuzz
