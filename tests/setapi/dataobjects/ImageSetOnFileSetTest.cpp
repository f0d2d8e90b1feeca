// The typed image views over real plain sets on disk, through the set factory. These need the
// plain set's buffer files (storing, loading and head information). Only parameters named "Set..."
// survive reopening a plain set.

#include <SetApi/dataobjects/ImageSet.h>
#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_Set.h>

#include <RTE/FileSystem.h>

#include "support/TestSupport.h"

#include <gtest/gtest.h>

using namespace DataObjects;
using TestSupport::MessageOf;
using TestSupport::TempDir;

namespace {

QString PathOf(const TempDir& dir, const std::string& name) { return QString::fromStdString(dir / name); }

} // namespace

TEST(ImageSetOnFileSet, CreatesAppendsAndReadsBack)
{
    TempDir dir;
    const QString path = PathOf(dir, "Images");
    {
        ImageSetVariant images(path, false); // no set there yet: a new image set
        EXPECT_TRUE(images.IsEmpty());
        for (unsigned i = 0; i < 4; ++i) {
            Image<unsigned short> image(5, 4, static_cast<unsigned short>(i));
            image.SetScaleX(LinearScale(0.1, 0.0, "mm", "x"));
            image.GetAttributes().Set("Index", static_cast<int>(i));
            if (i == 3)
                image.GetMask()(4, 3) = 0;
            images.Append(image);
        }
        images.AddParameter("SetCamera", "left");
        EXPECT_EQ(images.GetParameter("SetCamera"), "left");
        EXPECT_EQ(images.GetSize(), 4u);
    }

    auto typed = CreateImageSet(path, Algorithms::IndexRange(1, 3, 2), false);
    ASSERT_EQ(typeid(*typed), typeid(RangedImageSet<unsigned short>));
    EXPECT_EQ(typed->GetSize(), 2u);
    EXPECT_EQ(typed->GetParameter("SetCamera"), "left");
    auto last = typed->GetImageVariant(1, 0, 0);
    EXPECT_EQ(dynamic_cast<Image<unsigned short>&>(*last)(0, 0), 3);
    EXPECT_EQ(last->GetScaleX(), LinearScale(0.1, 0.0, "mm", "x"));
    EXPECT_EQ(last->GetAttributes().GetAttributeValue("Index").GetValue<int>(), 3);
    EXPECT_FALSE(last->GetMask().IsValid(4, 3));

    Math::Size3T<unsigned> size;
    unsigned frames = 0;
    typed->GetImageVolumeSize(size, frames);
    EXPECT_EQ(size, Math::Size3T<unsigned>(5, 4, 1));
    EXPECT_EQ(frames, 1u);
}

TEST(ImageSetOnFileSet, PathFormKeepsTheRangeUnchecked)
{
    TempDir dir;
    const QString path = PathOf(dir, "Short");
    {
        ImageSetVariant images(path, true);
        images.Append(Image<float>(2, 2, 1.f));
    }
    auto typed = CreateImageSet(path, Algorithms::IndexRange(0, 5, 1), false);
    EXPECT_EQ(typed->GetSize(), 6u);
    EXPECT_NE(MessageOf([&] { typed->GetImageVariant(5, 0, 0); }), "(no exception)");

    std::shared_ptr<SetApi::I_Set> set = SetApi::C_SetFactory::Instance().Open(path.toStdString());
    EXPECT_EQ(MessageOf([&] { CreateImageSet(*set, Algorithms::IndexRange(0, 5, 1)); }),
              "end range is above set length");
}

TEST(ImageSetOnFileSet, ClearEmptiesTheSetAndCreateNewOverwrites)
{
    TempDir dir;
    const QString path = PathOf(dir, "Cleared");
    ImageSetVariant images(path, true);
    for (int i = 0; i < 3; ++i)
        images.Append(Image<unsigned char>(2, 2, 1));
    images.Clear();
    EXPECT_EQ(images.GetSize(), 0u);

    images.Append(Image<unsigned char>(2, 2, 1));
    ImageSetVariant fresh(path, true);
    EXPECT_TRUE(fresh.IsEmpty());
}

TEST(ImageSetOnFileSet, MissingAndEmptySetsAreRefusedByThePathForm)
{
    TempDir dir;
    const QString missing = PathOf(dir, "Missing");
    EXPECT_EQ(MessageOf([&] { CreateImageSet(missing, Algorithms::IndexRange(0, 0, 1), false); }),
              "Could not open set " + missing.toStdString());
    ImageSetVariant empty(PathOf(dir, "Empty"), true);
    EXPECT_EQ(MessageOf([&] { CreateImageSet(PathOf(dir, "Empty"), Algorithms::IndexRange(0, 0, 1), false); }),
              "Empty set");
}

TEST(ImageSetOnFileSet, DeleteRemovesTheSetFromDisk)
{
    TempDir dir;
    const QString path = PathOf(dir, "Images");
    ImageSetVariant images(path, true);
    images.Append(Image<float>(3, 2, 1.5f));
    EXPECT_TRUE(images.Delete());
    EXPECT_FALSE(SetApi::C_SetFactory::Instance().Exists(dir / "Images"));
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "Images"));
    EXPECT_FALSE(images.Delete()); // nothing left to delete
}
