#pragma once
// Prints a set as the tool shows it.

#include <SetApi/set/I_Set.h>

#include <ostream>
#include <string>

namespace SetApi::Private {
class StreamSet;
}

namespace SetApiTool {

// Name, title, type identifier and display name, size and index range, source set, and every
// parameter of the set file in file order, one per line, each prefixed by `indent`.
void PrintSet(std::ostream& out, const SetApi::I_Set& set, const std::string& indent = std::string());

// What a recording holds: one line per stream of its configuration (file prefix, kind, the frames
// it feeds, and for a frame stream its image count), the number of images the set offers, and its
// state in words: "intact", or "corrupt: " and what is wrong; and the repair, if there was one.
void PrintStreamSet(std::ostream& out, const SetApi::Private::StreamSet& set,
                    const std::string& indent = std::string());

// The state of a recording in words, as PrintStreamSet shows it.
std::string DescribeCorruption(const SetApi::Private::StreamSet& set);
// The same, with "repaired (<what was dropped>)" for a repaired recording.
std::string DescribeState(const SetApi::Private::StreamSet& set);

} // namespace SetApiTool
