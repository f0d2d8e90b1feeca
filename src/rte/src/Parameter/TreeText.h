#pragma once
// Writing and reading the text form of a parameter tree (docs/formats/parameter-tree.md).

#include <RTE/Parameter/Category.h>

#include <iosfwd>
#include <unordered_map>

namespace RTE {
namespace Parameter {
namespace Private {

constexpr const char* kTreeMagic = "SetApiParameterTree";
constexpr int kTreeVersion = 1;
constexpr size_t kMaxLineLength = size_t(64) << 20;
constexpr size_t kMaxDepth = 256;

// Writes the children of `root` as the whole text form.
void WriteTreeText(std::ostream& out, const C_Category& root);

struct ParsedTree {
    boost::shared_ptr<C_Category> root;
    std::unordered_map<const C_Node*, unsigned> lineOf; // line each node was read from
};

// Reads a whole text form into a new root category; lists get no element factory.
// Raises RTE::Exception "<sourceName>:<line>: <what>".
ParsedTree ReadTreeText(std::istream& in, const QString& sourceName);

// Gives the lists of `parsed` the element factories of the lists at the same paths below `previous`
// and remakes their elements with them (see the format description).
void AdoptListFactories(ParsedTree& parsed, const C_Category& previous, const QString& sourceName);

} // namespace Private
} // namespace Parameter
} // namespace RTE
