#pragma once
// How the whole-set commands read set names from the command line and check them before they hand
// them to the factory, so that the usual mistakes get a message that says what is wrong.

#include <memory>
#include <string>

namespace SetApi {
class I_Set;
}

namespace SetApiTool {

// The set name of a command-line argument as an absolute, clean path: the argument may end in
// ".set" or in '/' (a set's folder names the set too), and '\' counts as '/'.
std::string SetNameOf(const std::string& argument);

// Raises unless a set of that name exists: "'<argument>' is no set: there is no file '<name>.set'".
void RequireSet(const std::string& argument, const std::string& name);

// The set of the argument, opened through the factory. Raises when there is no set file, and when
// the set does not open, saying why where the tool can tell (see DescribeUnopenedSet).
std::shared_ptr<SetApi::I_Set> OpenExistingSet(const std::string& argument);

// Raises unless the folder that is to hold the set `name` exists.
void RequireParentFolder(const std::string& argument, const std::string& name);

// Raises when `to` names the set `from`, or when one of the two lies inside the folder of the
// other: the operation `verb` would then copy a folder into itself, or replace the target and
// with it the source.
void RequireDistinctSets(const char* verb, const std::string& fromArgument, const std::string& from,
                         const std::string& toArgument, const std::string& to);

// Whether the set `inner` would lie inside the folder of the set `outer`, or be `outer` itself,
// after making both absolute and clean. Copying or moving a set into its own folder would copy
// that folder into itself without end.
bool LiesWithin(const std::string& inner, const std::string& outer);

} // namespace SetApiTool
