#pragma once
// Writes a plane as a TIFF file that keeps the element type.

#include "PlaneView.h"

#include <string>

namespace SetApiTool {

// One grey-scale page of the plane's own type: byte, word and 32-bit unsigned as unsigned integers
// of 8, 16 and 32 bits, 32-bit int as signed, float and double as IEEE floating point of 32 and 64
// bits; colour planes as 8-bit RGB. Uncompressed, one strip per row group. The mask is not
// written: the values stay as they are. Writes `path` directly (see WritePng). Raises
// RTE::FileWriteError naming the path.
void WriteTiff(const S_PlaneView& view, const std::string& path);

} // namespace SetApiTool
