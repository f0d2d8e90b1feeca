#pragma once
// What a recording component needs of a stream set's configuration: a place for one more stream.
// Components outside this library register their writers through this interface.

#include <SetApi/Export.h>

#include <StreamIO/ContentPurpose.h>
#include <StreamIO/I_RecordingWriter.h>

#include <QString>

namespace SetApi {

class SETAPI_API I_StreamSetConfigurationWriter {
public:
    virtual ~I_StreamSetConfigurationWriter();
    // Gives the writer its destination (the set's folder, "/" and a prefix unique in the folder),
    // notes the stream with the writer's reader and the purpose, and returns the prefix.
    virtual QString RegisterWriter(I_RecordingWriter& writer, const C_ContentPurpose& purpose) = 0;
};

} // namespace SetApi
