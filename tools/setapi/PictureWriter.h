#pragma once
// Writes one frame of a buffer as a picture file, PNG or TIFF by the file's extension.

#include "PlaneView.h"

#include <string>

namespace SetApiTool {

enum class E_PictureFormat { Png, Tiff };

// ".png" gives PNG, ".tif" and ".tiff" give TIFF, in any letter case. Any other extension raises
// RTE::Exception naming the path.
E_PictureFormat PictureFormatOf(const std::string& path);

// Writes the plane at `path` in the format of its extension (WritePng, WriteTiff). The file appears
// complete or not at all: it is written under a temporary name in the same folder and renamed over
// `path` at the end; on any failure the temporary file is removed and an earlier file at `path` is
// left as it was. Failures raise RTE::FileWriteError (RTE::Exception for an unknown extension).
void WritePicture(const S_PlaneView& view, const std::string& path);

} // namespace SetApiTool
