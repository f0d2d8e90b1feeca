// The queued stream set writer: back pressure on a full queue, pause and simulated slow disk,
// stop and abort, index order, failures that reach the error text instead of the producer, the
// closing log line and the factory's observers, and recordings that read back bit-exact.

#include "RecordingImages.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/I_SetFactoryObserver.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/StreamSet.h>
#include <SetApi/stream/StreamSetWriter.h>

#include <BufferApi/Attributes.h>
#include <BufferApi/Creation.h>

#include <DataObjects/ImageConversion.h>

#include <RTE/Exception.h>

#include "support/TestSupport.h"

#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using RecordingTesting::CompareCameraFrame;
using RecordingTesting::MakeCameraImage;
using SetApi::C_SetFactory;
using SetApi::I_Set;
using SetApi::StreamSetWriter;
using TestSupport::LogCapture;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

// Two cameras of different sizes, so that frames cannot stand in for each other.
const unsigned kWidths[2] = {16, 12};
const unsigned kHeights[2] = {10, 8};

std::shared_ptr<const BufferApi::I_Buffer> Image(unsigned image)
{
    return MakeCameraImage(2, kWidths, kHeights, image);
}

// A buffer of one camera of another width than the first image of a recording made of Image().
std::shared_ptr<const BufferApi::I_Buffer> WiderImage(unsigned image)
{
    const unsigned widths[2] = {kWidths[0] + 4, kWidths[1]};
    return MakeCameraImage(2, widths, kHeights, image);
}

// Opens the recording through the factory and checks that image k holds Image(images[k]).
void ExpectRecording(const std::string& name, const std::vector<unsigned>& images)
{
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
    ASSERT_TRUE(set->IsOpen()) << name;
    ASSERT_EQ(set->GetSize(), images.size());
    for (unsigned k = 0; k < images.size(); ++k) {
        const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(k);
        for (unsigned c = 0; c < 2; ++c)
            EXPECT_EQ(CompareCameraFrame(*buffer, c, kWidths[c], kHeights[c], images[k]), "") << "image " << k;
    }
}

std::vector<unsigned> Range(unsigned count)
{
    std::vector<unsigned> result;
    for (unsigned i = 0; i < count; ++i)
        result.push_back(i);
    return result;
}

// Gives a thread that should be blocked the time to get through, should it wrongly not block.
void GiveTime() { std::this_thread::sleep_for(std::chrono::milliseconds(50)); }

class CreateObserver : public SetApi::I_SetFactoryObserver {
public:
    CreateObserver() { C_SetFactory::Instance().Attach(this); }
    ~CreateObserver() override { C_SetFactory::Instance().Detach(this); }
    void OnCreate(const std::string& path) override
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_created.push_back(path);
    }
    void OnRemove(const std::string&) override {}
    void OnRename(const std::string&, const std::string&) override {}
    std::vector<std::string> Created() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_created;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_created;
};

} // namespace

TEST(StreamSetWriter, RecordsTwoCamerasInTheThreeFormsAndReadsBackBitExact)
{
    TempDir dir;
    const std::string name = dir / "Recording";
    LogCapture log(RTE::LogLevel::Info);
    {
        StreamSetWriter writer(8);
        EXPECT_TRUE(log.contains("Set", "StreamSetWriter initialize with queue size of 8"));
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_FAST);
        EXPECT_TRUE(log.contains("Set", "StreamSetWriter create " + name + " with compression type 1"));
        EXPECT_TRUE(QFileInfo::exists(QString::fromStdString(name + ".set")));

        std::unique_ptr<BufferApi::I_Buffer> reused;
        for (unsigned i = 0; i < 50; ++i) {
            if (i % 5 == 4) {
                // The raw pointer form copies: the caller may overwrite its buffer at once.
                reused = MakeCameraImage(2, kWidths, kHeights, i);
                writer.Store(reused.get(), i);
                auto* pixels = static_cast<std::uint16_t*>(
                    static_cast<BufferApi::I_FrameImage*>(reused->GetFrame(0))->GetPixelPlane(0)->GetData());
                pixels[0] ^= 0xFFFF;
            } else {
                writer.Store(Image(i), i);
            }
        }
        writer.Close();
        EXPECT_FALSE(writer.IsError()) << writer.GetErrorText();
        EXPECT_EQ(writer.GetErrorText(), "");
        EXPECT_EQ(writer.GetFillLevel(), 0u);
        const std::shared_ptr<I_Set> set = writer.GetSetWhenFinished();
        ASSERT_TRUE(set->IsOpen());
        ASSERT_NE(SetApi::Private::CastToStreamSet(set), nullptr);
        EXPECT_FALSE(SetApi::Private::CastToStreamSet(set)->IsCorrupt());
        EXPECT_EQ(set->GetSetType(), I_Set::SET_TYPE_RECORDING | I_Set::SET_TYPE_IMAGE);
    }
    ExpectRecording(name, Range(50));
    EXPECT_TRUE(log.contains("Set", "StreamSetWriter closed, max queue size = "));
}

