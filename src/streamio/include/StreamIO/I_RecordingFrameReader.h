#pragma once
// The reader of one frame stream of a recording: the least a stream set needs of a frame reader,
// which is word data of depth 1. Readers keep file positions, so one object is used by one thread
// at a time. Image indices start at 0.

#include <StreamIO/Export.h>

#include <RTE/Plugin.h>

#include <QString>

#include <cstdint>

namespace SetApi {

class STREAMIO_API I_RecordingFrameReader : public RTE::I_Plugin {
public:
    ~I_RecordingFrameReader() override;

    // Opens the stream at the destination (folder + "/" + file prefix). Raises RTE::Exception
    // when the stream cannot be read at all; a stream whose end is damaged opens, counts only
    // its complete images and answers false to IsDataConsistent.
    virtual void Open(const QString& destination) = 0;
    virtual std::uint32_t GetFrameWidth() const = 0;
    virtual std::uint32_t GetFrameHeight() const = 0;
    virtual std::uint32_t GetFramesPerImageCount() const = 0;
    // The number of complete images, from which every read succeeds unless the data was damaged
    // after it was written.
    virtual std::uint32_t GetImageCount() const = 0;
    // Reads frame `frame` of image `image` (every plane, one after the other, each width x height
    // elements packed) into target. Raises RTE::VerificationFailed for an index out of range and
    // RTE::Exception for a record that fails its checks; the target may then be partly written.
    virtual void LoadFrame(std::uint32_t image, std::uint32_t frame, std::uint16_t* target) = 0;
    // False when the stream ends in a partial or damaged record, or its parts disagree.
    virtual bool IsDataConsistent() const = 0;
};

} // namespace SetApi
