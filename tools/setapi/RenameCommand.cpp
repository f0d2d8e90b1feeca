#include "Commands.h"
#include "SetArguments.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/Exception.h>

#include <QFileInfo>

#include <iostream>

namespace SetApiTool {

int RunRename(const std::string& path, const std::string& newName)
{
    if (newName.find_first_of("/\\") != std::string::npos)
        RTE_THROW_MSG(RTE::Exception, "the new name '" << newName
                                                       << "' must be a bare name, without '/' or '\\': rename stays "
                                                          "within the set's folder (use mv to move a set)");
    const std::string bare = SetApi::C_SetUtilities::PrepareSetName(newName);
    if (bare.empty() || bare == "." || bare == "..")
        RTE_THROW_MSG(RTE::Exception, "'" << newName << "' is no name for a set");

    SetApi::C_SetFactory& factory = SetApi::C_SetFactory::Instance();
    const std::string name = SetNameOf(path);
    RequireSet(path, name);
    const QString parent = QFileInfo(QString::fromStdString(name)).path();
    const std::string newPath = parent.toStdString() + "/" + bare;
    if (factory.Exists(newPath))
        RTE_THROW_MSG(RTE::Exception, "cannot rename '" << path << "' to '" << newName << "': a set of that name exists");
    if (!factory.Rename(name, bare))
        RTE_THROW_MSG(RTE::Exception, "could not rename '" << path << "' to '" << newName << "'");
    std::cout << "renamed " << path << " to " << bare << '\n';
    return 0;
}

} // namespace SetApiTool
