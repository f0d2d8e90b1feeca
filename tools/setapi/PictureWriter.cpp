#include "PictureWriter.h"
#include "PngWriter.h"
#include "TiffWriter.h"

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <random>
#include <sstream>

namespace SetApiTool {

namespace {

std::string LowerExtension(const std::string& path)
{
    std::string extension = RTE::FileSystem::ExtractExtension(path, false);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

// A hidden name beside the target that no other export picks at the same time.
std::string TemporaryNameFor(const std::string& target)
{
    const std::size_t separator = target.find_last_of("/\\");
    const std::size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
    std::ostringstream name;
    name << target.substr(0, nameStart) << '.' << target.substr(nameStart) << '.' << std::hex << std::setw(8)
         << std::setfill('0') << std::random_device()() << ".part";
    return name.str();
}

// Removes the temporary file unless it has taken the target's place.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string path) : m_path(std::move(path)) {}
    ~TemporaryFile()
    {
        try {
            if (!m_released && RTE::FileSystem::Exists(m_path))
                RTE::FileSystem::RemoveFile(m_path);
        } catch (const std::exception&) {
            // A leftover hidden file is all that can remain.
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::string& path() const { return m_path; }
    void Release() { m_released = true; }

private:
    std::string m_path;
    bool m_released = false;
};

} // namespace

E_PictureFormat PictureFormatOf(const std::string& path)
{
    const std::string extension = LowerExtension(path);
    if (extension == ".png")
        return E_PictureFormat::Png;
    if (extension == ".tif" || extension == ".tiff")
        return E_PictureFormat::Tiff;
    RTE_THROW_MSG(RTE::Exception, "cannot tell the picture format of '" << path
                                      << "': the file name must end in .png, .tif or .tiff");
}

void WritePicture(const S_PlaneView& view, const std::string& path)
{
    const E_PictureFormat format = PictureFormatOf(path);
    const std::size_t separator = path.find_last_of("/\\");
    const std::string folder = separator == std::string::npos ? std::string(".")
                               : separator == 0             ? std::string("/")
                                                            : path.substr(0, separator);
    if (!RTE::FileSystem::IsDirectory(folder))
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write '" << path << "': there is no folder '" << folder << "'");
    if (RTE::FileSystem::IsDirectory(path))
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write '" << path << "': it is a folder");

    TemporaryFile temporary(TemporaryNameFor(path));
    try {
        // Creating the file first tells an unwritable folder by the target's name, before any work.
        RTE::FileSystem::OpenForWriting(temporary.path())->Close();
    } catch (const RTE::Exception& e) {
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write '" << path << "': " << e.message());
    }
    if (format == E_PictureFormat::Png)
        WritePng(view, temporary.path());
    else
        WriteTiff(view, temporary.path());
    try {
        RTE::FileSystem::ReplaceFile(temporary.path(), path);
    } catch (const RTE::Exception& e) {
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write '" << path << "': " << e.message());
    }
    temporary.Release();
}

} // namespace SetApiTool
