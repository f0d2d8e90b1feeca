#include "BufferPrinter.h"
#include "Commands.h"
#include "SetPrinter.h"
#include "UnopenedSet.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/StreamSet.h>

#include <RTE/Exception.h>

#include <iostream>

namespace SetApiTool {

int RunInfo(const std::string& path)
{
    SetApi::C_SetFactory& factory = SetApi::C_SetFactory::Instance();
    const std::string name = SetApi::C_SetUtilities::PrepareSetName(path);
    if (!factory.Exists(name))
        RTE_THROW_MSG(RTE::Exception, "'" << path << "' is no set: there is no file '" << name << ".set'");
    const std::shared_ptr<SetApi::I_Set> set = factory.Open(name);
    if (!set->IsOpen()) {
        const std::string why = DescribeUnopenedSet(name);
        if (!why.empty()) {
            std::cout << "Name: " << name << "\n" << why << "\n";
            return 0;
        }
        RTE_THROW_MSG(RTE::Exception, "'" << path << "' is no set that this library can open");
    }
    PrintSet(std::cout, *set);
    if (const std::shared_ptr<SetApi::Private::StreamSet> streamSet = SetApi::Private::CastToStreamSet(set))
        PrintStreamSet(std::cout, *streamSet);
    PrintBuffers(std::cout, *set);
    return 0;
}

} // namespace SetApiTool
