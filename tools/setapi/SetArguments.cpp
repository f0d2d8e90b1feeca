#include "SetArguments.h"
#include "UnopenedSet.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/set/C_SetUtilities.h>

#include <RTE/Exception.h>

#include <QDir>
#include <QFileInfo>

namespace SetApiTool {

namespace {

QString AbsoluteClean(const std::string& path)
{
    return QDir::cleanPath(QFileInfo(QString::fromStdString(path)).absoluteFilePath());
}

} // namespace

std::string SetNameOf(const std::string& argument)
{
    std::string name = SetApi::C_SetUtilities::PrepareSetName(argument);
    while (name.size() > 1 && name.back() == '/')
        name.pop_back();
    name = SetApi::C_SetUtilities::PrepareSetName(name);
    return name.empty() ? name : AbsoluteClean(name).toStdString();
}

void RequireSet(const std::string& argument, const std::string& name)
{
    if (!SetApi::C_SetFactory::Instance().Exists(name))
        RTE_THROW_MSG(RTE::Exception, "'" << argument << "' is no set: there is no file '" << name << ".set'");
}

void RequireParentFolder(const std::string& argument, const std::string& name)
{
    const QFileInfo target(AbsoluteClean(name));
    const QString parent = target.absolutePath();
    if (!QFileInfo(parent).isDir())
        RTE_THROW_MSG(RTE::Exception, "cannot make the set '" << argument << "': there is no folder '" << parent
                                                             << "'");
}

void RequireDistinctSets(const char* verb, const std::string& fromArgument, const std::string& from,
                         const std::string& toArgument, const std::string& to)
{
    const bool toInFrom = LiesWithin(to, from), fromInTo = LiesWithin(from, to);
    if (SetApi::C_SetFactory::Instance().Same(from, to) || (toInFrom && fromInTo))
        RTE_THROW_MSG(RTE::Exception, "cannot " << verb << " '" << fromArgument << "' to '" << toArgument
                                                << "': they are the same set");
    if (toInFrom || fromInTo)
        RTE_THROW_MSG(RTE::Exception, "cannot " << verb << " '" << fromArgument << "' to '" << toArgument
                                                << "': one set lies inside the folder of the other");
}

bool LiesWithin(const std::string& inner, const std::string& outer)
{
    const QString in = AbsoluteClean(inner);
    const QString out = AbsoluteClean(outer);
#ifdef _WIN32
    const Qt::CaseSensitivity sensitivity = Qt::CaseInsensitive;
#else
    const Qt::CaseSensitivity sensitivity = Qt::CaseSensitive;
#endif
    if (in.compare(out, sensitivity) == 0)
        return true;
    const QString folder = out.endsWith('/') ? out : out + '/';
    return in.startsWith(folder, sensitivity);
}

std::shared_ptr<SetApi::I_Set> OpenExistingSet(const std::string& argument)
{
    const std::string name = SetNameOf(argument);
    RequireSet(argument, name);
    std::shared_ptr<SetApi::I_Set> set = SetApi::C_SetFactory::Instance().Open(name);
    if (!set->IsOpen()) {
        const std::string why = DescribeUnopenedSet(name);
        if (!why.empty())
            RTE_THROW_MSG(RTE::Exception, "'" << argument << "' is " << why);
        RTE_THROW_MSG(RTE::Exception, "'" << argument << "' is no set that this library can open");
    }
    return set;
}

} // namespace SetApiTool
