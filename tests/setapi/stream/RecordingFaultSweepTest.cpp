// A recording through each writer with a failure of the disk at every call that makes a file, a
// rename or a replace, and with the disk full after every few KB: the writer reports the failure
// (IsError, with a text that names the file), no thread hangs, and what is on disk afterwards
// opens, holds only images that read back bit-exact, and is repairable.

#include "RecordingImages.h"
#include "setapi/OperationDoubles.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/SetWriter.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>
#include <SetApi/stream/StreamSet.h>
#include <SetApi/stream/StreamSetWriter.h>

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <functional>
#include <memory>
#include <string>

using RecordingTesting::CompareCameraFrame;
using RecordingTesting::MakeCameraImage;
using SetApi::C_SetFactory;
using SetApi::I_Set;
using TestSupport::TempDir;
using Operation = RTE::FaultInjectingFileSystem::Operation;

namespace {

const unsigned Cameras = 3, Images = 6;
const unsigned Widths[Cameras] = {64, 48, 64};
const unsigned Heights[Cameras] = {48, 48, 32};

enum class Kind { Stream, Plain };

// Records through the writer; true when the writer reported an error (or refused to start).
bool RecordThrough(Kind kind, const std::string& name, std::string& error)
{
    std::unique_ptr<SetApi::I_SetWriter> writer;
    if (kind == Kind::Stream)
        writer = std::make_unique<SetApi::StreamSetWriter>(2);
    else
        writer = std::make_unique<SetApi::SetWriter>(2, 2);
    try {
        writer->Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        for (unsigned i = 0; i < Images; ++i) {
            std::shared_ptr<const BufferApi::I_Buffer> image(MakeCameraImage(Cameras, Widths, Heights, i));
            writer->Store(image, i);
        }
        writer->Stop();
        writer->WaitUntilFinished();
        if (kind == Kind::Stream)
            static_cast<SetApi::StreamSetWriter&>(*writer).Close();
        else
            static_cast<SetApi::SetWriter&>(*writer).Close();
        error = writer->GetErrorText();
        return writer->IsError();
    } catch (const std::exception& e) {
        // The worker must have ended before the writer goes, whatever failed.
        writer->Abort();
        writer->WaitUntilFinished();
        error = e.what();
        return true;
    }
}

// What a failed recording left: it opens (or never got as far as a set), its images read back,
// and a repair leaves no stream damaged.
void CheckRemains(const std::string& name)
{
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
    if (!set->IsOpen())
        return;
    for (unsigned i = 0; i < set->GetSize(); ++i) {
        std::unique_ptr<BufferApi::I_Buffer> buffer;
        try {
            buffer = set->LoadBuffer(i);
        } catch (const std::exception& e) {
            // A plain set's buffer whose file was cut by the full disk fails to load, naming it;
            // one that was never written is a gap in the numbering.
            const std::string text = e.what();
            EXPECT_TRUE(text.find(".im7") != std::string::npos || text.find("Gap") != std::string::npos) << text;
            continue;
        }
        for (unsigned c = 0; c < Cameras; ++c)
            EXPECT_EQ(CompareCameraFrame(*buffer, c, Widths[c], Heights[c], i), "") << "image " << i;
    }
    if (SetApi::IsStreamSet(set)) {
        OperationTesting::YesDialog yes;
        EXPECT_NE(SetApi::RepairCorruptStreamSet(set, yes), SetApi::RepairCorruptStreamSetState::RepairFailed)
            << yes.failure;
        const auto repaired = SetApi::Private::CastToStreamSet(C_SetFactory::Instance().Open(name));
        const auto& states = repaired->GetCorruptionStates();
        EXPECT_EQ(repaired->IsCorrupt(), states.minImageCount != states.maxImageCount);
    }
}

// Runs the recording once per fault that `arm` sets for number k, until a run meets no fault.
unsigned Sweep(Kind kind, const std::function<void(RTE::FaultInjectingFileSystem&, unsigned)>& arm,
               const std::function<bool(const RTE::FaultInjectingFileSystem&, unsigned)>& met, unsigned limit)
{
    unsigned k = 1;
    for (; k <= limit; ++k) {
        SCOPED_TRACE("k = " + std::to_string(k));
        TempDir dir;
        const std::string name = dir / "Rec";
        auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
        std::string error;
        bool failed = false;
        {
            RTE::ScopedFileSystemBackend installed(faults);
            arm(*faults, k);
            failed = RecordThrough(kind, name, error);
        }
        if (!met(*faults, k)) {
            EXPECT_FALSE(failed) << error;
            break;
        }
        EXPECT_TRUE(failed) << "a failure of the disk went unreported";
        EXPECT_FALSE(error.empty());
        CheckRemains(name);
    }
    return k;
}

} // namespace

TEST(RecordingFaultSweep, EachWriterReportsAFailureAtEveryCallAndLeavesARepairableRecording)
{
    const TestSupport::LogCapture log;
    for (const Kind kind : {Kind::Stream, Kind::Plain}) {
        SCOPED_TRACE(kind == Kind::Stream ? "StreamSetWriter" : "SetWriter");
        for (const Operation operation : {Operation::OpenForWriting, Operation::ReplaceFile, Operation::Rename,
                                          Operation::CreateDirectory}) {
            SCOPED_TRACE(RTE::FaultInjectingFileSystem::OperationName(operation));
            const unsigned calls = Sweep(
                kind, [&](RTE::FaultInjectingFileSystem& faults, unsigned k) { faults.FailCall(operation, k); },
                [&](const RTE::FaultInjectingFileSystem& faults, unsigned) { return faults.FailureCount(operation) > 0; }, 200);
            RecordProperty(std::string(kind == Kind::Stream ? "stream_" : "plain_")
                               + RTE::FaultInjectingFileSystem::OperationName(operation),
                           int(calls - 1));
        }
        // The disk full after every 16 KB, until a recording fits: the budget was met when the
        // writes reached it.
        const auto budget = [](unsigned k) { return std::uint64_t(k - 1) * 16384u; };
        const unsigned budgets = Sweep(
            kind, [&](RTE::FaultInjectingFileSystem& faults, unsigned k) { faults.FailWritesAfter(budget(k)); },
            [&](const RTE::FaultInjectingFileSystem& faults, unsigned k) { return faults.WrittenBytes() >= budget(k); },
            400);
        RecordProperty(std::string(kind == Kind::Stream ? "stream" : "plain") + "_full_disk_points", int(budgets - 1));
    }
}
