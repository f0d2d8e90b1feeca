#pragma once
// Writes the trace stream of a recording: the analogue traces recorded beside the images, read
// back by C_TraceReader. Each trace has a name and two scales (x: time or angle, y: value), fixed
// before the first image; per image the stream holds, for every trace, the samples that belong
// to that image as raw (x, y) pairs, which the scales turn into physical values. The files are
// "<destination>.trc" (head and records) and "<destination>.index.trc" (one entry per image); the
// layout is in docs/formats/trace-stream.md. Every record carries its image index, its length and
// a checksum, so that a record cut short by a crash is recognised and not counted.
//
// Order of calls: AddTrace for every trace (before or after Open, but before the first image);
// Open; AppendImage once per image; Close (or the destructor). One thread at a time.

#include <StreamIO/I_RecordingWriter.h>

#include <RTE/Scale.h>

#include <QString>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace SetApi {

class STREAMIO_API C_TraceWriter : public I_RecordingWriter {
public:
    // One trace's samples of one image: raw (x, y) pairs in order.
    using Samples = std::vector<std::pair<double, double>>;

    explicit C_TraceWriter(const QString& destination = QString());
    ~C_TraceWriter() override;

    C_TraceWriter(const C_TraceWriter&) = delete;
    C_TraceWriter& operator=(const C_TraceWriter&) = delete;

    // RTE::VerificationFailed once the writer is open.
    void SetDestination(const QString& destination) override;
    QString GetDestination() const;

    // Creates the stream's files at the destination (folder + "/" + prefix), replacing an existing
    // stream there; an empty text means the destination given before. RTE::VerificationFailed
    // without a destination or for a second Open, RTE::FileWriteError when a file cannot be
    // created.
    void Open(const QString& destination = QString());

    // Adds a trace and returns its number (0, 1, ...). RTE::VerificationFailed after the first
    // image.
    unsigned AddTrace(const QString& name, const RTE::S_Scale& x, const RTE::S_Scale& y);
    unsigned GetTraceCount() const;

    // Appends the samples of one image: one list per trace, in the order of AddTrace.
    // RTE::VerificationFailed before Open or for another number of lists than traces;
    // RTE::FileWriteError when the write fails, after which the stream keeps the images before
    // and refuses further ones.
    void AppendImage(const std::vector<Samples>& samplesPerTrace);
    std::uint32_t GetImageCount() const;

    // Records per batch, at least 1 (the default: every image is written at once).
    void SetRecordsPerBatch(unsigned records);
    void Flush();
    // Writes what is collected (the head too, for a stream without images) and closes the files;
    // further calls do nothing. RTE::FileWriteError when this fails.
    void Close();

    // "Core.Set.Recording.TraceReader", "TraceReaderV1" and the format description.
    QString GetCorrespondingReaderType() const override;
    QString GetCorrespondingReaderName() const override;
    QString GetFormatDescription() const override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace SetApi
