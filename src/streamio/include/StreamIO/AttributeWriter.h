#pragma once
// Writes the attribute stream of a frame (or of a buffer's global attributes): one record of named
// attributes per image, read back by Private::C_AttributeReader. The stream's files are
// "<destination>.attr" (the records) and "<destination>.index.attr" (one fixed-size entry per
// image); the layout is in docs/formats/attribute-stream.md. Every record carries its image index,
// its length and a checksum, so a record cut short by a crash is recognised and not counted.
//
// Order of calls: Open; per image any number of Add and AddArray, then NextImage (also for an image
// without attributes: one record per image); Close (or the destructor). Attributes added after the
// last NextImage are dropped by Close. One thread at a time.
//
// Records are written in batches of SetRecordsPerBatch records (1 by default: each NextImage
// writes its record). A process that dies loses at most the records of the batch not yet written;
// readers then see the stream up to the last written batch.

#include <StreamIO/Export.h>

#include <RTE/AttributesSink.h>

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace SetApi {

class STREAMIO_API AttributeWriter : public RTE::I_AttributesSink {
public:
    AttributeWriter();
    ~AttributeWriter() override;

    AttributeWriter(const AttributeWriter&) = delete;
    AttributeWriter& operator=(const AttributeWriter&) = delete;

    // Creates the stream's files at the destination (folder + "/" + prefix), replacing an existing
    // stream there. RTE::VerificationFailed for an empty destination or a second Open,
    // RTE::FileWriteError when a file cannot be created.
    void Open(const QString& destination);

    // Collect attributes for the current image. Names and texts are kept as UTF-8; arrays are
    // copied. RTE::VerificationFailed before Open, after Close, for a null array with elements,
    // or for a record that would exceed 1 GiB.
    void Add(const QString& name, const QString& value) override;
    void AddArray(const QString& name, std::size_t count, const double* values) override;
    void AddArray(const QString& name, std::size_t count, const float* values) override;
    void AddArray(const QString& name, std::size_t count, const int* values) override;
    void AddArray(const QString& name, std::size_t count, const unsigned short* values) override;

    // Ends the record of the current image. RTE::FileWriteError when its batch cannot be written;
    // the stream then keeps the images before that batch and refuses further records.
    void NextImage();
    // The number of images ended so far.
    std::uint32_t GetImageCount() const;

    // Records per batch, at least 1. A batch is written when it holds this many records or 1 MiB.
    void SetRecordsPerBatch(unsigned records);
    // Writes the records collected so far.
    void Flush();
    // Writes what is collected and closes the files; further calls do nothing.
    // RTE::FileWriteError when the last batch or the closing fails.
    void Close();

    // "AttributeReaderV1", "Core.Set.Recording.AttributeReader" and the format description.
    QString GetCorrespondingReaderName() const;
    QString GetCorrespondingReaderType() const;
    QString GetFormatDescription() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace SetApi
