// The background writer for plain sets: what lands on disk (every form of Store, the pack type,
// many buffers from two workers), the back pressure on the producer, stopping and aborting, and
// what a producer sees after a worker has failed.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/SetWriter.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/set/I_SetObserver.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <DataObjects/ImageConversion.h>

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>
#include <RTE/FileSystem.h>
#include <RTE/ScopedFileSystemBackend.h>

#include "support/TestSupport.h"

#include <QFileInfo>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

using namespace SetApi;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

// One frame whose pixels are `seed + i`, of word or float elements.
std::unique_ptr<BufferApi::I_Buffer> MakeBuffer(unsigned seed, BufferApi::E_DataType type = BufferApi::DATATYPE_WORD,
                                                unsigned width = 64, unsigned height = 32)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    std::unique_ptr<BufferApi::I_FrameImage> frame(BufferApi::CreateImageFrame(type, width, height, 1));
    void* data = frame->GetPixelPlane(0)->GetData();
    for (unsigned i = 0; i < width * height; ++i) {
        if (type == BufferApi::DATATYPE_WORD)
            static_cast<unsigned short*>(data)[i] = static_cast<unsigned short>(seed * 7 + i);
        else
            static_cast<float*>(data)[i] = float(seed) + 0.25f * float(i);
    }
    buffer->AddFrame(std::move(frame));
    buffer->GetAttributeStore().SetString("Seed", std::to_string(seed));
    return buffer;
}

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

std::shared_ptr<const BufferApi::I_Buffer> Shared(std::unique_ptr<BufferApi::I_Buffer> buffer)
{
    return std::shared_ptr<const BufferApi::I_Buffer>(std::move(buffer));
}

// Same frames of the same shape and type with the same pixel bytes.
::testing::AssertionResult SamePixels(const BufferApi::I_Buffer& expected, const BufferApi::I_Buffer& actual)
{
    if (expected.GetNumberOfFrames() != actual.GetNumberOfFrames())
        return ::testing::AssertionFailure() << "frame count " << actual.GetNumberOfFrames();
    for (unsigned f = 0; f < expected.GetNumberOfFrames(); ++f) {
        const auto* a = dynamic_cast<const BufferApi::I_FrameImage*>(expected.GetFrame(f));
        const auto* b = dynamic_cast<const BufferApi::I_FrameImage*>(actual.GetFrame(f));
        if (!a || !b)
            return ::testing::AssertionFailure() << "frame " << f << " is no image";
        const BufferApi::I_PlaneBase* pa = a->GetPixelPlane(0);
        const BufferApi::I_PlaneBase* pb = b->GetPixelPlane(0);
        if (pa->GetDataType() != pb->GetDataType() || pa->GetWidth() != pb->GetWidth() ||
            pa->GetHeight() != pb->GetHeight())
            return ::testing::AssertionFailure() << "frame " << f << " differs in shape or type";
        if (std::memcmp(pa->GetData(), pb->GetData(), pa->GetByteSize()) != 0)
            return ::testing::AssertionFailure() << "frame " << f << " differs in its pixels";
    }
    return ::testing::AssertionSuccess();
}

std::string BufferFile(const std::string& setPath, unsigned index)
{
    char name[32];
    std::snprintf(name, sizeof name, "/B%05u.im7", index + 1);
    return setPath + name;
}

// Forwards to the real file system; a test hook sees every file opened for writing first and may
// hold the call up or make it fail.
class HookedFileSystem : public RTE::FaultInjectingFileSystem {
public:
    explicit HookedFileSystem(std::function<void(const std::string&)> hook) : m_hook(std::move(hook)) {}
    std::unique_ptr<RTE::I_WritableFile> OpenForWriting(const std::string& path) override
    {
        m_hook(path);
        return FaultInjectingFileSystem::OpenForWriting(path);
    }
    std::unique_ptr<RTE::I_WritableFile> OpenForDirectWriting(const std::string& path) override
    {
        m_hook(path);
        return FaultInjectingFileSystem::OpenForDirectWriting(path);
    }

private:
    std::function<void(const std::string&)> m_hook;
};

