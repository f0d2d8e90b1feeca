#include "SetPrinter.h"

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/SetTypeIdentifiers.h>

#include <iomanip>

namespace SetApiTool {

namespace {

void PrintParameters(std::ostream& out, const std::string& setName, const std::string& indent)
{
    SetApi::C_DataSetParameter parameters;
    if (!SetApi::C_SetUtilities::ReadSetGroupVariables(setName + ".set", parameters)) {
        out << indent << "parameters: (no set file)\n";
        return;
    }
    out << indent << "parameters:\n";
    for (unsigned long long i = 0; i < parameters.GetSize(); ++i) {
        const std::string name = parameters.GetName(static_cast<unsigned>(i));
        out << indent << "  " << std::left << std::setw(16) << name << " = ";
        if (parameters.IsString(name)) {
            std::string value;
            parameters.GetValue(name, value);
            out << '"' << value << '"';
        } else if (parameters.IsDouble(name)) {
            double value = 0;
            parameters.GetValue(name, value);
            out << value;
        } else {
            int value = 0;
            parameters.GetValue(name, value);
            out << value;
        }
        out << '\n';
    }
}

} // namespace

void PrintSet(std::ostream& out, const SetApi::I_Set& set, const std::string& indent)
{
    unsigned count = 0, first = 0, last = 0;
    set.GetInfo(count, first, last);
    const unsigned type = set.GetSetType();
    out << indent << "name:       " << set.GetName() << '\n'
        << indent << "title:      " << set.GetTitle().toStdString() << '\n'
        << indent << "identifier: " << set.GetTypeIdentifier().toStdString() << '\n'
        << indent << "type:       " << SetApi::GetSetTypeDisplayName(type).toStdString() << " (0x" << std::hex
        << type << std::dec << ")\n"
        << indent << "size:       " << set.GetSize();
    if (count > 0)
        out << " (indices " << first << " to " << last << ")";
    out << '\n';
    const std::string source = set.GetSourceSet();
    if (!source.empty())
        out << indent << "source set: " << source << '\n';
    PrintParameters(out, set.GetName(), indent);
}

} // namespace SetApiTool
