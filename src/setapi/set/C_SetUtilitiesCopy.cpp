// Copying the content of a set folder, for the whole-set operations of the factory.

#include <SetApi/set/C_SetUtilities.h>

#include <SetApi/factory/C_CopyFiles.h>

namespace SetApi {

bool C_SetUtilities::CopyFiles(std::string source, std::string target, bool recursive)
{
    C_CopyFiles copier;
    copier.SetParameters(source, ".*", target, recursive, false);
    copier.Start();
    return copier.WaitUntilFinished();
}

} // namespace SetApi
