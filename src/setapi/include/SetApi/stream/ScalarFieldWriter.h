#pragma once
// Writes the stream of one scalar field of one frame: a per-pixel quantity of word, float or
// double elements with a name and an intensity scale. The values go to an image stream at the
// destination (C_ImageWriter); the name and the scale, which an image stream cannot hold, go to
// the XML head file "<destination>-0.sfn":
//
//   <ScalarField>
//     <Name Name="<field name>"/>
//     <ScaleI .../>                 (Private::WriteScale)
//   </ScalarField>
//
// The stream is stored under the prefix the stream set's configuration gives it, never under the
// field's name. Read back by C_ScalarFieldReader ("Core.Set.Recording.ScalarFieldFrameReader",
// "ScalarField").

#include <SetApi/Export.h>

#include <RTE/Scale.h>
#include <StreamIO/ImageWriter.h>

#include <QString>

namespace SetApi {

class SETAPI_API ScalarFieldWriter : public C_ImageWriter {
public:
    // `bits` is Word, Float or Double; another value, or an empty name, raises
    // RTE::VerificationFailed ("Empty name of scalar field is not allowed" for the name).
    ScalarFieldWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage,
                      C_ImageWriter::E_BitsPerPixel bits, const QString& name, const RTE::S_Scale& intensityScale);
    ~ScalarFieldWriter() override;

    // The head file of the stream at `destination`: destination + "-0.sfn".
    static QString GetFilenameForScalarFieldName(const QString& destination);

    // Writes the head file, then opens the image stream. RTE::VerificationFailed "Opening file
    // '<path>' for writing failed: <reason>" when the head file cannot be created.
    void Open(const QString& destination) override;
    void Close() override;

    // The scalar field reader's key and name, and the scalar field format. They hide the image
    // stream's answers, which are not virtual: ask the ScalarFieldWriter itself.
    QString GetCorrespondingReaderType() const;
    QString GetCorrespondingReaderName() const;
    QString GetFormatDescription() const;

    QString GetName() const { return m_name; }
    RTE::S_Scale GetIntensityScale() const { return m_intensityScale; }

private:
    QString m_name;
    RTE::S_Scale m_intensityScale;
};

} // namespace SetApi