TEST(StreamSetWriter, StoresImageBufferVariantsWithoutConvertingThemFirst)
{
    TempDir dir;
    const std::string name = dir / "Variants";
    {
        StreamSetWriter writer(2);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        for (unsigned i = 0; i < 3; ++i) {
            std::unique_ptr<BufferApi::I_Buffer> buffer = MakeCameraImage(2, kWidths, kHeights, i);
            std::shared_ptr<const DataObjects::ImageBufferVariant> variant =
                DataObjects::GetImageBuffer(std::move(*buffer), false);
            writer.Store(variant, i);
        }
        writer.Close();
        EXPECT_EQ(writer.GetErrorText(), "");
    }
    ExpectRecording(name, Range(3));
}

TEST(StreamSetWriter, ProducerBlocksOnAFullQueueUntilThePausedWorkerResumes)
{
    TempDir dir;
    const std::string name = dir / "Full";
    LogCapture log(RTE::LogLevel::Info);
    {
        StreamSetWriter writer(2);
        EXPECT_EQ(writer.GetQueueSize(), 2u);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        writer.Pause();
        writer.Store(Image(0), 0);
        writer.Store(Image(1), 1);
        EXPECT_EQ(writer.GetFillLevel(), 2u);
        EXPECT_FALSE(writer.HasWaitedOnFullQueue());

        std::atomic<bool> returned{false};
        std::thread producer([&] {
            writer.Store(Image(2), 2);
            returned = true;
        });
        GiveTime();
        EXPECT_FALSE(returned);
        EXPECT_EQ(writer.GetFillLevel(), 2u);
        writer.Resume();
        producer.join();
        EXPECT_TRUE(returned);
        EXPECT_TRUE(writer.HasWaitedOnFullQueue());
        writer.Close();
        EXPECT_EQ(writer.GetMaxQueueSize(), 2u);
        EXPECT_EQ(writer.GetErrorText(), "");
    }
    EXPECT_TRUE(log.contains("Set", "StreamSetWriter closed, max queue size = 2 with waits, without errors"));
    ExpectRecording(name, Range(3));
}

TEST(StreamSetWriter, SimulatedSlowDiskResumesWhenTheQueueIsFull)
{
    TempDir dir;
    const std::string name = dir / "Simulated";
    {
        StreamSetWriter writer(2);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        writer.PauseSimulation();
        writer.Store(Image(0), 0);
        writer.Store(Image(1), 1);
        // This thread alone: were the worker not resumed by the full queue, this would never return.
        writer.Store(Image(2), 2);
        EXPECT_TRUE(writer.HasWaitedOnFullQueue());
        writer.Store(Image(3), 3);
        writer.Close();
        EXPECT_EQ(writer.GetMaxQueueSize(), 2u);
        EXPECT_EQ(writer.GetErrorText(), "");
    }
    ExpectRecording(name, Range(4));
}

