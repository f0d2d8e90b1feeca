#include "PictureWriter.h"
#include "PngWriter.h"
#include "TiffWriter.h"

#include <RTE/Exception.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iomanip>
#include <random>
#include <sstream>
#include <system_error>

namespace SetApiTool {

namespace {

namespace fs = std::filesystem;

std::string LowerExtension(const std::string& path)
{
    std::string extension = fs::u8path(path).extension().u8string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

// A hidden name beside the target that no other export picks at the same time.
fs::path TemporaryNameFor(const fs::path& target)
{
    std::random_device device;
    std::ostringstream name;
    name << '.' << target.filename().u8string() << '.' << std::hex << std::setw(8) << std::setfill('0')
         << device() << ".part";
    return target.parent_path() / fs::u8path(name.str());
}

// Removes the temporary file unless the rename has taken it over.
class TemporaryFile {
public:
    explicit TemporaryFile(fs::path path) : m_path(std::move(path)) {}
    ~TemporaryFile()
    {
        if (!m_released) {
            std::error_code ignored;
            fs::remove(m_path, ignored);
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const fs::path& path() const { return m_path; }
    void Release() { m_released = true; }

private:
    fs::path m_path;
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
    const fs::path target = fs::u8path(path);
    fs::path folder = target.parent_path();
    if (folder.empty())
        folder = fs::path(".");
    std::error_code error;
    if (!fs::is_directory(folder, error))
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write '" << path << "': there is no folder '"
                                                              << folder.u8string() << "'");
    if (fs::is_directory(target, error))
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write '" << path << "': it is a folder");

    TemporaryFile temporary(TemporaryNameFor(target));
    const std::string temporaryName = temporary.path().u8string();
    // Creating the file first tells an unwritable folder by the target's name, before any work.
    std::FILE* probe = std::fopen(temporaryName.c_str(), "wb");
    if (!probe)
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write '" << path << "': " << std::strerror(errno));
    std::fclose(probe);

    if (format == E_PictureFormat::Png)
        WritePng(view, temporaryName);
    else
        WriteTiff(view, temporaryName);

    fs::rename(temporary.path(), target, error);
    if (error)
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write '" << path << "': " << error.message());
    temporary.Release();
}

} // namespace SetApiTool
