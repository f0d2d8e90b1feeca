#pragma once
// The writers of one recording, as BufferStreamWriter keeps them: each wraps one stream component,
// registers with the stream set's configuration as an I_RecordingWriter (which gives it its
// destination) and is then opened and fed image by image.
//
// The image, mask and scalar field writers share ImageStreamRecordingWriter, which opens the
// component at the destination with direct I/O and without pixel checksums, and forwards the
// appends. Their destructors close nothing themselves: each component completes its stream in its
// own destructor. The attribute writer opens its stream lazily with the first record and closes it
// in its destructor.

#include <SetApi/stream/MaskWriter.h>
#include <SetApi/stream/ScalarFieldWriter.h>

#include <StreamIO/AttributeWriter.h>
#include <StreamIO/I_RecordingWriter.h>
#include <StreamIO/ImageWriter.h>
#include <StreamIO/ScaleWriter.h>

#include <RTE/Scale.h>

#include <QString>

#include <utility>
#include <vector>

namespace BufferApi {
class AttributeStore;
}
namespace DataObjects {
class C_AttributesContainer;
}

namespace SetApi {
namespace Private {

// A writer of an image stream (pixels, masks or a scalar field).
class ImageStreamRecordingWriter : public I_RecordingWriter {
public:
    // Opens the stream at the destination the configuration gave.
    virtual void Open() = 0;
    // One image: depth 1, or one pointer per plane.
    virtual void AppendFramesOfOneImage(const void* data) = 0;
    virtual void AppendPlanesOfOneImage(const std::vector<const void*>& planes) = 0;
};

// The common body over the component type. The reader's key, name and format are asked of the
// component's own type: those of MaskWriter and ScalarFieldWriter hide the image stream's.
template <class Component>
class ImageStreamRecordingWriterOf : public ImageStreamRecordingWriter {
public:
    template <class... Arguments>
    explicit ImageStreamRecordingWriterOf(Arguments&&... arguments) : m_component(std::forward<Arguments>(arguments)...)
    {
    }

    void SetDestination(const QString& destination) override { m_destination = destination; }
    QString GetCorrespondingReaderType() const override { return m_component.GetCorrespondingReaderType(); }
    QString GetCorrespondingReaderName() const override { return m_component.GetCorrespondingReaderName(); }
    QString GetFormatDescription() const override { return m_component.GetFormatDescription(); }

    void Open() override
    {
        // Recordings go past the page cache where the file system allows it; the component falls
        // back to buffered writes elsewhere. Their planes carry no pixel checksums: hashing every
        // pixel would cost nearly a second copy of the image ahead of each write. Torn or missing
        // records are still found by their record headers and the file size, and compressed
        // planes keep the checksums of their packed chunks.
        m_component.SetDirectIo(true);
        m_component.SetPixelChecksums(false);
        m_component.Open(m_destination);
    }
    void AppendFramesOfOneImage(const void* data) override { m_component.AppendFramesOfOneImage(data); }
    void AppendPlanesOfOneImage(const std::vector<const void*>& planes) override
    {
        m_component.AppendPlanesOfOneImage(planes);
    }

    const QString& GetDestination() const { return m_destination; }

private:
    Component m_component;
    QString m_destination;
};

class GeneralImageWriter : public ImageStreamRecordingWriterOf<C_ImageWriter> {
public:
    GeneralImageWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage,
                       C_ImageWriter::E_BitsPerPixel bits, const QString& compression);
    ~GeneralImageWriter() override;
};

class MaskWriter : public ImageStreamRecordingWriterOf<SetApi::MaskWriter> {
public:
    MaskWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage);
    ~MaskWriter() override;
};

class ScalarFieldWriter : public ImageStreamRecordingWriterOf<SetApi::ScalarFieldWriter> {
public:
    ScalarFieldWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage,
                      C_ImageWriter::E_BitsPerPixel bits, const QString& name, const RTE::S_Scale& intensityScale);
    ~ScalarFieldWriter() override;
};

// The scale file of one frame; its destination goes straight to the component.
class ScaleRecordingWriter : public I_RecordingWriter {
public:
    ScaleRecordingWriter();
    ~ScaleRecordingWriter() override;

    void SetDestination(const QString& destination) override;
    QString GetCorrespondingReaderType() const override;
    QString GetCorrespondingReaderName() const override;
    QString GetFormatDescription() const override;

    // One record valid for every image of the recording.
    void WriteScalesForAllImages(const RTE::S_Scale& x, const RTE::S_Scale& y, const RTE::S_Scale& intensity);

private:
    C_ScaleWriter m_writer;
};

// The attribute stream of one frame or of the buffer's global attributes: one record per image.
class AttributeRecordingWriter : public I_RecordingWriter {
public:
    // Each image's record is written when the image is stored: an image whose Store has returned
    // is complete on disk with its attributes, so a recording killed later keeps them, and the
    // reader's probe of the last image (frame attributes written last) stays true. A record is a
    // few hundred bytes next to megabytes of pixels; batching would save nothing worth that.
    static constexpr unsigned RecordsPerBatch = 1;

    AttributeRecordingWriter();
    // Closes the stream, writing the records not yet written. A failure is logged, not raised.
    ~AttributeRecordingWriter() override;

    void SetDestination(const QString& destination) override;
    QString GetCorrespondingReaderType() const override;
    QString GetCorrespondingReaderName() const override;
    QString GetFormatDescription() const override;

    // Writes the record of one image: texts, and arrays of word, 32-bit int, float and double
    // elements; attributes of any other kind are skipped. Also an empty store gives a record, so
    // that the stream has one record per image. The stream is opened with the first record.
    void WriteImage(const BufferApi::AttributeStore& attributes);
    void WriteImage(const DataObjects::C_AttributesContainer& attributes);

private:
    void OpenIfNeeded();

    AttributeWriter m_writer;
    QString m_destination;
    bool m_notOpened = true;
};

} // namespace Private
} // namespace SetApi