bool IsBufferFileOf(const std::string& path, unsigned index)
{
    return path.find(BufferFile("", index).substr(1)) != std::string::npos;
}

// A barrier for workers: they wait in Pass until Open; the test can wait until so many are there.
class Gate {
public:
    void Pass()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        ++m_arrived;
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return m_open; });
    }
    void WaitForArrivals(unsigned count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [&] { return m_arrived >= count; });
    }
    void Open()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    unsigned m_arrived = 0;
    bool m_open = false;
};

std::shared_ptr<I_Set> OpenSet(const std::string& path)
{
    std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(path);
    EXPECT_TRUE(set->IsOpen()) << path;
    return set;
}

} // namespace

TEST(SetWriter, EveryFormOfStoreLandsInARecordingSetThatOpensAfterClose)
{
    TempDir dir;
    const std::string path = dir / "Recording";
    LogCapture log(RTE::LogLevel::Info);
    auto first = MakeBuffer(1);
    auto second = MakeBuffer(2);
    auto third = MakeBuffer(3, BufferApi::DATATYPE_FLOAT);
    {
        SetWriter writer(4, 2);
        EXPECT_EQ(writer.GetQueueSize(), 4u);
        EXPECT_EQ(writer.GetFillLevel(), 0u);
        EXPECT_EQ(writer.GetSetWhenFinished(), nullptr);
        writer.Create(QString::fromStdString(path), BufferApi::BUFFER_PACK_FAST);
        ASSERT_NE(writer.GetSetWhenFinished(), nullptr);
        EXPECT_TRUE(writer.GetSetWhenFinished()->IsOpen());

        writer.Store(Shared(first->Clone()), 0);
        // The raw form copies: the caller may change its buffer at once.
        auto callers = second->Clone();
        writer.Store(callers.get(), 1);
        callers.reset(MakeBuffer(99).release());
        auto variant = DataObjects::GetImageBuffer(std::move(*third->Clone()), true);
        writer.Store(std::shared_ptr<const DataObjects::ImageBufferVariant>(std::move(variant)), 2);

        writer.Close();
        EXPECT_EQ(writer.GetFillLevel(), 0u);
        EXPECT_FALSE(writer.IsError());
        EXPECT_EQ(writer.GetErrorText(), "");
    }
    EXPECT_TRUE(log.contains("Set", "SetWriter create " + path));
    EXPECT_TRUE(log.contains("Set", "SetWriter closed"));

    auto set = OpenSet(path);
    EXPECT_EQ(unsigned(set->GetSetType()), 0x1100u);
    ASSERT_EQ(set->GetSize(), 3u);
    EXPECT_TRUE(SamePixels(*first, *set->LoadBuffer(0)));
    EXPECT_TRUE(SamePixels(*second, *set->LoadBuffer(1)));
    EXPECT_TRUE(SamePixels(*third, *set->LoadBuffer(2)));
}

