#pragma once
// What the fuzz targets share: the per-process scratch folder that file-reading targets write their
// input to, the split of one input into several files, and the guard that lets the library's
// documented failures pass while anything else stays a finding.
//
// A target body takes any bytes, never throws and leaves no file behind. It catches RTE::Exception
// (the base of every failure the readers document); every other exception, crash, sanitizer report,
// hang or huge allocation is a finding. Built both into the libFuzzer programs (clang) and into the
// replay test of the ordinary build, so that a kept finding replays through the same code.

#include <RTE/Exception.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstdio>
#include <string>
#include <vector>

namespace SetApiFuzz {

using Bytes = std::vector<std::uint8_t>;

// Marks the boundary between the files of a multi-file input. Long enough not to occur in what the
// library's writers produce, short enough for the fuzzer to keep intact.
extern const char kFileSeparator[];

// The scratch folder of this process (on /dev/shm where there is one), made on first use, emptied
// by every Scratch and removed at exit. Folders left by processes that died are removed when the
// next process makes its own.
const std::string& ScratchFolder();

// Empties the scratch folder on construction and destruction: a target makes one per input.
class Scratch {
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    // The path of `name` inside the scratch folder (sub-folders are not created).
    std::string Path(const std::string& name) const;
    // Writes the bytes as the file `name` and returns its path.
    std::string Write(const std::string& name, const std::uint8_t* data, std::size_t size) const;
    std::string Write(const std::string& name, const Bytes& bytes) const
    {
        return Write(name, bytes.data(), bytes.size());
    }
    // Makes the sub-folder `name` and returns its path.
    std::string Folder(const std::string& name) const;
};

// One part of a split input.
struct Part {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

// Splits the input at kFileSeparator into exactly `count` parts: missing parts are empty, and
// anything after the last expected separator stays in the last part.
std::vector<Part> Split(const std::uint8_t* data, std::size_t size, std::size_t count);
// The inverse of Split for seed making.
Bytes Join(const std::vector<Bytes>& parts);

// The bytes of a file (empty if it cannot be read).
Bytes ReadFile(const std::string& path);

// Silences the library's logging: every refused input logs its exception otherwise.
void QuietLogging();

// Stops the process with a message: for results that the readers guarantee and the input broke.
[[noreturn]] void Fail(const char* what);
// The same, naming the failure that broke the guarantee.
[[noreturn]] void Fail(const char* what, const RTE::Exception& cause);

// Runs f and lets the library's documented failures pass.
template <class F>
void Guarded(F&& f)
{
    try {
        f();
    } catch (const RTE::Exception&) {
    }
}

} // namespace SetApiFuzz
