// A plain set stored into from several threads at once, as a background writer with several
// workers does: every buffer arrives under its own number, the numbering and size seen meanwhile
// only grow, observers hear of each store once, and switching direct I/O or the pack type while
// stores run is safe. Direct I/O changes how files are written, not what they hold.

#include <SetApi/set/C_Set.h>
#include <SetApi/set/I_SetObserver.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/FileSystem.h>

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using namespace SetApi;
using TestSupport::TempDir;

namespace {

// One word frame whose pixels are `seed + i`: a smooth image that the fast pack makes smaller.
std::unique_ptr<BufferApi::I_Buffer> WordBuffer(unsigned seed, unsigned width = 200, unsigned height = 150)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    std::unique_ptr<BufferApi::I_FrameImage> frame(
        BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, width, height, 1));
    auto* pixels = static_cast<std::uint16_t*>(frame->GetPixelPlane(0)->GetData());
    for (unsigned i = 0; i < width * height; ++i)
        pixels[i] = static_cast<std::uint16_t>(seed + i);
    buffer->AddFrame(std::move(frame));
    return buffer;
}

bool HasPixelsOf(const BufferApi::I_Buffer& buffer, unsigned seed)
{
    const auto* frame = dynamic_cast<const BufferApi::I_FrameImage*>(buffer.GetFrame(0));
    if (frame == nullptr)
        return false;
    const auto* pixels = static_cast<const std::uint16_t*>(frame->GetPixelPlane(0)->GetData());
    const std::size_t count = frame->GetPixelPlane(0)->GetElementCount();
    for (std::size_t i = 0; i < count; ++i) {
        if (pixels[i] != static_cast<std::uint16_t>(seed + i))
            return false;
    }
    return true;
}

struct LockedObserver : I_SetObserver {
    std::mutex mutex;
    std::vector<unsigned> stored;
    void OnBufferStored(unsigned index) override
    {
        std::lock_guard<std::mutex> lock(mutex);
        stored.push_back(index);
    }
};

unsigned SeedOf(unsigned index) { return 1000 + 37 * index; }

} // namespace

TEST(C_SetConcurrentStore, SeveralThreadsStoreDifferentIndicesIntoOneSet)
{
    TempDir dir;
    const std::string name = dir / "Recording";
    {
        // Two buffers from before, so that the threads meet a set whose folder is not listed yet.
        std::unique_ptr<C_Set> earlier(C_Set::Create(name, I_Set::SET_TYPE_IMAGE, true));
        earlier->StoreBuffer(WordBuffer(SeedOf(0)).get(), 0);
        earlier->StoreBuffer(WordBuffer(SeedOf(1)).get(), 1);
    }
    std::unique_ptr<C_Set> set(C_Set::Open(name));
    LockedObserver observer;
    set->AttachObserver(&observer);

    const unsigned threads = 4;
    const unsigned total = 42; // indices 2 .. 41 are stored now
    std::atomic<bool> storing{true};
    std::atomic<unsigned> readerFaults{0};

    // Watches the numbering while the stores run: it only grows, and stays within the stored.
    std::thread reader([&] {
        unsigned lastSize = 0;
        while (storing) {
            unsigned count = 0, minimum = 0, maximum = 0;
            set->GetInfo(count, minimum, maximum);
            if (count < lastSize || count > total || minimum != 0 || maximum >= total)
                ++readerFaults;
            lastSize = count;
            std::string path;
            unsigned index = 1;
            if (!set->GetNext(index, path, nullptr) || index != 1)
                ++readerFaults;
        }
    });
    // Switches the settings that every store reads, while the stores run.
    std::thread switcher([&] {
        for (unsigned i = 0; storing; ++i) {
            set->SetDirectIo(i % 2 == 0);
            set->SetPackTypeWord(int(i % 3 == 0));
            std::this_thread::yield();
        }
    });
    std::vector<std::thread> writers;
    for (unsigned t = 0; t < threads; ++t) {
        writers.emplace_back([&, t] {
            for (unsigned index = 2 + t; index < total; index += threads) {
                const auto buffer = WordBuffer(SeedOf(index));
                set->StoreBuffer(buffer.get(), index);
            }
        });
    }
    for (std::thread& writer : writers)
        writer.join();
    storing = false;
    reader.join();
    switcher.join();
    set->RemoveObserver(&observer);

    EXPECT_EQ(readerFaults.load(), 0u);
    unsigned count = 0, minimum = 0, maximum = 0;
    set->GetInfo(count, minimum, maximum);
    EXPECT_EQ(count, total);
    EXPECT_EQ(minimum, 0u);
    EXPECT_EQ(maximum, total - 1);

    std::sort(observer.stored.begin(), observer.stored.end());
    std::vector<unsigned> expected;
    for (unsigned index = 2; index < total; ++index)
        expected.push_back(index);
    EXPECT_EQ(observer.stored, expected);

    // What the set object believes is what lies in the folder: a fresh object finds the same, and
    // no temporary file is left.
    std::unique_ptr<C_Set> reopened(C_Set::Open(name));
    ASSERT_EQ(reopened->GetSize(), total);
    for (unsigned index = 0; index < total; ++index)
        EXPECT_TRUE(HasPixelsOf(*reopened->LoadBuffer(index), SeedOf(index))) << "index " << index;
    const std::vector<std::string> files = RTE::FileSystem::GetFiles(name, ".*", false, false);
    EXPECT_EQ(files.size(), std::size_t(total));
}

TEST(C_SetConcurrentStore, DirectIoIsOffByDefaultAndStoresTheSameFiles)
{
    TempDir dir;
    std::unique_ptr<C_Set> buffered(C_Set::Create(dir / "Buffered", I_Set::SET_TYPE_IMAGE, true));
    std::unique_ptr<C_Set> direct(C_Set::Create(dir / "Direct", I_Set::SET_TYPE_IMAGE, true));
    EXPECT_FALSE(direct->IsDirectIo());
    direct->SetDirectIo(true);
    EXPECT_TRUE(direct->IsDirectIo());

    // Packed words, raw words of an odd size, and a raw word image of a camera's shape.
    const std::unique_ptr<BufferApi::I_Buffer> buffers[] = {WordBuffer(5), WordBuffer(6, 641, 479),
                                                            WordBuffer(7, 1280, 1080)};
    for (C_Set* set : {buffered.get(), direct.get()}) {
        set->StoreBuffer(buffers[0].get(), 0);
        set->SetPackTypeWord(0);
        set->StoreBuffer(buffers[1].get(), 1);
        set->StoreBuffer(buffers[2].get(), 2);
        // Stored again: the file is replaced in place.
        set->StoreBuffer(buffers[1].get(), 0);
    }
    for (const char* file : {"B00001.im7", "B00002.im7", "B00003.im7"}) {
        const std::string a = TestSupport::ReadFile(dir / (std::string("Buffered/") + file));
        const std::string b = TestSupport::ReadFile(dir / (std::string("Direct/") + file));
        EXPECT_EQ(a.size(), b.size()) << file;
        EXPECT_TRUE(a == b) << file;
    }
    EXPECT_TRUE(HasPixelsOf(*direct->LoadBuffer(0), 6));
    EXPECT_TRUE(HasPixelsOf(*direct->LoadBuffer(2), 7));
}