TEST(StreamSetWriter, StopDrainsTheQueueEvenWhenPausedAndLaterItemsAreDropped)
{
    TempDir dir;
    const std::string name = dir / "Stopped";
    LogCapture log(RTE::LogLevel::Info);
    {
        StreamSetWriter writer(0); // no limit
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        writer.Pause();
        for (unsigned i = 0; i < 5; ++i)
            writer.Store(Image(i), i);
        EXPECT_EQ(writer.GetFillLevel(), 5u);
        writer.Stop();
        writer.Store(Image(5), 5);
        BufferApi::I_Buffer* raw = BufferApi::CreateBuffer();
        writer.Store(raw, 6);
        delete raw;
        writer.WaitUntilFinished();
        writer.WaitUntilFinished();
        EXPECT_EQ(writer.GetFillLevel(), 0u);
        EXPECT_EQ(writer.GetMaxQueueSize(), 5u);
        EXPECT_FALSE(writer.HasWaitedOnFullQueue());
        EXPECT_FALSE(writer.IsError());
        writer.Close();
    }
    EXPECT_TRUE(log.contains("Set", "StreamSetWriter closed, max queue size = 5, without errors"));
    ExpectRecording(name, Range(5));
}

TEST(StreamSetWriter, AbortAbandonsTheQueue)
{
    TempDir dir;
    const std::string name = dir / "Aborted";
    StreamSetWriter writer(4);
    writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
    writer.Store(Image(0), 0);
    writer.Stop();
    writer.WaitUntilFinished();

    StreamSetWriter paused(4);
    paused.Create(QString::fromStdString(dir / "Paused"), BufferApi::BUFFER_PACK_NONE);
    paused.Pause();
    paused.Store(Image(0), 0);
    paused.Store(Image(1), 1);
    paused.Abort();
    paused.WaitUntilFinished();
    EXPECT_EQ(paused.GetFillLevel(), 2u);
    paused.Store(Image(2), 2);
    EXPECT_EQ(paused.GetFillLevel(), 2u);
    paused.Close();
    EXPECT_FALSE(paused.IsError());
    // Nothing was stored: no stream exists, and the factory's answer is not an open set.
    EXPECT_FALSE(paused.GetSetWhenFinished()->IsOpen());

    writer.Close();
    ExpectRecording(name, {0});
}

TEST(StreamSetWriter, IndicesOutOfOrderAreReportedAndTheRecordingGoesOn)
{
    TempDir dir;
    const std::string name = dir / "Order";
    {
        StreamSetWriter writer(8);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        writer.Store(Image(0), 0);
        writer.Store(Image(1), 1);
        writer.Store(Image(3), 3);
        writer.Store(Image(2), 2);
        // Every item fails the same way until one has the index that is due.
        writer.Store(Image(5), 5);
        writer.Store(Image(4), 4);
        writer.Store(Image(3), 3);
        writer.Store(Image(4), 4);
        writer.Close();
        EXPECT_TRUE(writer.IsError());
        EXPECT_EQ(writer.GetErrorText(), "Store must be called in order, got index 3 but need 2\n"
                                         "Store must be called in order, got index 5 but need 3\n"
                                         "Store must be called in order, got index 4 but need 3\n");
    }
    ExpectRecording(name, {0, 1, 2, 3, 4});
}

TEST(StreamSetWriter, ChangeOfImageFormatGoesToTheErrorTextAndTheLog)
{
    TempDir dir;
    const std::string name = dir / "Format";
    LogCapture log(RTE::LogLevel::Info);
    {
        StreamSetWriter writer(8);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_FAST);
        writer.Store(Image(0), 0);
        writer.Store(WiderImage(1), 1);
        // The failed image's index is still due.
        writer.Store(Image(1), 1);
        writer.Store(Image(2), 2);
        writer.Close();
        EXPECT_TRUE(writer.IsError());
        EXPECT_EQ(writer.GetErrorText(), "Image width must not change\n");
        ExpectRecording(name, Range(3));
    }
    EXPECT_TRUE(log.contains("Set", "StreamSetWriter closed, max queue size = "));
    bool found = false;
    for (const LogCapture::Line& line : log.lines())
        if (line.logger == "Set" && line.text.find("StreamSetWriter closed") == 0) {
            found = true;
            EXPECT_EQ(line.level, RTE::LogLevel::Info);
            const std::string tail = ", Image width must not change\n";
            ASSERT_GE(line.text.size(), tail.size());
            EXPECT_EQ(line.text.substr(line.text.size() - tail.size()), tail) << line.text;
        }
    EXPECT_TRUE(found);
}

