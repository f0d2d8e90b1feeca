#pragma once
// Prints what a set's buffers look like, from the buffer files' heads alone (no pixels are read).

#include <SetApi/set/I_Set.h>

#include <ostream>
#include <string>

namespace SetApiTool {

// The buffer count and index range, then the structure of the first buffer: frame count, size,
// element type, kind and mask; per frame (for sets whose buffers are files) its name, size, type,
// components and scales; and the attributes of the buffer and of each frame. A set without buffers
// says so. A first buffer that cannot be read is reported in the output, with the reason.
void PrintBuffers(std::ostream& out, const SetApi::I_Set& set, const std::string& indent = std::string());

} // namespace SetApiTool