TEST(SetWriter, PackTypeGoesToWordAndFloatBuffers)
{
    TempDir dir;
    const unsigned width = 256, height = 256;
    for (BufferApi::BufferPackType_t pack : {BufferApi::BUFFER_PACK_NONE, BufferApi::BUFFER_PACK_ZLIB}) {
        const std::string path = dir / (pack == BufferApi::BUFFER_PACK_NONE ? "Plain" : "Zlib");
        {
            SetWriter writer(2, 1);
            writer.Create(QString::fromStdString(path), pack);
            // Constant pixels pack to almost nothing.
            auto word = MakeBuffer(0, BufferApi::DATATYPE_WORD, width, height);
            auto flt = MakeBuffer(0, BufferApi::DATATYPE_FLOAT, width, height);
            std::memset(dynamic_cast<BufferApi::I_FrameImage*>(word->GetFrame(0))->GetPixelPlane(0)->GetData(), 0,
                        width * height * 2);
            std::memset(dynamic_cast<BufferApi::I_FrameImage*>(flt->GetFrame(0))->GetPixelPlane(0)->GetData(), 0,
                        width * height * 4);
            writer.Store(Shared(std::move(word)), 0);
            writer.Store(Shared(std::move(flt)), 1);
        }
        const qint64 wordSize = QFileInfo(QString::fromStdString(BufferFile(path, 0))).size();
        const qint64 floatSize = QFileInfo(QString::fromStdString(BufferFile(path, 1))).size();
        if (pack == BufferApi::BUFFER_PACK_NONE) {
            EXPECT_GE(wordSize, qint64(width * height * 2));
            EXPECT_GE(floatSize, qint64(width * height * 4));
        } else {
            EXPECT_GT(wordSize, 0);
            EXPECT_GT(floatSize, 0);
            EXPECT_LT(wordSize, qint64(width * height * 2 / 4));
            EXPECT_LT(floatSize, qint64(width * height * 4 / 4));
        }
    }
}

TEST(SetWriter, TwoWorkersStoreEveryBufferBitExact)
{
    TempDir dir;
    const std::string path = dir / "Many";
    const unsigned count = 200;
    {
        SetWriter writer(8, 2);
        writer.Create(QString::fromStdString(path), BufferApi::BUFFER_PACK_FAST);
        for (unsigned i = 0; i < count; ++i) {
            auto buffer = MakeBuffer(i, i % 2 ? BufferApi::DATATYPE_FLOAT : BufferApi::DATATYPE_WORD);
            if (i % 3 == 0)
                writer.Store(buffer.get(), i);
            else
                writer.Store(Shared(std::move(buffer)), i);
            EXPECT_LE(writer.GetFillLevel(), 8u);
        }
        writer.Close();
        EXPECT_FALSE(writer.IsError()) << writer.GetErrorText();
        EXPECT_EQ(writer.GetFillLevel(), 0u);
    }
    auto set = OpenSet(path);
    ASSERT_EQ(set->GetSize(), count);
    for (unsigned i = 0; i < count; ++i) {
        auto loaded = set->LoadBuffer(i);
        EXPECT_TRUE(SamePixels(*MakeBuffer(i, i % 2 ? BufferApi::DATATYPE_FLOAT : BufferApi::DATATYPE_WORD), *loaded))
            << "index " << i;
    }
}

TEST(SetWriter, DestructionFinishesTheQueuedWork)
{
    TempDir dir;
    const std::string path = dir / "Dropped";
    {
        SetWriter writer(6, 1);
        writer.Create(QString::fromStdString(path), BufferApi::BUFFER_PACK_FAST);
        for (unsigned i = 0; i < 6; ++i)
            writer.Store(Shared(MakeBuffer(i)), i);
    }
    EXPECT_EQ(OpenSet(path)->GetSize(), 6u);
}

TEST(SetWriter, AFullQueueHoldsTheProducerBackAndDropsNothing)
{
    TempDir dir;
    const std::string path = dir / "Slow";
    Gate gate;
    auto slowDisk = std::make_shared<HookedFileSystem>([&](const std::string& file) {
        if (file.find("B0000") != std::string::npos)
            gate.Pass();
    });
    RTE::ScopedFileSystemBackend installed(slowDisk);
    SetWriter writer(2, 1);
    writer.Create(QString::fromStdString(path), BufferApi::BUFFER_PACK_FAST);

    writer.Store(Shared(MakeBuffer(0)), 0);
    gate.WaitForArrivals(1); // the worker is stuck in the disk with buffer 0
    writer.Store(Shared(MakeBuffer(1)), 1);
    EXPECT_EQ(writer.GetFillLevel(), 2u);

    auto blocked = std::async(std::launch::async, [&] { writer.Store(Shared(MakeBuffer(2)), 2); });
    EXPECT_EQ(blocked.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout)
        << "Store must wait while no queue place is free";
    gate.Open();
    blocked.get();
    writer.Close();
    EXPECT_FALSE(writer.IsError()) << writer.GetErrorText();
    EXPECT_EQ(writer.GetFillLevel(), 0u);
    auto set = OpenSet(path);
    ASSERT_EQ(set->GetSize(), 3u);
    for (unsigned i = 0; i < 3; ++i)
        EXPECT_TRUE(SamePixels(*MakeBuffer(i), *set->LoadBuffer(i)));
}

