#include <StreamIO/ScaleWriter.h>

#include "scales/ScaleFile.h"

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <exception>
#include <vector>

namespace SetApi {

using Private::Scales::Record;

struct C_ScaleWriter::State {
    QString destination;
    std::unique_ptr<RTE::I_WritableFile> file;
    bool created = false;
    bool broken = false;
    bool closed = false;
    unsigned recordsPerBatch = 1;
    unsigned batchRecords = 0;
    std::vector<std::uint8_t> batch;

    std::string Path() const { return (destination + QStringLiteral(".scales")).toStdString(); }

    void CheckWritable() const
    {
        if (broken)
            RTE_THROW_MSG(RTE::FileWriteError, "Scale file '" << QString::fromStdString(Path())
                                                              << "' cannot be written after an earlier write failure");
        if (closed)
            RTE_THROW_MSG(RTE::VerificationFailed, "Scale file '" << QString::fromStdString(Path())
                                                                  << "' is written after Close");
        RTE_VERIFY(!destination.isEmpty(), "The stream has no destination");
    }

    void Write()
    {
        CheckWritable();
        try {
            if (!created) {
                // The file begins when its first record is written, so that a writer that never
                // writes leaves nothing behind.
                file = RTE::FileSystem::OpenForWriting(Path());
                created = true;
                const auto preamble =
                    Private::Records::EncodePreamble(Private::Scales::kMagic, Private::Records::NewStreamId(), 0);
                file->Append(preamble.data(), preamble.size());
            }
            if (!batch.empty())
                file->Append(batch.data(), batch.size());
        } catch (...) {
            broken = true;
            batch.clear();
            batchRecords = 0;
            throw;
        }
        batch.clear();
        batchRecords = 0;
    }
};

C_ScaleWriter::C_ScaleWriter(const QString& destination) : m_state(std::make_unique<State>())
{
    m_state->destination = destination;
}

C_ScaleWriter::~C_ScaleWriter()
{
    try {
        Close();
    } catch (const std::exception& e) {
        RTE::C_Logger("Set").error(std::string("Closing scale file ") + m_state->Path() + " failed: " + e.what());
    }
}

void C_ScaleWriter::SetDestination(const QString& destination)
{
    if (m_state->created)
        RTE_THROW_MSG(RTE::VerificationFailed, "Scale file '" << QString::fromStdString(m_state->Path())
                                                              << "' already exists; its destination cannot change");
    m_state->destination = destination;
}

QString C_ScaleWriter::GetDestination() const
{
    return m_state->destination;
}

void C_ScaleWriter::WriteScalesForAllImages(const RTE::S_Scale& x, const RTE::S_Scale& y,
                                            const RTE::S_Scale& intensity)
{
    AddScalesForImages(0, NoEnd, x, y, intensity);
    Flush();
}

void C_ScaleWriter::AddScalesForImages(std::uint32_t first, std::uint32_t last, const RTE::S_Scale& x,
                                       const RTE::S_Scale& y, const RTE::S_Scale& intensity)
{
    m_state->CheckWritable();
    if (last < first)
        RTE_THROW_MSG(RTE::VerificationFailed, "Scale file '" << QString::fromStdString(m_state->Path())
                                                              << "': a record for images " << first << " to "
                                                              << last);
    std::vector<std::uint8_t> record;
    Private::Scales::EncodeRecord(Record{first, last, x, y, intensity}, record);
    if (record.size() > Private::Scales::kMaxRecordBytes)
        RTE_THROW_MSG(RTE::VerificationFailed, "Scale file '" << QString::fromStdString(m_state->Path())
                                                              << "': a record of " << record.size()
                                                              << " bytes exceeds the limit");
    m_state->batch.insert(m_state->batch.end(), record.begin(), record.end());
    if (++m_state->batchRecords >= m_state->recordsPerBatch)
        m_state->Write();
}

void C_ScaleWriter::SetRecordsPerBatch(unsigned records)
{
    m_state->recordsPerBatch = records == 0 ? 1 : records;
}

void C_ScaleWriter::Flush()
{
    if (m_state->batchRecords > 0 || m_state->broken)
        m_state->Write();
}

void C_ScaleWriter::Close()
{
    if (m_state->closed)
        return;
    std::exception_ptr failure;
    if (!m_state->broken && m_state->batchRecords > 0) {
        try {
            m_state->Write();
        } catch (...) {
            failure = std::current_exception();
        }
    }
    m_state->closed = true;
    if (m_state->file) {
        try {
            m_state->file->Close();
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
        m_state->file.reset();
    }
    if (failure)
        std::rethrow_exception(failure);
}

QString C_ScaleWriter::GetCorrespondingReaderType() const
{
    return QStringLiteral("Core.Set.Recording.ScaleReader");
}

QString C_ScaleWriter::GetCorrespondingReaderName() const
{
    return QStringLiteral("ScaleReaderV1");
}

QString C_ScaleWriter::GetFormatDescription() const
{
    return QString::fromLatin1(Private::Scales::FormatDescription);
}

} // namespace SetApi
