// Out-of-line destructors: each interface's vtable lives in the library.
#include <StreamIO/I_AttributeReader.h>
#include <StreamIO/I_ImageFrameReader.h>
#include <StreamIO/I_RecordingFrameReader.h>
#include <StreamIO/I_RecordingWriter.h>
#include <StreamIO/I_ScalarFieldReader.h>
#include <StreamIO/I_ScaleReader.h>
#include <StreamIO/I_TraceReader.h>

namespace SetApi {

I_RecordingFrameReader::~I_RecordingFrameReader() = default;
I_ImageFrameReader::~I_ImageFrameReader() = default;
I_ScalarFieldReader::~I_ScalarFieldReader() = default;
I_ScaleReader::~I_ScaleReader() = default;
I_AttributeReader::~I_AttributeReader() = default;
I_TraceReader::~I_TraceReader() = default;
I_RecordingWriter::~I_RecordingWriter() = default;

} // namespace SetApi
