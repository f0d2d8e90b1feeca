#include "Commands.h"
#include "SetArguments.h"

#include <SetApi/factory/C_SetFactory.h>

#include <RTE/Exception.h>

#include <iostream>

namespace SetApiTool {

int RunMove(const std::string& from, const std::string& to)
{
    SetApi::C_SetFactory& factory = SetApi::C_SetFactory::Instance();
    const std::string source = SetNameOf(from);
    const std::string target = SetNameOf(to);
    RequireSet(from, source);
    RequireDistinctSets("move", from, source, to, target);
    RequireParentFolder(to, target);
    // The factory would replace the target; a data set is not thrown away by a move.
    if (factory.Exists(target))
        RTE_THROW_MSG(RTE::Exception, "cannot move '" << from << "' to '" << to << "': a set of that name exists");
    if (!factory.Move(source, target))
        RTE_THROW_MSG(RTE::Exception, "could not move '" << from << "' to '" << to << "'");
    std::cout << "moved " << from << " to " << to << '\n';
    return 0;
}

} // namespace SetApiTool