TEST(StreamSetWriter, RefusesBadCallsOnTheProducersThread)
{
    TempDir dir;
    const std::string name = dir / "Refused";
    StreamSetWriter writer(2);
    EXPECT_EQ(MessageOf([&] { writer.Store(Image(0), 0); }), "StreamSet must be created");
    writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
    EXPECT_EQ(MessageOf([&] { writer.Store(std::shared_ptr<const BufferApi::I_Buffer>(), 0); }),
              "Buffer must not be empty");
    EXPECT_EQ(MessageOf([&] { writer.Store(std::shared_ptr<const DataObjects::ImageBufferVariant>(), 0); }),
              "Buffer must not be empty");
    EXPECT_EQ(MessageOf([&] { writer.Store(static_cast<BufferApi::I_Buffer*>(nullptr), 0); }),
              "Buffer must not be empty");
    // A second Create would pull the writer away from under the worker.
    EXPECT_THROW(writer.Create(QString::fromStdString(dir / "Other"), BufferApi::BUFFER_PACK_NONE),
                 RTE::VerificationFailed);
    writer.Store(Image(0), 0);
    EXPECT_EQ(MessageOf([&] { writer.GetSetWhenFinished(); }), "Stream set writer did not finish the writing actions.");
    EXPECT_THROW(writer.GetSetWhenFinished(), RTE::VerificationFailed);
    EXPECT_FALSE(writer.IsError());
    writer.Close();
    EXPECT_TRUE(writer.GetSetWhenFinished()->IsOpen());
}

TEST(StreamSetWriter, ObserversLearnOfTheSetOnlyWhenTheWriterIsGone)
{
    TempDir dir;
    const std::string name = dir / "Observed";
    CreateObserver observer;
    {
        StreamSetWriter writer(2);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        writer.Store(Image(0), 0);
        writer.Close();
        EXPECT_TRUE(observer.Created().empty());
    }
    EXPECT_EQ(observer.Created(), std::vector<std::string>{name});
}

TEST(StreamSetWriter, WaitingFromSeveralThreadsJoinsOnce)
{
    TempDir dir;
    StreamSetWriter writer(4);
    writer.Create(QString::fromStdString(dir / "Joined"), BufferApi::BUFFER_PACK_NONE);
    for (unsigned i = 0; i < 6; ++i)
        writer.Store(Image(i), i);
    writer.Stop();
    std::vector<std::thread> waiters;
    for (int t = 0; t < 3; ++t)
        waiters.emplace_back([&] { writer.WaitUntilFinished(); });
    for (std::thread& t : waiters)
        t.join();
    EXPECT_EQ(writer.GetFillLevel(), 0u);
    writer.Close();
    ExpectRecording(dir / "Joined", Range(6));
}

TEST(StreamSetWriter, ProducersPausesAndPollingRaceCleanly)
{
    // Run under the thread sanitizer: a producer on a small queue, a thread that pauses and
    // resumes the worker, and a poller, all at once.
    TempDir dir;
    const std::string name = dir / "Race";
    const unsigned count = 40;
    {
        StreamSetWriter writer(3);
        writer.Create(QString::fromStdString(name), BufferApi::BUFFER_PACK_NONE);
        std::atomic<bool> producing{true};
        std::thread producer([&] {
            for (unsigned i = 0; i < count; ++i)
                writer.Store(Image(i), i);
            producing = false;
        });
        std::thread pauser([&] {
            while (producing) {
                writer.Pause();
                std::this_thread::yield();
                writer.Resume();
            }
        });
        std::size_t largest = 0;
        while (producing) {
            largest = std::max(largest, writer.GetFillLevel());
            (void)writer.IsError();
            (void)writer.HasWaitedOnFullQueue();
            (void)writer.GetMaxQueueSize();
        }
        producer.join();
        pauser.join();
        writer.Resume();
        writer.Close();
        EXPECT_LE(largest, 3u);
        EXPECT_LE(writer.GetMaxQueueSize(), 3u);
        EXPECT_EQ(writer.GetErrorText(), "");
    }
    ExpectRecording(name, Range(count));
}

TEST(StreamSetWriterDeathTest, DestroyingAWriterWhoseWorkerRunsTerminates)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH({ StreamSetWriter writer(1); }, "");
}
