// The libFuzzer entry of one target; SETAPI_FUZZ_TARGET names it (one program per target).

#include "FuzzTargets.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const SetApiFuzz::Target* const target = [] {
        const SetApiFuzz::Target* found = SetApiFuzz::FindTarget(SETAPI_FUZZ_TARGET);
        if (!found) {
            std::fprintf(stderr, "no fuzz target named %s\n", SETAPI_FUZZ_TARGET);
            std::abort();
        }
        return found;
    }();
    target->run(data, size);
    return 0;
}
