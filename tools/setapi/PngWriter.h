#pragma once
// Writes a plane as an 8-bit PNG file.

#include "PlaneView.h"

#include <string>

namespace SetApiTool {

// Colour planes become 8-bit RGB (masked-out pixels black); every other type becomes 8-bit grey,
// windowed linearly as WindowToGrey8 describes. Writes `path` directly: callers who want all or
// nothing write to a temporary name and rename. Raises RTE::FileWriteError naming the path.
void WritePng(const S_PlaneView& view, const std::string& path);

} // namespace SetApiTool
