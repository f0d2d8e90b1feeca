#include "scales/ScaleFile.h"

#include <common/Crc32.h>

namespace SetApi {
namespace Private {
namespace Scales {

const char* const FormatDescription =
    "Scale file 1.0: checksummed records of x, y and intensity scales, each for a range of images";
const char* const Kind = "Scale file";
const char* const FormatName = "scale file";

void EncodeRecord(const Record& record, std::vector<std::uint8_t>& bytes)
{
    const std::size_t start = bytes.size();
    Records::ByteWriter out(bytes);
    out.U32(0); // patched below
    out.U32(record.first);
    out.U32(record.last);
    Records::WriteScale(out, record.x);
    Records::WriteScale(out, record.y);
    Records::WriteScale(out, record.intensity);
    out.PatchU32(start, static_cast<std::uint32_t>(bytes.size() + 4 - start));
    out.U32(BufferApi::Private::Crc32(bytes.data() + start, bytes.size() - start));
}

} // namespace Scales
} // namespace Private
} // namespace SetApi
