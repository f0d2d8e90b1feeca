#include <StreamIO/AttributeWriter.h>

#include "attributes/AttributeRecord.h"
#include "records/ByteCoding.h"
#include "records/RecordStreamWriter.h"

#include <RTE/Exception.h>

#include <cstring>
#include <vector>

namespace SetApi {

using Private::Records::ByteWriter;
using Private::Records::kMaxRecordBytes;
using Private::Records::kRecordFrameBytes;

struct AttributeWriter::State {
    Private::Records::RecordStreamWriter stream{Private::Attributes::StreamFormat()};
    // The payload of the current image: the attribute count (patched by NextImage), then the
    // attributes as they come.
    std::vector<std::uint8_t> current;
    std::uint32_t attributes = 0;
    bool closed = false;

    void CheckOpen(const char* operation) const
    {
        if (!stream.IsOpen())
            RTE_THROW_MSG(RTE::VerificationFailed, "AttributeWriter: " << operation
                                                                       << (closed ? " after Close" : " before Open"));
    }

    // Begins an attribute of `valueBytes` bytes after its name, refusing a record beyond the limit
    // before anything is allocated for it.
    ByteWriter Begin(Private::Attributes::Kind kind, const QByteArray& name, std::uint64_t valueBytes)
    {
        const std::uint64_t limit = kMaxRecordBytes - kRecordFrameBytes;
        const std::uint64_t bytes = 1 + 4 + std::uint64_t(name.size()) + valueBytes;
        if (bytes > limit || current.size() > limit - bytes)
            RTE_THROW_MSG(RTE::VerificationFailed, "AttributeWriter: the attributes of image "
                                                       << stream.RecordCount() << " would exceed " << limit
                                                       << " bytes with '" << QString::fromUtf8(name) << "'");
        if (current.empty())
            current.resize(4);
        current.reserve(current.size() + static_cast<std::size_t>(bytes));
        ByteWriter out(current);
        out.U8(kind);
        out.Str(name);
        ++attributes;
        return out;
    }

    template <class Bits, class T>
    void AddArray(Private::Attributes::Kind kind, const QString& name, std::size_t count, const T* values)
    {
        static_assert(sizeof(Bits) == sizeof(T), "element sizes");
        CheckOpen("AddArray");
        if (count > 0 && values == nullptr)
            RTE_THROW_MSG(RTE::VerificationFailed, "AttributeWriter: array '" << name << "' of " << count
                                                                             << " elements without values");
        if (count > (kMaxRecordBytes - kRecordFrameBytes) / sizeof(T))
            RTE_THROW_MSG(RTE::VerificationFailed, "AttributeWriter: array '" << name << "' of " << count
                                                                             << " elements is too large");
        ByteWriter out = Begin(kind, name.toUtf8(), 4 + std::uint64_t(count) * sizeof(T));
        out.U32(static_cast<std::uint32_t>(count));
        for (std::size_t i = 0; i < count; ++i) {
            Bits bits;
            std::memcpy(&bits, &values[i], sizeof(T));
            if constexpr (sizeof(T) == 2)
                out.U16(bits);
            else if constexpr (sizeof(T) == 4)
                out.U32(bits);
            else
                out.U64(bits);
        }
    }
};

AttributeWriter::AttributeWriter() : m_state(std::make_unique<State>()) {}

AttributeWriter::~AttributeWriter() = default; // the stream writer closes its files

void AttributeWriter::Open(const QString& destination)
{
    if (m_state->stream.IsOpen() || m_state->closed)
        RTE_THROW_MSG(RTE::VerificationFailed, "AttributeWriter: a second Open, at '" << destination << "'");
    m_state->stream.Open(destination);
    m_state->stream.WriteHead({});
}

void AttributeWriter::Add(const QString& name, const QString& value)
{
    m_state->CheckOpen("Add");
    const QByteArray text = value.toUtf8();
    ByteWriter out = m_state->Begin(Private::Attributes::Text, name.toUtf8(), 4 + std::uint64_t(text.size()));
    out.Str(text);
}

void AttributeWriter::AddArray(const QString& name, std::size_t count, const double* values)
{
    m_state->AddArray<std::uint64_t>(Private::Attributes::Double, name, count, values);
}

void AttributeWriter::AddArray(const QString& name, std::size_t count, const float* values)
{
    m_state->AddArray<std::uint32_t>(Private::Attributes::Float, name, count, values);
}

void AttributeWriter::AddArray(const QString& name, std::size_t count, const int* values)
{
    m_state->AddArray<std::uint32_t>(Private::Attributes::Int32, name, count, values);
}

void AttributeWriter::AddArray(const QString& name, std::size_t count, const unsigned short* values)
{
    m_state->AddArray<std::uint16_t>(Private::Attributes::Word, name, count, values);
}

void AttributeWriter::NextImage()
{
    m_state->CheckOpen("NextImage");
    if (m_state->current.empty())
        m_state->current.resize(4);
    ByteWriter(m_state->current).PatchU32(0, m_state->attributes);
    // The record is complete in memory before it goes to the stream: a failed write leaves no half
    // of it behind for the next image.
    std::vector<std::uint8_t> payload;
    payload.swap(m_state->current);
    m_state->attributes = 0;
    m_state->stream.AppendRecord(payload);
}

std::uint32_t AttributeWriter::GetImageCount() const
{
    return m_state->stream.RecordCount();
}

void AttributeWriter::SetRecordsPerBatch(unsigned records)
{
    m_state->stream.SetRecordsPerBatch(records);
}

void AttributeWriter::Flush()
{
    m_state->CheckOpen("Flush");
    m_state->stream.Flush();
}

void AttributeWriter::Close()
{
    if (!m_state->stream.IsOpen())
        return;
    m_state->closed = true;
    m_state->current.clear();
    m_state->attributes = 0;
    m_state->stream.Close();
}

QString AttributeWriter::GetCorrespondingReaderName() const
{
    return QStringLiteral("AttributeReaderV1");
}

QString AttributeWriter::GetCorrespondingReaderType() const
{
    return QStringLiteral("Core.Set.Recording.AttributeReader");
}

QString AttributeWriter::GetFormatDescription() const
{
    return QString::fromLatin1(Private::Attributes::FormatDescription);
}

} // namespace SetApi
