#include <StreamIO/ScaleReader.h>

#include "scales/ScaleFile.h"

#include <common/ByteOrder.h>
#include <common/Crc32.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>
#include <RTE/PluginRegistry.h>

#include <vector>

namespace SetApi {

using Private::Records::ByteReader;
using Private::Records::StreamLabel;
using Private::Scales::Record;

const char* const C_ScaleReader::PluginKey = "Core.Set.Recording.ScaleReader";
const char* const C_ScaleReader::PluginName = "ScaleReaderV1";
const char* const C_ScaleReader::PluginDescription = Private::Scales::FormatDescription;

struct C_ScaleReader::State {
    bool open = false;
    std::vector<Record> records;
};

C_ScaleReader::C_ScaleReader() : m_state(std::make_unique<State>()) {}

C_ScaleReader::~C_ScaleReader() = default;

RTE::I_Plugin* C_ScaleReader::CreateObject(RTE::I_CreationContext*)
{
    return new C_ScaleReader();
}

void C_ScaleReader::pluginRegister()
{
    RTE::C_PluginRegistry::GetInstance().RegisterPlugin(PluginKey, PluginName, PluginDescription, &CreateObject);
}

std::string C_ScaleReader::GetPluginName() const
{
    return PluginKey;
}

std::string C_ScaleReader::GetPluginType() const
{
    return PluginName;
}

std::string C_ScaleReader::GetPluginDescription() const
{
    return PluginDescription;
}

void C_ScaleReader::Open(const QString& destination)
{
    using BufferApi::Private::LoadLE;
    m_state->open = false;
    m_state->records.clear();
    RTE_VERIFY(!destination.isEmpty(), "The stream has no destination");

    const StreamLabel label{QString::fromLatin1(Private::Scales::Kind),
                            (destination + QStringLiteral(".scales")).toStdString()};
    auto file = RTE::FileSystem::OpenForReading(label.path);
    const std::uint64_t size = file->Size();
    const auto preamble = Private::Records::ReadPreamble(*file, size, Private::Scales::kMagic,
                                                         QString::fromLatin1(Private::Scales::FormatName), label);
    if (size > Private::Scales::kMaxFileBytes)
        Private::Records::Fail(label, QStringLiteral("has %1 bytes, more than a scale file may have").arg(size));
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size - preamble.preambleBytes));
    Private::Records::ReadExactly(*file, preamble.preambleBytes, bytes.data(), bytes.size(), label);

    // Records one after the other; the first that does not pass its checks ends the readable part
    // (a crash leaves a partial record at the end, and nothing behind it can be found safely).
    std::vector<Record> records;
    std::size_t position = 0;
    while (position < bytes.size()) {
        const std::size_t left = bytes.size() - position;
        if (left < 4)
            break;
        const std::uint8_t* at = bytes.data() + position;
        const std::uint64_t recordBytes = LoadLE(at, 4);
        if (recordBytes < Private::Scales::kMinRecordBytes || recordBytes > Private::Scales::kMaxRecordBytes ||
            recordBytes > left)
            break;
        const std::size_t crcAt = static_cast<std::size_t>(recordBytes) - 4;
        if (BufferApi::Private::Crc32(at, crcAt) != LoadLE(at + crcAt, 4))
            break;
        ByteReader in(at + 4, crcAt - 4, label, QStringLiteral("record %1").arg(records.size()));
        Record record;
        record.first = in.U32();
        record.last = in.U32();
        record.x = Private::Records::ReadScale(in);
        record.y = Private::Records::ReadScale(in);
        record.intensity = Private::Records::ReadScale(in);
        if (record.last < record.first)
            in.Corrupt(QStringLiteral("images %1 to %2").arg(record.first).arg(record.last));
        // Bytes behind the three scales are room for a newer minor version.
        records.push_back(std::move(record));
        position += static_cast<std::size_t>(recordBytes);
    }
    if (records.empty())
        Private::Records::FailCorrupt(label, QStringLiteral("no complete scale record"));
    if (position < bytes.size())
        RTE::C_Logger("Set").info(label.path + ": " + std::to_string(bytes.size() - position) +
                                  " bytes behind the last complete scale record are not read");
    m_state->records = std::move(records);
    m_state->open = true;
}

void C_ScaleReader::ReadScales(std::uint32_t image, RTE::S_Scale& x, RTE::S_Scale& y, RTE::S_Scale& intensity)
{
    RTE_VERIFY(m_state->open, "ReadScales of a scale reader that is not open");
    for (auto record = m_state->records.rbegin(); record != m_state->records.rend(); ++record) {
        if (record->first <= image && image <= record->last) {
            x = record->x;
            y = record->y;
            intensity = record->intensity;
            return;
        }
    }
    x = y = intensity = RTE::S_Scale();
}

std::uint32_t C_ScaleReader::GetRecordCount() const
{
    return static_cast<std::uint32_t>(m_state->records.size());
}

} // namespace SetApi
