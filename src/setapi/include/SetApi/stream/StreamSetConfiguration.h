#pragma once
// What a recording talks to before its first byte: it makes the stream set's folder and set file,
// collects one C_ReaderInfo per stream as the writers register, handing each its destination, and
// writes "ReaderConfiguration.xml" on Save.
//
// Order of use: CreateSet (or CreateRecordingSet), SetFrameWriterContext, RegisterWriter for each
// stream, Save. Save may be repeated; it rewrites the whole file.

#include <SetApi/Export.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/I_StreamSetConfigurationWriter.h>

#include <StreamIO/ReaderConfiguration.h>
#include <StreamIO/WriterNameBuilder.h>

#include <QString>

#include <boost/shared_ptr.hpp>

#include <memory>

namespace RTE {
namespace Parameter {
class C_Tree;
}
} // namespace RTE

namespace SetApi {

class SETAPI_API StreamSetConfiguration : public I_StreamSetConfigurationWriter {
public:
    // The prefix of frame streams: 1 "Frame" from index 0, 2 "Mask" from 0, 3 "ScalarField" from
    // 0, any other value "Camera" from index 1.
    enum FrameWriterContext : int { Camera = 0, Frame = 1, Mask = 2, ScalarField = 3 };

    StreamSetConfiguration();
    ~StreamSetConfiguration() override;

    // Makes the folder `name` (an existing folder is an error) and the set file "<name>.set" with
    // the identifier "StreamSet", the type, the time of creation and the comment; the trailer ends
    // the set file. RTE::VerificationFailed "Set name is empty."; RTE::Exception "Could not create
    // folder: <name>" or "Could not create set file: <file>". A folder that was made stays.
    // A parameter tree asks for a hypersampled view of the recording, which this version cannot
    // make yet: it raises RTE::Exception after the folder is made.
    void CreateSet(const QString& name, I_Set::E_SetType type, const QString& comment, const QString& trailer,
                   boost::shared_ptr<RTE::Parameter::C_Tree> parameters);
    // CreateSet with the type SET_TYPE_RECORDING | SET_TYPE_IMAGE (0x1100).
    void CreateRecordingSet(const QString& name, const QString& comment, const QString& trailer,
                            boost::shared_ptr<RTE::Parameter::C_Tree> parameters);

    void SetFrameWriterContext(FrameWriterContext context);

    QString RegisterWriter(I_RecordingWriter& writer, const C_ContentPurpose& purpose) override;
    // The number of streams registered so far.
    unsigned GetWriterCount() const;

    // Writes "ReaderConfiguration.xml" into the folder. RTE::VerificationFailed "No writers
    // registered." before the first RegisterWriter.
    void Save();

    // The folder given to CreateSet.
    QString GetDestination() const { return m_destination; }

private:
    QString m_destination;
    Private::C_ReaderConfiguration m_configuration;
    Private::WriterNameBuilder m_names;
};

// A new, empty configuration.
SETAPI_API std::shared_ptr<StreamSetConfiguration> CreateRecordingSetConfiguration();

} // namespace SetApi