TEST(SetWriter, StoreRefusesWithoutSetOrBuffer)
{
    TempDir dir;
    SetWriter writer(1, 1);
    auto buffer = MakeBuffer(0);
    EXPECT_EQ(MessageOf([&] { writer.Store(Shared(MakeBuffer(0)), 0); }), "Set must be created");
    EXPECT_EQ(MessageOf([&] { writer.Store(buffer.get(), 0); }), "Set must be created");
    EXPECT_EQ(MessageOf([&] { writer.Store(std::shared_ptr<const DataObjects::ImageBufferVariant>(), 0); }),
              "Set must be created");

    writer.Create(QString::fromStdString(dir / "Set"), BufferApi::BUFFER_PACK_FAST);
    EXPECT_EQ(MessageOf([&] { writer.Store(std::shared_ptr<const BufferApi::I_Buffer>(), 0); }),
              "Buffer must be valid");
    EXPECT_EQ(MessageOf([&] { writer.Store(static_cast<BufferApi::I_Buffer*>(nullptr), 0); }),
              "Buffer must be valid");
    EXPECT_EQ(MessageOf([&] { writer.Store(std::shared_ptr<const DataObjects::ImageBufferVariant>(), 0); }),
              "Buffer must be valid");
    EXPECT_EQ(writer.GetFillLevel(), 0u) << "a refused Store takes no queue place";
    EXPECT_FALSE(writer.IsError()) << "a refusal is the producer's, not the writer's failure";

    // A set whose set file cannot be written is no set either: its buffers would otherwise be
    // stored into a set that never opens.
    SetWriter orphan(1, 1);
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    {
        RTE::ScopedFileSystemBackend installed(faults);
        faults->FailCall(RTE::FaultInjectingFileSystem::Operation::OpenForWriting, 1);
        orphan.Create(QString::fromStdString(dir / "Orphan"), BufferApi::BUFFER_PACK_FAST);
    }
    ASSERT_FALSE(orphan.GetSetWhenFinished()->IsOpen());
    EXPECT_EQ(MessageOf([&] { orphan.Store(Shared(MakeBuffer(0)), 0); }), "Set must be created");
}

TEST(SetWriter, AFailedStoreIsReportedAtTheNextStoreAndCloseStillEnds)
{
    TempDir dir;
    const std::string path = dir / "Broken";
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    RTE::ScopedFileSystemBackend installed(faults);
    LogCapture log(RTE::LogLevel::Info);
    SetWriter writer(2, 1);
    writer.Create(QString::fromStdString(path), BufferApi::BUFFER_PACK_FAST);
    faults->FailCallsFrom(RTE::FaultInjectingFileSystem::Operation::OpenForWriting,
                          faults->CallCount(RTE::FaultInjectingFileSystem::Operation::OpenForWriting) + 1);

    writer.Store(Shared(MakeBuffer(0)), 0);
    writer.Stop();
    writer.WaitUntilFinished();
    EXPECT_TRUE(writer.IsError());
    const std::string text = writer.GetErrorText();
    EXPECT_TRUE(Contains(text, "Injected fault: OpenForWriting")) << text;
    EXPECT_TRUE(Contains(text, "B00001.im7")) << text;
    // Even a Store that would be refused for its null buffer reports the writer's failure first.
    EXPECT_EQ(MessageOf([&] { writer.Store(Shared(MakeBuffer(1)), 1); }), "Can't store after error from former call.");
    EXPECT_EQ(MessageOf([&] { writer.Store(std::shared_ptr<const BufferApi::I_Buffer>(), 1); }),
              "Can't store after error from former call.");
    faults->ClearFaults();
    writer.Close();
    EXPECT_TRUE(log.contains("Set", "SetWriter closed"));
    EXPECT_EQ(writer.GetErrorText(), text);
}

