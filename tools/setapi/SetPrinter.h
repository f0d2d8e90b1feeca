#pragma once
// Prints a set as the tool shows it.

#include <SetApi/set/I_Set.h>

#include <ostream>

namespace SetApiTool {

// Name, title, type identifier and display name, size and index range, source set, and every
// parameter of the set file in file order, one per line, each prefixed by `indent`.
void PrintSet(std::ostream& out, const SetApi::I_Set& set, const std::string& indent = std::string());

} // namespace SetApiTool
