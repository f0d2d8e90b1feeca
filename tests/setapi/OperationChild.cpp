// A program that runs one operation on a set and ends itself with SIGKILL at a chosen call of the
// file system, as a crash or a power cut would end it: no destructor, no flush, no close. The kill
// tests run it for every call number and check what the operation leaves.
//
//   setapi_operation_child repair|convert|record-stream|record-plain <set name> <k>
//
// k counts the calls that change the disk (file opened for writing, bytes appended to one, rename,
// replace, remove of a file or folder, folder created), from 1; 0 never kills. The recordings are
// RecordingTesting's images of three cameras, six images, through the queued stream set writer or
// the set writer. Prints "calls <n>" and "done" when the
// operation ran to its end. Compiled into the set library's tests too, where it is empty unless
// SETAPI_OPERATION_CHILD_MAIN is defined.

#ifdef SETAPI_OPERATION_CHILD_MAIN

#include "OperationDoubles.h"
#include "stream/RecordingImages.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/ConvertStreamSet.h>
#include <SetApi/factory/SetWriter.h>
#include <SetApi/stream/StreamSetWriter.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>

#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/Logger.h>
#include <RTE/ScopedFileSystemBackend.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
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
        return std::make_unique<CountingFile>(*this, FaultInjectingFileSystem::OpenForWriting(path));
    }
    std::unique_ptr<RTE::I_WritableFile> OpenForDirectWriting(const std::string& path) override
    {
        Count();
        return std::make_unique<CountingFile>(*this, FaultInjectingFileSystem::OpenForDirectWriting(path));
    }

private:
    // Counts every append of the file as a call of its own.
    class CountingFile : public RTE::I_WritableFile {
    public:
        CountingFile(KillingFileSystem& owner, std::unique_ptr<RTE::I_WritableFile> file)
            : m_owner(owner), m_file(std::move(file))
        {
        }
        void Append(const void* data, std::size_t size) override
        {
            m_owner.Count();
            m_file->Append(data, size);
        }
        void Close() override { m_file->Close(); }
        bool IsDirect() const override { return m_file->IsDirect(); }
        void Reserve(std::uint64_t bytes) override { m_file->Reserve(bytes); }
        void DeferSync() override { m_file->DeferSync(); }

    private:
        KillingFileSystem& m_owner;
        std::unique_ptr<RTE::I_WritableFile> m_file;
    };

    // The writers append from several threads at once.
    void Count()
    {
        if (m_calls.fetch_add(1) + 1 == m_killAt)
            std::raise(SIGKILL);
    }
    unsigned m_killAt;
    std::atomic<unsigned> m_calls{0};
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
        } else if (mode == "record-stream" || mode == "record-plain") {
            const unsigned widths[3] = {64, 48, 64}, heights[3] = {48, 48, 32};
            std::unique_ptr<SetApi::I_SetWriter> writer;
            if (mode == "record-stream")
                writer = std::make_unique<SetApi::StreamSetWriter>(2);
            else
                writer = std::make_unique<SetApi::SetWriter>(2, 2);
            writer->Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
            for (unsigned i = 0; i < 6; ++i)
                writer->Store(std::shared_ptr<const BufferApi::I_Buffer>(RecordingTesting::MakeCameraImage(3, widths, heights, i)), i);
            writer->Stop();
            writer->WaitUntilFinished();
            if (mode == "record-stream")
                static_cast<SetApi::StreamSetWriter&>(*writer).Close();
            else
                static_cast<SetApi::SetWriter&>(*writer).Close();
            if (writer->IsError()) {
                std::fprintf(stderr, "error %s\n", writer->GetErrorText().c_str());
                return 1;
            }
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
