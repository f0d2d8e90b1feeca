// A program that runs one operation on a set and ends itself with SIGKILL at a chosen call of the
// file system, as a crash or a power cut would end it: no destructor, no flush, no close. The kill
// tests run it for every call number and check what the operation leaves.
//
//   setapi_operation_child repair|convert <set name> <k>
//
// k counts the calls that change the disk (file opened for writing, rename, replace, remove of a
// file or folder, folder created), from 1; 0 never kills. Prints "calls <n>" and "done" when the
// operation ran to its end. Compiled into the set library's tests too, where it is empty unless
// SETAPI_OPERATION_CHILD_MAIN is defined.

#ifdef SETAPI_OPERATION_CHILD_MAIN

#include "OperationDoubles.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/ConvertStreamSet.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/Logger.h>
#include <RTE/ScopedFileSystemBackend.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

class KillingFileSystem : public RTE::FaultInjectingFileSystem {
public:
    explicit KillingFileSystem(unsigned killAt) : m_killAt(killAt) {}
    unsigned Calls() const { return m_calls; }

    void CreateDirectory(const std::string& path) override { Count(), FaultInjectingFileSystem::CreateDirectory(path); }
    void RemoveDirectory(const std::string& path) override { Count(), FaultInjectingFileSystem::RemoveDirectory(path); }
    void RemoveFile(const std::string& path) override { Count(), FaultInjectingFileSystem::RemoveFile(path); }
    void Rename(const std::string& from, const std::string& to) override
    {
        Count();
        FaultInjectingFileSystem::Rename(from, to);
    }
    void ReplaceFile(const std::string& from, const std::string& to) override
    {
        Count();
        FaultInjectingFileSystem::ReplaceFile(from, to);
    }
    std::unique_ptr<RTE::I_WritableFile> OpenForWriting(const std::string& path) override
    {
        Count();
        return FaultInjectingFileSystem::OpenForWriting(path);
    }
    std::unique_ptr<RTE::I_WritableFile> OpenForDirectWriting(const std::string& path) override
    {
        Count();
        return FaultInjectingFileSystem::OpenForDirectWriting(path);
    }

private:
    void Count()
    {
        if (++m_calls == m_killAt)
            std::raise(SIGKILL);
    }
    unsigned m_killAt;
    unsigned m_calls = 0;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fputs("usage: setapi_operation_child repair|convert <set name> <k>\n", stderr);
        return 2;
    }
    const std::string mode = argv[1];
    const std::string name = argv[2];
    RTE::Logging::SetLevel(RTE::LogLevel::Off);
    auto disk = std::make_shared<KillingFileSystem>(static_cast<unsigned>(std::strtoul(argv[3], nullptr, 10)));
    try {
        RTE::ScopedFileSystemBackend installed(disk);
        if (mode == "repair") {
            OperationTesting::YesDialog dialog;
            SetApi::RepairCorruptStreamSet(SetApi::C_SetFactory::Instance().Open(name), dialog);
            if (!dialog.failure.empty())
                std::fprintf(stderr, "error %s\n", dialog.failure.c_str());
        } else if (mode == "convert") {
            OperationTesting::NeverCancel control;
            OperationTesting::QuietFeedback feedback;
            SetApi::ConvertStreamSetToNativeSet(name, control, feedback);
        } else {
            return 2;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "error %s\n", e.what());
        return 1;
    }
    std::printf("calls %u\ndone\n", disk->Calls());
    return 0;
}

#endif
