#pragma once
// The engine of a recording: appends each image's frames, masks, scalar fields and attribute
// records to their streams, synchronously, in the calling thread (the frames of one image in
// parallel, since each frame has its own files).
//
// The first image decides the recording's shape: it creates the writers, registers them in the
// stream set's configuration, saves "ReaderConfiguration.xml" and writes the scales, all before
// the first byte of image data. Every later image must have exactly that shape; a deviation raises
// RTE::VerificationFailed and that image is not stored. What was stored before stays in the
// streams. The streams are complete when the writer is destroyed.

#include <SetApi/Export.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/StreamSetConfiguration.h>

#include <BufferApi/PackType.h>

#include <QString>

#include <memory>
#include <vector>

namespace BufferApi {
class I_Buffer;
}
namespace DataObjects {
class ImageBufferVariant;
class ImageDataVariant;
} // namespace DataObjects

namespace SetApi {

class I_RecordingWriter;

namespace Private {
class BufferStreamFormatGuard;
class FrameTeam;
} // namespace Private

class SETAPI_API BufferStreamWriter {
public:
    // Creates the folder `name` and the set file "<name>.set" of the given type (see
    // StreamSetConfiguration::CreateSet); frame streams bear the prefix "Frame".
    BufferStreamWriter(QString name, I_Set::E_SetType type, BufferApi::BufferPackType_t compression);
    // Destroys the writers, which completes every stream; saves nothing else.
    ~BufferStreamWriter();

    BufferStreamWriter(const BufferStreamWriter&) = delete;
    BufferStreamWriter& operator=(const BufferStreamWriter&) = delete;

    // Before the first image only; afterwards RTE::VerificationFailed "Can't change storage
    // parameters after storage of first image.".
    void SetCompressionType(BufferApi::BufferPackType_t compression);
    void EnableMaskStorage();
    void EnableScalarFieldsStorage();

    // Appends one image.
    void Store(const BufferApi::I_Buffer* buffer);
    void Store(std::shared_ptr<const BufferApi::I_Buffer> buffer);
    void Store(const DataObjects::ImageBufferVariant& buffer);

    QString GetName() const { return m_name; }

private:
    void InitializeWriters(const BufferApi::I_Buffer* buffer);
    void InitializeWriters(const DataObjects::ImageBufferVariant& buffer);
    static const void* GetRawPointerFromImageDataVariant(const DataObjects::ImageDataVariant& data);

    QString m_name;
    StreamSetConfiguration m_configuration;
    BufferApi::BufferPackType_t m_compression;
    bool m_maskStorage = false;
    bool m_scalarFieldStorage = false;
    std::unique_ptr<Private::BufferStreamFormatGuard> m_guard;
    std::vector<std::unique_ptr<I_RecordingWriter>> m_imageWriters;
    std::vector<std::unique_ptr<I_RecordingWriter>> m_maskWriters;
    std::vector<std::unique_ptr<I_RecordingWriter>> m_scalarFieldWriters;
    std::vector<std::unique_ptr<I_RecordingWriter>> m_scaleWriters;
    std::vector<std::unique_ptr<I_RecordingWriter>> m_attributeWriters;
    // The threads that append the frames of one image at once.
    std::unique_ptr<Private::FrameTeam> m_frameTeam;
};

} // namespace SetApi
