#pragma once
// A writer of one stream of a recording, as the stream set's configuration sees it: where it
// writes and which reader reads it back.

#include <StreamIO/Export.h>

#include <QString>

namespace SetApi {

class STREAMIO_API I_RecordingWriter {
public:
    virtual ~I_RecordingWriter();
    // The destination: the set's folder, "/", and the stream's file prefix.
    virtual void SetDestination(const QString& destination) = 0;
    // The plug-in key and name of the reader, and a description of the format.
    virtual QString GetCorrespondingReaderType() const = 0;
    virtual QString GetCorrespondingReaderName() const = 0;
    virtual QString GetFormatDescription() const = 0;
};

} // namespace SetApi
