#include "records/Preamble.h"

#include "records/ByteCoding.h"

#include <common/ByteOrder.h>
#include <common/Crc32.h>

#include <QRandomGenerator>

#include <algorithm>
#include <cstring>

namespace SetApi {
namespace Private {
namespace Records {

using BufferApi::Private::Crc32;
using BufferApi::Private::LoadLE;

std::vector<std::uint8_t> EncodePreamble(const Magic& magic, std::uint64_t streamId, std::uint32_t entryBytes)
{
    std::vector<std::uint8_t> bytes;
    ByteWriter out(bytes);
    out.Bytes(magic.data(), magic.size());
    out.U16(kMajorVersion);
    out.U16(kMinorVersion);
    out.U32(kPreambleBytes);
    out.U64(streamId);
    out.U32(entryBytes);
    out.U32(Crc32(bytes.data(), bytes.size()));
    return bytes;
}

Preamble ReadPreamble(RTE::I_ReadableFile& file, std::uint64_t fileSize, const Magic& magic,
                      const QString& formatName, const StreamLabel& label)
{
    if (fileSize == 0)
        Fail(label, QStringLiteral("is empty"));
    if (fileSize < kPreambleBytes)
        FailTruncated(label, QStringLiteral("%1 of the %2 bytes of its preamble").arg(fileSize).arg(kPreambleBytes));

    std::uint8_t fixed[kPreambleBytes];
    ReadExactly(file, 0, fixed, kPreambleBytes, label);
    if (!std::equal(magic.begin(), magic.end(), fixed))
        Fail(label, QStringLiteral("is not a file of the ") + formatName + QStringLiteral(" format"));

    // The version comes before everything else: a newer major may lay out the rest differently.
    Preamble preamble;
    preamble.major = static_cast<std::uint16_t>(LoadLE(fixed + 8, 2));
    preamble.minor = static_cast<std::uint16_t>(LoadLE(fixed + 10, 2));
    if (preamble.major > kMajorVersion)
        Fail(label, QStringLiteral("was written by a newer version (%1.%2) of the %3 format")
                        .arg(preamble.major)
                        .arg(preamble.minor)
                        .arg(formatName));
    if (preamble.major < kMajorVersion)
        Fail(label, QStringLiteral("has the unknown version %1.%2 of the %3 format")
                        .arg(preamble.major)
                        .arg(preamble.minor)
                        .arg(formatName));

    preamble.preambleBytes = static_cast<std::uint32_t>(LoadLE(fixed + 12, 4));
    if (preamble.preambleBytes < kPreambleBytes || preamble.preambleBytes > kMaxPreambleBytes)
        FailCorrupt(label, QStringLiteral("preamble of %1 bytes").arg(preamble.preambleBytes));
    if (preamble.preambleBytes > fileSize)
        FailTruncated(label,
                      QStringLiteral("%1 of the %2 bytes of its preamble").arg(fileSize).arg(preamble.preambleBytes));

    std::vector<std::uint8_t> whole(fixed, fixed + kPreambleBytes);
    if (preamble.preambleBytes > kPreambleBytes) {
        whole.resize(preamble.preambleBytes);
        ReadExactly(file, kPreambleBytes, whole.data() + kPreambleBytes, preamble.preambleBytes - kPreambleBytes,
                    label);
    }
    const std::size_t crcAt = preamble.preambleBytes - 4;
    if (Crc32(whole.data(), crcAt) != LoadLE(whole.data() + crcAt, 4))
        FailCorrupt(label, QStringLiteral("preamble checksum mismatch"));

    preamble.streamId = LoadLE(fixed + 16, 8);
    preamble.entryBytes = static_cast<std::uint32_t>(LoadLE(fixed + 24, 4));
    return preamble;
}

void ReadExactly(RTE::I_ReadableFile& file, std::uint64_t offset, void* data, std::size_t size,
                 const StreamLabel& label)
{
    const std::size_t got = file.ReadAt(offset, data, size);
    if (got != size)
        FailTruncated(label, QStringLiteral("read %1 of %2 bytes at %3").arg(got).arg(size).arg(offset));
}

std::uint64_t NewStreamId()
{
    return QRandomGenerator::global()->generate64();
}

} // namespace Records
} // namespace Private
} // namespace SetApi
