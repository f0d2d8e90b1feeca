#pragma once
// Writes the mask stream of one frame: an image stream of one byte per element (0 or 1, "bool"),
// never compressed, read back by MaskReader ("Core.Set.Recording.MaskFrameReader", "Masks").
// Everything else (files, framing, order of calls) is that of C_ImageWriter.

#include <SetApi/Export.h>

#include <StreamIO/ImageWriter.h>

namespace SetApi {

class SETAPI_API MaskWriter : public C_ImageWriter {
public:
    MaskWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage = 1);
    ~MaskWriter() override;

    // The mask reader's key and name, and the mask format. They hide the image stream's answers,
    // which are not virtual: ask the MaskWriter itself, not a C_ImageWriter reference to it.
    QString GetCorrespondingReaderType() const;
    QString GetCorrespondingReaderName() const;
    QString GetFormatDescription() const;
};

} // namespace SetApi
