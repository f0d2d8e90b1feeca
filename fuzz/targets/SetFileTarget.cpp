// The set file line reader: C_SetUtilities::ReadSetGroupVariables on any file, then every value it
// stored read back and the store written out again.

#include "FuzzTargets.h"

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>

namespace SetApiFuzz {

using SetApi::C_DataSetParameter;
using SetApi::C_SetUtilities;

void RunSetFile(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const std::string path = scratch.Write("input.set", data, size);
    Guarded([&] {
        C_DataSetParameter parameters;
        if (!C_SetUtilities::ReadSetGroupVariables(path, parameters))
            Fail("a readable set file was refused");
        for (std::uint64_t i = 0; i < parameters.GetSize(); ++i) {
            const std::string name = parameters.GetName(i);
            std::string text;
            int integer = 0;
            double number = 0;
            parameters.GetValue(name, text);
            parameters.GetValue(name, integer);
            parameters.GetValue(name, number);
        }
        // What was read writes out and reads back to the same number of parameters.
        const std::string copy = scratch.Path("copy.set");
        if (!C_SetUtilities::WriteSettings(copy, parameters, std::string()))
            Fail("the set file copy cannot be written");
        C_DataSetParameter again;
        C_SetUtilities::ReadSetGroupVariables(copy, again);
        (void)again.GetSize();
    });
}

std::vector<Bytes> SeedsSetFile()
{
    Scratch scratch;
    std::vector<Bytes> seeds;
    C_DataSetParameter parameters;
    parameters.Add("SetIdentifier", std::string("StreamSet"));
    parameters.Add("SetComments", std::string("first \"good\" run;\t5 bar\r\n\\"));
    parameters.Add("SetFrameRate", 12.5);
    parameters.Add("SetCount", -17);
    const std::string path = scratch.Path("seed.set");
    C_SetUtilities::WriteSettings(path, parameters, std::string("#GROUP Trailer\nSetTrailer = 1;\n"));
    seeds.push_back(ReadFile(path));
    C_SetUtilities::WriteSettings(path, C_DataSetParameter(), std::string());
    seeds.push_back(ReadFile(path));
    return seeds;
}

} // namespace SetApiFuzz
