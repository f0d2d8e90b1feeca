#include "UnopenedSet.h"

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <RTE/FileSystem.h>

namespace SetApiTool {

std::string DescribeUnopenedSet(const std::string& name)
{
    SetApi::C_DataSetParameter parameters;
    if (!SetApi::C_SetUtilities::ReadSetGroupVariables(name + ".set", parameters))
        return std::string();
    std::string identifier;
    parameters.GetValue("SetIdentifier", identifier);
    // The configuration is written before the first byte of any image stream, so a recording
    // without it holds no image.
    if (identifier == "StreamSet" && !RTE::FileSystem::Exists(SetApi::GetStreamSetConfigurationName(name)))
        return "a recording without images (it ended before its first image was written)";
    return std::string();
}

} // namespace SetApiTool
