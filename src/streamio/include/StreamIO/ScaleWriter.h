#pragma once
// Writes the scale file of a frame, "<destination>.scales": records of the x, y and intensity
// scales that hold for a range of images, read back by C_ScaleReader. A recording writes one
// record valid for all images (WriteScalesForAllImages); the file also takes records for single
// images or ranges, of which the last one written that holds an image decides its scales. The
// layout is in docs/formats/scale-stream.md; every record carries its range, its length and a
// checksum, so that one cut short by a crash is recognised and not counted.
//
// The file is created when the first record is written (an earlier one at the destination is
// replaced) and stays open for further records until Close or the destructor. One thread at a
// time.

#include <StreamIO/I_RecordingWriter.h>

#include <RTE/Scale.h>

#include <QString>

#include <cstdint>
#include <memory>

namespace SetApi {

class STREAMIO_API C_ScaleWriter : public I_RecordingWriter {
public:
    // The last image of a range that has no end: the record holds for every image from its first.
    static constexpr std::uint32_t NoEnd = 0xFFFFFFFFu;

    // The destination (folder + "/" + prefix) may be empty and given later through SetDestination.
    explicit C_ScaleWriter(const QString& destination = QString());
    ~C_ScaleWriter() override;

    C_ScaleWriter(const C_ScaleWriter&) = delete;
    C_ScaleWriter& operator=(const C_ScaleWriter&) = delete;

    // RTE::VerificationFailed once the file has been created.
    void SetDestination(const QString& destination) override;
    QString GetDestination() const;

    // Writes one record valid for all images and puts it in the file before it returns.
    // RTE::VerificationFailed without a destination, RTE::FileWriteError when the file cannot be
    // created or written.
    void WriteScalesForAllImages(const RTE::S_Scale& x, const RTE::S_Scale& y, const RTE::S_Scale& intensity);
    // Adds a record for the images first to last (both included; last may be NoEnd) to the batch,
    // which is written when it holds SetRecordsPerBatch records (1 by default), by Flush or by
    // Close. RTE::VerificationFailed when last is below first.
    void AddScalesForImages(std::uint32_t first, std::uint32_t last, const RTE::S_Scale& x, const RTE::S_Scale& y,
                            const RTE::S_Scale& intensity);
    void SetRecordsPerBatch(unsigned records);
    void Flush();
    // Writes the batch and closes the file; further calls do nothing. RTE::FileWriteError when
    // this fails. After a failed write every further write raises RTE::FileWriteError.
    void Close();

    // "Core.Set.Recording.ScaleReader", "ScaleReaderV1" and the format description.
    QString GetCorrespondingReaderType() const override;
    QString GetCorrespondingReaderName() const override;
    QString GetFormatDescription() const override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace SetApi