TEST(SetWriter, TheFirstOfTwoFailuresIsKeptAndQueuedWorkIsLeft)
{
    TempDir dir;
    const std::string path = dir / "TwoFailures";
    // Buffer 0 fails once buffer 1 is inside the disk as well; buffer 1 fails only after the
    // writer has taken the first failure; buffer 2 waits in the queue meanwhile.
    std::promise<void> storesDone;
    std::shared_future<void> storesDoneFuture = storesDone.get_future().share();
    Gate secondInside;
    std::atomic<bool> thirdTried{false};
    SetWriter* writerSeen = nullptr;
    auto disk = std::make_shared<HookedFileSystem>([&](const std::string& file) {
        if (IsBufferFileOf(file, 0)) {
            storesDoneFuture.wait();
            secondInside.WaitForArrivals(1);
            throw std::runtime_error("first failure");
        }
        if (IsBufferFileOf(file, 1)) {
            secondInside.Pass();
            while (!writerSeen->IsError())
                std::this_thread::yield();
            throw std::runtime_error("second failure");
        }
        if (IsBufferFileOf(file, 2))
            thirdTried = true;
    });
    RTE::ScopedFileSystemBackend installed(disk);
    secondInside.Open(); // Pass only counts the arrival
    SetWriter writer(3, 2);
    writerSeen = &writer;
    writer.Create(QString::fromStdString(path), BufferApi::BUFFER_PACK_FAST);
    for (unsigned i = 0; i < 3; ++i)
        writer.Store(Shared(MakeBuffer(i)), i);
    storesDone.set_value();

    writer.WaitUntilFinished(); // both workers end by their failures
    EXPECT_TRUE(Contains(writer.GetErrorText(), "first failure")) << writer.GetErrorText();
    EXPECT_FALSE(Contains(writer.GetErrorText(), "second failure")) << writer.GetErrorText();
    EXPECT_FALSE(thirdTried) << "the failure aborts the workers before queued work";
    EXPECT_EQ(MessageOf([&] { writer.Store(Shared(MakeBuffer(3)), 3); }), "Can't store after error from former call.");
    writer.Close();
}

// A producer waiting on a full queue when the only worker fails, or when the writer is aborted,
// must not wait for ever: no worker will give its place back.
TEST(SetWriter, AProducerWaitingForAPlaceIsReleasedByAFailureOrAnAbort)
{
    for (const bool abort : {false, true}) {
        SCOPED_TRACE(abort ? "abort" : "failure");
        TempDir dir;
        Gate gate;
        auto disk = std::make_shared<HookedFileSystem>([&](const std::string& file) {
            if (IsBufferFileOf(file, 0)) {
                gate.Pass();
                if (!abort)
                    throw std::runtime_error("disk gone");
            }
        });
        RTE::ScopedFileSystemBackend installed(disk);
        SetWriter writer(1, 1);
        writer.Create(QString::fromStdString(dir / "Waiting"), BufferApi::BUFFER_PACK_FAST);
        writer.Store(Shared(MakeBuffer(0)), 0);
        gate.WaitForArrivals(1); // the worker holds the one place
        auto waiting = std::async(std::launch::async, [&] { return MessageOf([&] { writer.Store(Shared(MakeBuffer(1)), 1); }); });
        EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
        if (abort)
            writer.Abort();
        gate.Open();
        ASSERT_EQ(waiting.wait_for(std::chrono::seconds(20)), std::future_status::ready) << "producer still waits";
        EXPECT_EQ(waiting.get(), abort ? "(no exception)" : "Can't store after error from former call.");
        // Later producers are released at once as well.
        EXPECT_EQ(MessageOf([&] { writer.Store(Shared(MakeBuffer(2)), 2); }),
                  abort ? "(no exception)" : "Can't store after error from former call.");
        EXPECT_LE(writer.GetFillLevel(), writer.GetQueueSize());
        writer.Close();
    }
}

