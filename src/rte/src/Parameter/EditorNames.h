#pragma once
// Editor names read from text become editor constants: the pointer of the known constant for a
// known name, otherwise a copy kept for the life of the process.

#include <QString>

namespace RTE {
namespace Parameter {
namespace Private {

// The longest editor name accepted from text, and how many distinct unknown names are kept at most.
constexpr int kMaxEditorNameLength = 64;
constexpr size_t kMaxUnknownEditorNames = 1024;

// `kindDefault` is the default editor of the node's kind; it is returned when the name equals it,
// so that a node read back compares equal to the constant it was made with. Returns null for a
// name that is too long or holds a NUL character, or when too many unknown names were seen.
const char* InternEditor(const QString& name, const char* kindDefault);

} // namespace Private
} // namespace Parameter
} // namespace RTE
