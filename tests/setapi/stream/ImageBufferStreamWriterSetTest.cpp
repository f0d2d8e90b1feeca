// The write-only stream set: in-order storing through I_Set, refusals, and the factory told of
// the set only once its streams are complete.

#include "RecordingImages.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/I_SetFactoryObserver.h>
#include <SetApi/stream/ImageBufferStreamWriterSet.h>

#include <RTE/Exception.h>

#include "support/TestSupport.h"

#include <limits>

using RecordingTesting::CompareCameraFrame;
using RecordingTesting::MakeCameraImage;
using SetApi::C_SetFactory;
using SetApi::I_Set;
using SetApi::ImageBufferStreamWriterSet;
using TestSupport::TempDir;

namespace {

const unsigned Widths[2] = {16, 12};
const unsigned Heights[2] = {8, 10};

std::unique_ptr<BufferApi::I_Buffer> Image(unsigned image) { return MakeCameraImage(2, Widths, Heights, image); }

// Opens the set when it is announced, as a data browser would.
struct OpeningObserver : SetApi::I_SetFactoryObserver {
    void OnCreate(const std::string& path) override
    {
        created = path;
        const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(path);
        sizeWhenAnnounced = set->IsOpen() ? int(set->GetSize()) : -1;
    }
    void OnRemove(const std::string&) override {}
    void OnRename(const std::string&, const std::string&) override {}
    std::string created;
    int sizeWhenAnnounced = -2;
};

} // namespace

TEST(ImageBufferStreamWriterSet, StoresInOrderAndTheFactoryHearsOfTheSetWhenItIsComplete)
{
    TempDir dir;
    const std::string name = dir / "Result";
    OpeningObserver observer;
    C_SetFactory::Instance().Attach(&observer);
    {
        ImageBufferStreamWriterSet set(name + ".set", I_Set::SET_TYPE_IMAGE);
        EXPECT_EQ(set.GetName(), name);
        EXPECT_EQ(set.GetTitle(), QStringLiteral("Result"));
        EXPECT_EQ(set.GetTypeIdentifier(), QStringLiteral("StreamSet"));
        EXPECT_TRUE(set.IsOpen());
        EXPECT_EQ(set.GetSetType(), I_Set::SET_TYPE_IMAGE);
        unsigned count = 9, first = 9, last = 0;
        set.GetInfo(count, first, last);
        EXPECT_EQ(count, 0u);
        EXPECT_EQ(first, 0u);
        EXPECT_EQ(last, std::numeric_limits<unsigned>::max());

        set.StoreBuffer(Image(0).get(), 0);
        set.AppendBuffer(Image(1).get());
        set.StoreBuffer(Image(2).get(), 2);
        const TestSupport::LogCapture log;
        EXPECT_THROW(set.StoreBuffer(Image(5).get(), 5), RTE::VerificationFailed);
        EXPECT_EQ(set.GetSize(), 3u);
        EXPECT_THROW(set.LoadBuffer(0), RTE::LogicError);
        // A store the writer refuses (another shape) leaves the count.
        std::unique_ptr<BufferApi::I_Buffer> odd(MakeCameraImage(1, Widths, Heights, 3));
        EXPECT_THROW(set.AppendBuffer(odd.get()), RTE::Exception);
        EXPECT_EQ(set.GetSize(), 3u);
        set.GetInfo(count, first, last);
        EXPECT_EQ(last, 2u);

        EXPECT_FALSE(set.WriteSetFile());
        EXPECT_FALSE(set.IsVirtualDataSet());
        EXPECT_FALSE(set.SetPackTypeWord(1));
        EXPECT_FALSE(set.HasFullDataTraces());
        EXPECT_EQ(set.GetSourceIndex(2), 0u);
        int value = 0;
        EXPECT_FALSE(set.GetParameter("SetType", value));
        EXPECT_FALSE(set.SetParameter("SetType", 1));
        EXPECT_TRUE(observer.created.empty()) << "announced before its streams were closed";
    }
    C_SetFactory::Instance().Detach(&observer);
    EXPECT_EQ(observer.created, name);
    EXPECT_EQ(observer.sizeWhenAnnounced, 3);

    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
    ASSERT_TRUE(set->IsOpen());
    ASSERT_EQ(set->GetSize(), 3u);
    for (unsigned image = 0; image < 3; ++image) {
        const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(image);
        for (unsigned camera = 0; camera < 2; ++camera)
            EXPECT_EQ(CompareCameraFrame(*buffer, camera, Widths[camera], Heights[camera], image), "");
    }
}