namespace {
struct FailingObserver : I_SetObserver {
    void OnBufferStored(unsigned) override { throw std::runtime_error(""); }
};
} // namespace

TEST(SetWriter, AFailureWithoutTextIsAnUnknownError)
{
    TempDir dir;
    FailingObserver observer;
    SetWriter writer(1, 1);
    writer.Create(QString::fromStdString(dir / "Silent"), BufferApi::BUFFER_PACK_FAST);
    writer.GetSetWhenFinished()->AttachObserver(&observer);
    writer.Store(Shared(MakeBuffer(0)), 0);
    writer.Stop();
    writer.WaitUntilFinished();
    EXPECT_EQ(writer.GetErrorText(), "Unknown error");
    writer.GetSetWhenFinished()->RemoveObserver(&observer);
}

TEST(SetWriter, AbortLeavesQueuedWorkAndIsNoError)
{
    TempDir dir;
    const std::string path = dir / "Aborted";
    Gate gate;
    auto slowDisk = std::make_shared<HookedFileSystem>([&](const std::string& file) {
        if (file.find("B0000") != std::string::npos)
            gate.Pass();
    });
    RTE::ScopedFileSystemBackend installed(slowDisk);
    SetWriter writer(3, 1);
    writer.Create(QString::fromStdString(path), BufferApi::BUFFER_PACK_FAST);
    for (unsigned i = 0; i < 3; ++i)
        writer.Store(Shared(MakeBuffer(i)), i);
    gate.WaitForArrivals(1);
    writer.Abort();
    gate.Open();
    writer.WaitUntilFinished();
    EXPECT_FALSE(writer.IsError());
    writer.Close();
    // The buffer being written when the abort came is finished; the queued ones are not.
    EXPECT_TRUE(RTE::FileSystem::Exists(BufferFile(path, 0)));
    EXPECT_FALSE(RTE::FileSystem::Exists(BufferFile(path, 1)));
    EXPECT_FALSE(RTE::FileSystem::Exists(BufferFile(path, 2)));
}

TEST(SetWriter, WithoutThreadsNothingIsStoredAndStoppingReturns)
{
    TempDir dir;
    const std::string path = dir / "Idle";
    SetWriter writer(2, 0);
    writer.Create(QString::fromStdString(path), BufferApi::BUFFER_PACK_FAST);
    writer.Store(Shared(MakeBuffer(0)), 0);
    writer.Store(Shared(MakeBuffer(1)), 1);
    EXPECT_EQ(writer.GetFillLevel(), 2u);
    writer.Stop();
    writer.WaitUntilFinished();
    writer.Close();
    EXPECT_EQ(writer.GetFillLevel(), 2u) << "queued work is never run";
    EXPECT_FALSE(RTE::FileSystem::Exists(BufferFile(path, 0)));
    EXPECT_FALSE(writer.IsError());
}

TEST(SetWriter, NoQueuePlacesIsAccepted)
{
    // A Store on such a writer would wait for ever (nothing can give a place back), so only the
    // writer's own state is looked at here.
    TempDir dir;
    SetWriter writer(0, 2);
    writer.Create(QString::fromStdString(dir / "NoRoom"), BufferApi::BUFFER_PACK_FAST);
    EXPECT_EQ(writer.GetQueueSize(), 0u);
    EXPECT_EQ(writer.GetFillLevel(), 0u);
    writer.Close();
}
