// setapi verify: every buffer of a set loaded, and each failure named.

#include "Commands.h"
#include "SetArguments.h"
#include "SetPrinter.h"
#include "UnopenedSet.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/StreamSet.h>

#include <BufferApi/I_Buffer.h>

#include <exception>

namespace SetApiTool {

int RunVerify(const std::string& path, std::ostream& out)
{
    const std::string name = SetNameOf(path);
    RequireSet(path, name);
    if (!SetApi::C_SetFactory::Instance().Open(name)->IsOpen()) {
        const std::string why = DescribeUnopenedSet(name);
        if (!why.empty()) {
            out << "'" << name << "' is " << why << "\nverified 0 buffers, 0 damaged\n";
            return 0;
        }
    }
    const std::shared_ptr<SetApi::I_Set> set = OpenExistingSet(path);
    unsigned damaged = 0;
    const unsigned size = set->GetSize();
    for (unsigned index = 0; index < size; ++index) {
        try {
            set->LoadBuffer(index);
        } catch (const std::exception& e) {
            ++damaged;
            out << "buffer " << index << ": " << e.what() << '\n';
        }
    }
    bool streamsDamaged = false;
    if (const std::shared_ptr<SetApi::Private::StreamSet> streamSet = SetApi::Private::CastToStreamSet(set)) {
        streamsDamaged = streamSet->IsCorrupt();
        out << "recording: " << DescribeState(*streamSet) << '\n';
    }
    out << "verified " << size << " buffers, " << damaged << " damaged\n";
    return damaged > 0 || streamsDamaged ? 1 : 0;
}

} // namespace SetApiTool
