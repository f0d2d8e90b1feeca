#include "Commands.h"
#include "SetArguments.h"

#include <SetApi/factory/C_SetFactory.h>

#include <RTE/Exception.h>

#include <iostream>

namespace SetApiTool {

int RunRemove(const std::string& path)
{
    const std::string name = SetNameOf(path);
    RequireSet(path, name);
    std::string error;
    if (!SetApi::C_SetFactory::Instance().Remove(name, error))
        RTE_THROW_MSG(RTE::Exception, "could not remove '" << path << "': " << (error.empty() ? "no such set" : error));
    std::cout << "removed " << path << '\n';
    return 0;
}

} // namespace SetApiTool
