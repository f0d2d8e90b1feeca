#pragma once
// The sub-commands of the setapi tool. Each returns the process exit code and reports failures by
// throwing; main turns an exception into one line on standard error and exit code 1.

#include <string>

namespace SetApiTool {

// Creates a small project of sets under the folder through the factory, stores synthetic camera
// buffers into one of its image sets, reads them back through a freshly opened set and checks them
// bit for bit (a difference raises), then reopens the project and prints it.
int RunDemo(const std::string& folder);
// Prints what the set at the path is: name, title, type, size and its set file's parameters, then
// the buffer count, index range and the structure of the first buffer.
int RunInfo(const std::string& path);
// Writes plane 0 of frame `frame` of buffer `index` as a picture, PNG or TIFF by the extension of
// `picturePath` (see WritePicture). No set, no such buffer or frame, an unknown extension or an
// unwritable file raise, and leave no file behind.
int RunExport(const std::string& setPath, unsigned index, const std::string& picturePath, unsigned frame);

} // namespace SetApiTool
