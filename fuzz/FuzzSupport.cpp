#include "FuzzSupport.h"

#include <RTE/Logger.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <unistd.h>

namespace fs = std::filesystem;

namespace SetApiFuzz {

const char kFileSeparator[] = "#@SETAPI-NEXT-FILE@#";

namespace {

constexpr const char* kFolderStem = "setapi-fuzz-";

// Removes the scratch folders of processes that no longer run.
void RemoveStaleFolders(const fs::path& base)
{
    std::error_code error;
    for (fs::directory_iterator it(base, error), end; !error && it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (name.rfind(kFolderStem, 0) != 0)
            continue;
        const long pid = std::strtol(name.c_str() + std::strlen(kFolderStem), nullptr, 10);
        if (pid > 0 && ::kill(pid_t(pid), 0) != 0 && errno == ESRCH) {
            std::error_code ignored;
            fs::remove_all(it->path(), ignored);
        }
    }
}

struct ScratchHome {
    fs::path path;

    ScratchHome()
    {
        std::error_code error;
        fs::path base = "/dev/shm";
        if (!fs::is_directory(base, error) || ::access(base.c_str(), W_OK) != 0)
            base = fs::temp_directory_path();
        RemoveStaleFolders(base);
        path = base / (kFolderStem + std::to_string(::getpid()));
        fs::remove_all(path, error);
        fs::create_directories(path);
    }
    ~ScratchHome()
    {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
};

ScratchHome& Home()
{
    static ScratchHome home;
    return home;
}

void Empty(const fs::path& folder)
{
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        std::error_code ignored;
        fs::remove_all(it->path(), ignored);
    }
}

} // namespace

const std::string& ScratchFolder()
{
    static const std::string folder = Home().path.string();
    return folder;
}

Scratch::Scratch()
{
    QuietLogging();
    Empty(ScratchFolder());
}

Scratch::~Scratch() { Empty(ScratchFolder()); }

std::string Scratch::Path(const std::string& name) const { return ScratchFolder() + "/" + name; }

std::string Scratch::Write(const std::string& name, const std::uint8_t* data, std::size_t size) const
{
    const std::string path = Path(name);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (size != 0)
        out.write(reinterpret_cast<const char*>(data), std::streamsize(size));
    out.close();
    if (!out)
        Fail("the scratch file cannot be written");
    return path;
}

std::string Scratch::Folder(const std::string& name) const
{
    const std::string path = Path(name);
    fs::create_directories(path);
    return path;
}

std::vector<Part> Split(const std::uint8_t* data, std::size_t size, std::size_t count)
{
    std::vector<Part> parts(count);
    const std::size_t separatorBytes = std::strlen(kFileSeparator);
    std::size_t begin = 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t end = size;
        if (i + 1 < count && begin < size) {
            const void* found = ::memmem(data + begin, size - begin, kFileSeparator, separatorBytes);
            if (found)
                end = std::size_t(static_cast<const std::uint8_t*>(found) - data);
        }
        if (begin < size) {
            parts[i] = Part{data + begin, end - begin};
            begin = end + separatorBytes;
        }
        if (end == size)
            break;
    }
    return parts;
}

Bytes Join(const std::vector<Bytes>& parts)
{
    Bytes joined;
    const std::size_t separatorBytes = std::strlen(kFileSeparator);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i != 0)
            joined.insert(joined.end(), kFileSeparator, kFileSeparator + separatorBytes);
        joined.insert(joined.end(), parts[i].begin(), parts[i].end());
    }
    return joined;
}

Bytes ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void QuietLogging()
{
    static const bool done = [] {
        RTE::Logging::SetLevel(RTE::LogLevel::Off);
        return true;
    }();
    (void)done;
}

void Fail(const char* what)
{
    std::fprintf(stderr, "setapi fuzz finding: %s\n", what);
    std::abort();
}

void Fail(const char* what, const RTE::Exception& cause)
{
    std::fprintf(stderr, "setapi fuzz finding: %s: %s\n", what, cause.what());
    std::abort();
}

} // namespace SetApiFuzz
