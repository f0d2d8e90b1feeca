#include <StreamIO/TraceWriter.h>

#include "records/RecordStreamWriter.h"
#include "traces/TraceRecord.h"

#include <RTE/Exception.h>

namespace SetApi {

using Private::Records::kMaxRecordBytes;
using Private::Records::kRecordFrameBytes;

struct C_TraceWriter::State {
    QString destination;
    Private::Records::RecordStreamWriter stream{Private::Traces::StreamFormat()};
    std::vector<Private::Traces::TraceInfo> traces;
    bool closed = false;
    std::vector<std::uint8_t> payload;

    void CheckOpen(const char* operation) const
    {
        if (!stream.IsOpen())
            RTE_THROW_MSG(RTE::VerificationFailed, "C_TraceWriter: " << operation
                                                                     << (closed ? " after Close" : " before Open"));
    }
    void WriteHeadOnce()
    {
        if (!stream.HasHead() && !stream.IsBroken())
            stream.WriteHead(Private::Traces::EncodeHead(traces));
    }
};

C_TraceWriter::C_TraceWriter(const QString& destination) : m_state(std::make_unique<State>())
{
    m_state->destination = destination;
}

C_TraceWriter::~C_TraceWriter()
{
    // A stream closed by its destructor still gets its head, so that it reads back with 0 images.
    try {
        Close();
    } catch (const std::exception&) {
        // Logged where it was raised.
    }
}

void C_TraceWriter::SetDestination(const QString& destination)
{
    RTE_VERIFY(!m_state->stream.IsOpen() && !m_state->closed, "C_TraceWriter: the destination is set before Open");
    m_state->destination = destination;
}

QString C_TraceWriter::GetDestination() const
{
    return m_state->destination;
}

void C_TraceWriter::Open(const QString& destination)
{
    if (m_state->stream.IsOpen() || m_state->closed)
        RTE_THROW_MSG(RTE::VerificationFailed, "C_TraceWriter: a second Open, at '" << destination << "'");
    if (!destination.isEmpty())
        m_state->destination = destination;
    m_state->stream.Open(m_state->destination);
}

unsigned C_TraceWriter::AddTrace(const QString& name, const RTE::S_Scale& x, const RTE::S_Scale& y)
{
    RTE_VERIFY(!m_state->stream.HasHead() && !m_state->closed,
               "C_TraceWriter: traces are added before the first image");
    m_state->traces.push_back(Private::Traces::TraceInfo{name, x, y});
    return static_cast<unsigned>(m_state->traces.size() - 1);
}

unsigned C_TraceWriter::GetTraceCount() const
{
    return static_cast<unsigned>(m_state->traces.size());
}

void C_TraceWriter::AppendImage(const std::vector<Samples>& samplesPerTrace)
{
    m_state->CheckOpen("AppendImage");
    if (samplesPerTrace.size() != m_state->traces.size())
        RTE_THROW_MSG(RTE::VerificationFailed, "C_TraceWriter: " << samplesPerTrace.size()
                                                                 << " sample lists for " << m_state->traces.size()
                                                                 << " traces");
    std::uint64_t bytes = 4;
    for (const Samples& samples : samplesPerTrace)
        bytes += 4 + std::uint64_t(samples.size()) * 16;
    if (bytes > kMaxRecordBytes - kRecordFrameBytes)
        RTE_THROW_MSG(RTE::VerificationFailed, "C_TraceWriter: the samples of image "
                                                   << GetImageCount() << " take " << bytes
                                                   << " bytes, more than a record may");
    m_state->WriteHeadOnce();
    m_state->payload.clear();
    Private::Traces::EncodeRecord(samplesPerTrace, m_state->payload);
    m_state->stream.AppendRecord(m_state->payload);
}

std::uint32_t C_TraceWriter::GetImageCount() const
{
    return m_state->stream.RecordCount();
}

void C_TraceWriter::SetRecordsPerBatch(unsigned records)
{
    m_state->stream.SetRecordsPerBatch(records);
}

void C_TraceWriter::Flush()
{
    m_state->CheckOpen("Flush");
    m_state->stream.Flush();
}

void C_TraceWriter::Close()
{
    if (!m_state->stream.IsOpen())
        return;
    m_state->closed = true;
    try {
        m_state->WriteHeadOnce();
    } catch (...) {
        try {
            m_state->stream.Close();
        } catch (...) {
        }
        throw;
    }
    m_state->stream.Close();
}

QString C_TraceWriter::GetCorrespondingReaderType() const
{
    return QStringLiteral("Core.Set.Recording.TraceReader");
}

QString C_TraceWriter::GetCorrespondingReaderName() const
{
    return QStringLiteral("TraceReaderV1");
}

QString C_TraceWriter::GetFormatDescription() const
{
    return QString::fromLatin1(Private::Traces::FormatDescription);
}

} // namespace SetApi
