#pragma once
// Sets whose set file is there but that do not open, told in words where the reason is known.

#include <string>

namespace SetApiTool {

// What the set of that prepared name (without ".set") is when the factory cannot open it, or an
// empty text when the tool cannot tell. A recording that ended before its first image (killed, or
// a camera that never delivered) has its set file and folder but no "ReaderConfiguration.xml": it
// is "a recording without images".
std::string DescribeUnopenedSet(const std::string& name);

} // namespace SetApiTool
