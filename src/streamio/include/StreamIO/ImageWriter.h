#pragma once
// Writes the image stream of one camera frame: one record per image, appended at the end of the
// stream's data file "<destination>.ims" and read back by C_ImageReader. The layout is in
// docs/formats/image-stream.md: raw records lie at computed offsets with their pixel data at
// 4 KiB-aligned positions, compressed ones ("Zlib", "IMX") are found through an index; every
// record carries its image index, its length and checksums (of the pixels too, unless switched
// off), so that a record cut short by a crash is recognised and not counted.
//
// Order of calls: construct; read the three getters for the stream set's configuration; Open;
// one Append per image; Close (or the destructor). Different writers may append from different
// threads at once; one writer is used by one thread at a time.

#include <StreamIO/Export.h>

#include <QString>

#include <memory>
#include <vector>

namespace SetApi {

class STREAMIO_API C_ImageWriter {
public:
    enum E_BitsPerPixel { Word = 1, Byte = 2, Float = 3, Double = 4, Mask = 5 };

    // `compression` is "" (none), "Zlib" or "IMX"; any other text raises RTE::VerificationFailed,
    // as do zero sizes. Masks are never compressed.
    C_ImageWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage, E_BitsPerPixel bits,
                  const QString& compression);
    virtual ~C_ImageWriter();

    C_ImageWriter(const C_ImageWriter&) = delete;
    C_ImageWriter& operator=(const C_ImageWriter&) = delete;

    // Creates the stream's files at the destination (folder + "/" + prefix); an existing stream
    // there is replaced. Raises RTE::FileWriteError when they cannot be created.
    virtual void Open(const QString& destination);
    // Before Open: write with direct I/O, past the page cache, where the file system allows it;
    // elsewhere buffered writes that start writeback as they go and drop the written pages. Off by
    // default. Either way, Close returns when the stream is durable on disk.
    void SetDirectIo(bool on);
    // Before Open: whether each plane carries an XXH3-64 of its stored bytes, which every load
    // checks. On by default. Off, no pixel is hashed (the hash costs nearly a memcpy of the
    // image), and the stream says so in its header: a reader then loads planes unchecked and
    // counts the records whose sound header lies wholly in the file. Torn and missing records are
    // still found (record header checksum, stream id, image index, file size); compressed planes
    // keep the checksums of their packed chunks; a flipped raw pixel goes unnoticed.
    void SetPixelChecksums(bool on);
    // Completes the stream: everything appended is in the files when Close returns. Further calls
    // do nothing. Raises RTE::FileWriteError when data could not be written.
    virtual void Close();

    // Appends one image, depth 1: framesPerImage frames of width x height elements, one after the
    // other. Raises RTE::VerificationFailed before Open or for depth above 1, RTE::FileWriteError
    // when the write fails; the stream then holds the images before this one, and every later
    // append raises RTE::FileWriteError too (nothing may follow a partial record).
    void AppendFramesOfOneImage(const void* data);
    // Appends one image of depth above 1 (or 1): one pointer per plane, frames one after the
    // other, planes in order within a frame.
    void AppendPlanesOfOneImage(const std::vector<const void*>& planes);

    // "Core.Set.Recording.FrameReader", the reader's name and the format description.
    QString GetCorrespondingReaderType() const;
    QString GetCorrespondingReaderName() const;
    QString GetFormatDescription() const;

    unsigned GetWidth() const;
    unsigned GetHeight() const;
    unsigned GetDepth() const;
    unsigned GetFramesPerImage() const;
    E_BitsPerPixel GetBitsPerPixel() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace SetApi
