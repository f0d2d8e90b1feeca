// The reader plug-ins of stream sets, registered when the set library loads. One object in one
// unit makes the order fixed: image, scalar field and mask readers, then the attribute, scale and
// trace readers.

#include <SetApi/stream/MaskReader.h>
#include <SetApi/stream/ScalarFieldReader.h>

#include <RTE/Logger.h>
#include <StreamIO/AttributeReader.h>
#include <StreamIO/ImageReader.h>
#include <StreamIO/ScaleReader.h>
#include <StreamIO/TraceReader.h>

#include <exception>

namespace SetApi {
namespace {

// Loading the library must not fail on a registration: a refused one is logged, and the plug-in
// is then simply not found when a stream set asks for it.
void RegisterQuietly(void (*registerPlugin)(), const char* what)
{
    try {
        registerPlugin();
    } catch (const std::exception& e) {
        RTE::C_Logger("Set").error(std::string("Registering the ") + what + " failed: " + e.what());
    }
}

struct StreamReaderRegistration {
    StreamReaderRegistration()
    {
        RegisterQuietly(&C_ImageReader::pluginRegister, "image stream reader");
        RegisterQuietly(&C_ScalarFieldReader::pluginRegister, "scalar field reader");
        RegisterQuietly(&MaskReader::pluginRegister, "mask reader");
        RegisterQuietly(&Private::C_AttributeReader::pluginRegister, "attribute reader");
        RegisterQuietly(&C_ScaleReader::pluginRegister, "scale reader");
        RegisterQuietly(&C_TraceReader::pluginRegister, "trace reader");
    }
} const registration;

} // namespace
} // namespace SetApi
