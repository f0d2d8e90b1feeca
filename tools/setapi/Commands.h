#pragma once
// The sub-commands of the setapi tool. Each returns the process exit code and reports failures by
// throwing; main turns an exception into one line on standard error and exit code 1.

#include <string>

namespace SetApiTool {

// Creates a small project of sets under the folder through the factory, reopens it and prints it.
int RunDemo(const std::string& folder);
// Prints what the set at the path is: name, title, type, size and its set file's parameters.
int RunInfo(const std::string& path);

} // namespace SetApiTool
