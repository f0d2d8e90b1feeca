#pragma once
// Turns the streams of a recording's folder back into buffers, one per image.
//
// The reader opens every stream listed in the folder's "ReaderConfiguration.xml" through the reader
// plug-ins and notes in CorruptionStates what could not be opened or read. A damaged recording is
// not a failure of opening: the reader keeps what it can, offers the images that every camera
// delivered, and leaves a repair to the caller. Only a configuration that cannot be used at all
// (unreadable, empty, naming a plug-in that does not exist) makes the constructor throw.
//
// Buffers are assembled on demand: frames, masks and scalar fields are read straight into the
// planes of the new buffer (frames of a camera smaller than the largest are widened in place),
// then scales, attributes and traces are added. LoadBuffer and GetAttributes serialise on one
// mutex, since the readers keep file positions; the other questions read what opening left.

#include <SetApi/Export.h>

#include <StreamIO/ContentPurpose.h>
#include <StreamIO/ReaderConfiguration.h>

#include <BufferApi/I_Buffer.h>
#include <DataObjects/BufferStructureInformation.h>
#include <DataObjects/GlobalAndFrameAttributes.h>

#include <QString>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace BufferApi {
class I_FrameImage;
}

namespace SetApi {

class I_RecordingFrameReader;
class I_ImageFrameReader;
class I_ScalarFieldReader;
class I_ScaleReader;
class I_AttributeReader;
class I_TraceReader;

namespace Private {

class SETAPI_API StreamSetReader {
public:
    // What opening found wrong, field by field; read by the repair.
    struct CorruptionStates {
        // Largest image count of any frame stream.
        std::uint32_t maxImageCount = 0;
        // The number of images the set offers.
        std::uint32_t minImageCount = 0;
        // Image count of each frame stream, in configuration order (0 for one that cannot be read).
        std::vector<std::uint32_t> imageCounts;
        bool globalAttributesCorrupt = false;
        // StartFrame of each frame attribute stream that failed.
        std::vector<std::uint32_t> corruptAttributeFrames;
        bool masksCorrupt = false;
        bool scalesCorrupt = false;
        bool tracesCorrupt = false;
        bool scalarFieldsCorrupt = false;
    };

    // How the streams are read. Direct I/O reads image data around the page cache, straight into
    // the planes of the loaded buffer, where the file system allows it.
    struct Options {
        bool directIo = false;
    };

    // Reads the configuration and opens the streams. An empty path, a configuration without
    // entries ("Reader count is zero.") and a plug-in that cannot be made ("Could not create ...
    // plugin: <Name>") raise RTE::VerificationFailed; the failures of reading the configuration
    // file pass through.
    explicit StreamSetReader(const QString& configurationPath);
    StreamSetReader(const QString& configurationPath, const Options& options);
    ~StreamSetReader();

    StreamSetReader(const StreamSetReader&) = delete;
    StreamSetReader& operator=(const StreamSetReader&) = delete;

    // The number of images every frame stream holds.
    std::uint32_t GetImageCount() const;

    // The buffer of the image: one frame per frame of the set, all of the largest frame size.
    // An image not below GetImageCount() raises RTE::VerificationFailed "Invalid image index";
    // damaged data raises the reader's RTE::Exception, and no buffer is left behind.
    std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned image) const;
    // The attributes and traces of the image, without reading image data.
    DataObjects::GlobalAndFrameAttributes GetAttributes(unsigned image) const;
    // Frame count, size and depth of every buffer. The data type is always word (7), also for a
    // float or double recording: the answer serves layout questions only.
    DataObjects::BufferStructureInformation GetBufferStructureInformation(unsigned image) const;

    // Whether the recording has analogue traces.
    bool HasFullTraces() const;
    // All traces of the recording, one float frame of height 2 each: row 0 the values, row 1 the
    // positions, as long as the longest trace.
    std::unique_ptr<BufferApi::I_Buffer> LoadFullTracesBuffer() const;

    bool IsCorrupt() const;
    const CorruptionStates& GetCorruptionStates() const;
    bool HasBeenRepaired() const;
    QString GetDetailsOfRepair() const;
    // Drops the streams that opening found damaged, with their files (a whole kind of stream at a
    // time, attribute streams one by one; image streams always stay), saves the configuration
    // marked as repaired with what was dropped, and opens again. The frame count then grows by the
    // frames of the kept streams until the set is opened anew. A configuration that cannot be
    // written raises RTE::FileWriteError; the files are gone by then. No lock: no other thread may
    // use the reader meanwhile.
    void Repair();

private:
    template <class Reader>
    struct Entry {
        std::shared_ptr<Reader> reader;
        C_ContentPurpose purpose;
    };

    void Open();
    void OpenFrameReader(const C_ReaderInfo& info, const QString& destination, bool firstEntry);
    void OpenMaskReader(const C_ReaderInfo& info, const QString& destination);
    void OpenScalarFieldReader(const C_ReaderInfo& info, const QString& destination);
    void OpenScaleReader(const C_ReaderInfo& info, const QString& destination);
    void OpenAttributeReader(const C_ReaderInfo& info, const QString& destination);
    void OpenTraceReader(const C_ReaderInfo& info, const QString& destination);
    void DropShortStreams();

    std::vector<BufferApi::I_FrameImage*> CreateEmptyFrames(BufferApi::I_Buffer& buffer) const;
    // Whether the frame readers write every element of every pixel plane of an image, so that
    // the planes of a loaded buffer need not be zero-filled first.
    bool PixelPlanesAreFullyWritten() const;
    void ReadFrames(unsigned image, const std::vector<BufferApi::I_FrameImage*>& frames) const;
    void ReadPlaneMask(I_ImageFrameReader& reader, unsigned image, unsigned plane, unsigned readerFrame,
                       BufferApi::I_FrameImage& frame) const;
    void ReadScales(unsigned image, BufferApi::I_Buffer& buffer) const;
    void ReadAttributes(unsigned image, BufferApi::I_Buffer& buffer) const;
    void ReadTraces(unsigned image, BufferApi::I_Buffer& buffer) const;
    void CheckImageIndex(unsigned image) const;

    QString m_configurationPath;
    C_ReaderConfiguration m_configuration;
    std::vector<Entry<I_RecordingFrameReader>> m_recordingFrameReaders;
    std::vector<Entry<I_ImageFrameReader>> m_imageFrameReaders;
    std::vector<Entry<I_ImageFrameReader>> m_maskReaders;
    std::vector<Entry<I_ScalarFieldReader>> m_scalarFieldReaders;
    std::vector<Entry<I_ScaleReader>> m_scaleReaders;
    std::vector<Entry<I_AttributeReader>> m_attributeReaders;
    std::vector<std::shared_ptr<I_TraceReader>> m_traceReaders;
    std::uint32_t m_frameCount = 0;
    std::uint32_t m_frameWidth = 0;
    std::uint32_t m_frameHeight = 0;
    std::uint32_t m_frameDepth = 0;
    std::uint32_t m_imageCount = 0;
    bool m_isWordData = false;
    bool m_isFloatData = false;
    bool m_isDoubleData = false;
    mutable std::mutex m_mutex;
    CorruptionStates m_corruptionStates;
    Options m_options;
};

} // namespace Private
} // namespace SetApi
