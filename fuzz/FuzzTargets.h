#pragma once
// The fuzz targets: one entry per reader, each a body that takes any input and seeds that the
// library's own writers make. docs/fuzzing.md lists what each one covers.

#include "FuzzSupport.h"

#include <string>
#include <vector>

namespace SetApiFuzz {

struct Target {
    const char* name;
    // Feeds the input to the reader; never throws.
    void (*run)(const std::uint8_t* data, std::size_t size);
    // Small valid inputs, written by the library's writers.
    std::vector<Bytes> (*seeds)();
};

const std::vector<Target>& AllTargets();
// The target of that name, or null.
const Target* FindTarget(const std::string& name);

// The bodies and seed makers, one pair per file under fuzz/targets/.
#define SETAPI_FUZZ_DECLARE(id)                                                                   \
    void Run##id(const std::uint8_t* data, std::size_t size);                                     \
    std::vector<Bytes> Seeds##id();
SETAPI_FUZZ_DECLARE(SetFile)
SETAPI_FUZZ_DECLARE(ParameterTree)
SETAPI_FUZZ_DECLARE(SettingsDocument)
SETAPI_FUZZ_DECLARE(BufferHead)
SETAPI_FUZZ_DECLARE(BufferAttributes)
SETAPI_FUZZ_DECLARE(PackedPlane)
SETAPI_FUZZ_DECLARE(BufferImport)
SETAPI_FUZZ_DECLARE(ImageStream)
SETAPI_FUZZ_DECLARE(MaskStream)
SETAPI_FUZZ_DECLARE(ScalarFieldStream)
SETAPI_FUZZ_DECLARE(AttributeStream)
SETAPI_FUZZ_DECLARE(ScaleStream)
SETAPI_FUZZ_DECLARE(TraceStream)
SETAPI_FUZZ_DECLARE(ReaderConfiguration)
SETAPI_FUZZ_DECLARE(StreamSet)
#undef SETAPI_FUZZ_DECLARE

} // namespace SetApiFuzz
