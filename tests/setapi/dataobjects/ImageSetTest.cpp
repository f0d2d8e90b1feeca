// The typed image views of a set: type checks, ranges, dispatch by pixel type, appending with and
// without masks, and the answers that depend on the kind of set.

#include "MemorySet.h"

#include <SetApi/dataobjects/ImageSet.h>

#include <DataObjects/ImageConversion.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <typeinfo>

using namespace DataObjects;
using SetApi::I_Set;
using TestSupport::MemorySet;
using TestSupport::MessageOf;

namespace {

// Buffer with one image frame of the element type whose first pixel is `first`.
std::unique_ptr<BufferApi::I_Buffer> ImageBuffer(BufferApi::E_DataType type, unsigned first = 0)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    auto* frame = buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateImageFrame(type, 3, 2, 1)));
    static_cast<unsigned char*>(dynamic_cast<BufferApi::I_FrameImage*>(frame)->GetPixelPlane(0)->GetData())[0] =
        static_cast<unsigned char>(first);
    return buffer;
}

void Fill(MemorySet& set, unsigned count, BufferApi::E_DataType type = BufferApi::DATATYPE_BYTE)
{
    for (unsigned i = 0; i < count; ++i)
        set.AppendBuffer(ImageBuffer(type, i).get());
}

// The text of an exception and whether it is exactly RTE::Exception (not a derived kind).
std::pair<std::string, bool> PlainExceptionOf(const std::function<void()>& call)
{
    try {
        call();
    } catch (const RTE::Exception& e) {
        return {e.message().toStdString(), typeid(e) == typeid(RTE::Exception)};
    }
    return {"(no exception)", false};
}

} // namespace

TEST(ImageSetVariant, TypeCheckWantsImageOrRecordingBit)
{
    MemorySet vectors(I_Set::SET_TYPE_VECTOR);
    EXPECT_EQ(MessageOf([&] { ImageSetVariant(vectors, true); }), "No image type input set");
    EXPECT_EQ(MessageOf([&] { ImageSetVariant(static_cast<const I_Set&>(vectors), true); }),
              "No image type input set");
    EXPECT_EQ(MessageOf([&] { ImageSetVariant(vectors, false); }), "(no exception)");

    MemorySet recording(static_cast<I_Set::E_SetType>(I_Set::SET_TYPE_RECORDING | I_Set::SET_TYPE_VECTOR));
    EXPECT_EQ(MessageOf([&] { ImageSetVariant(recording, true); }), "(no exception)");
    EXPECT_EQ(MessageOf([&] { CreateImageSet(vectors, Algorithms::IndexRange(0, 0, 1)); }), "Empty set");
    Fill(vectors, 1);
    EXPECT_EQ(MessageOf([&] { CreateImageSet(vectors, Algorithms::IndexRange(0, 0, 1)); }), "No image type input set");
}

TEST(CreateImageSet, PicksThePixelTypeFromBufferZero)
{
    const std::vector<std::pair<BufferApi::E_DataType, const std::type_info*>> table = {
        {BufferApi::DATATYPE_BYTE, &typeid(RangedImageSet<unsigned char>)},
        {BufferApi::DATATYPE_DOUBLE, &typeid(RangedImageSet<double>)},
        {BufferApi::DATATYPE_FLOAT, &typeid(RangedImageSet<float>)},
        {BufferApi::DATATYPE_INT32, &typeid(RangedImageSet<int>)},
        {BufferApi::DATATYPE_UINT32, &typeid(RangedImageSet<unsigned int>)},
        {BufferApi::DATATYPE_WORD, &typeid(RangedImageSet<unsigned short>)}};
    for (const auto& [type, expected] : table) {
        MemorySet set;
        Fill(set, 1, type);
        set.AppendBuffer(ImageBuffer(BufferApi::DATATYPE_RGB).get());
        auto typed = CreateImageSet(set, Algorithms::IndexRange(0, 1, 1));
        EXPECT_EQ(typeid(*typed), *expected) << type;
    }
}

TEST(CreateImageSet, RefusesEmptyRgbAndUnknownSets)
{
    MemorySet set;
    // Empty even though the range would fit nothing anyway.
    EXPECT_EQ(MessageOf([&] { CreateImageSet(set, Algorithms::IndexRange(5, 1, 0)); }), "Empty set");

    set.AppendBuffer(ImageBuffer(BufferApi::DATATYPE_RGB).get());
    set.AppendBuffer(ImageBuffer(BufferApi::DATATYPE_WORD).get());
    const auto rgb = PlainExceptionOf([&] { CreateImageSet(set, Algorithms::IndexRange(0, 1, 1)); });
    EXPECT_EQ(rgb.first, "RGB image set is not supported");
    EXPECT_TRUE(rgb.second);

    // Codes above 7 cannot be held by the enumeration; 0 is the one code outside 1 to 7 there is.
    set.dataTypeOverride = BufferApi::DATATYPE_UNKNOWN;
    const auto unknown = PlainExceptionOf([&] { CreateImageSet(set, Algorithms::IndexRange(0, 1, 1)); });
    EXPECT_EQ(unknown.first, "Unknown set type");
    EXPECT_TRUE(unknown.second);
}

TEST(CreateImageSet, ChecksTheRangeInOrder)
{
    MemorySet set;
    Fill(set, 4);
    auto create = [&](unsigned first, unsigned last, unsigned increment) {
        return MessageOf([&] { CreateImageSet(set, Algorithms::IndexRange(first, last, increment)); });
    };
    EXPECT_EQ(create(9, 7, 0), "increment is zero");
    EXPECT_EQ(create(9, 4, 1), "end range is above set length");
    EXPECT_EQ(create(3, 2, 1), "invalid data range");
    EXPECT_EQ(create(3, 3, 5), "(no exception)");
    EXPECT_EQ(create(0, 3, 1), "(no exception)");
}

TEST(RangedImageSet, SizeAndIndexMapping)
{
    MemorySet set;
    Fill(set, 11);
    auto typed = CreateImageSet(set, Algorithms::IndexRange(2, 10, 3));
    ASSERT_EQ(typed->GetSize(), 3u);
    EXPECT_FALSE(typed->IsEmpty());

    std::vector<unsigned> firstPixels;
    unsigned count = 0;
    for (auto it = typed->begin(); it != typed->end(); ++it, ++count) {
        std::unique_ptr<ImageBufferVariant> images = *it;
        firstPixels.push_back(dynamic_cast<Image<unsigned char>&>(images->GetImageVolume(0).GetXYPlane(0))(0, 0));
    }
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(set.loaded, (std::vector<unsigned>{2, 5, 8}));
    EXPECT_EQ(firstPixels, (std::vector<unsigned>{2, 5, 8}));

    RangedImageSet<unsigned char> single(set, Algorithms::IndexRange(4, 4, 5));
    EXPECT_EQ(single.GetSize(), 1u);
    EXPECT_EQ(single.GetImage(0)->GetPixels()[0], 4);
}

TEST(ImageSetVariant, IteratorsCompareByIndexAlone)
{
    MemorySet a;
    MemorySet b;
    ImageSetVariant first(a, true);
    ImageSetVariant second(b, true);
    EXPECT_TRUE(first.begin() == second.begin());
    EXPECT_TRUE(first.begin() == first.end());
    Fill(a, 2);
    EXPECT_EQ(first.end().GetIndex(), 2u);
    EXPECT_TRUE(++first.begin() != first.end());
}

TEST(ImageSetVariant, ReadingFramesAndPlanes)
{
    MemorySet set;
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    auto* image = dynamic_cast<BufferApi::I_FrameImage*>(buffer->AddFrame(
        std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, 4, 3, 2))));
    static_cast<float*>(image->GetPixelPlane(1)->GetData())[0] = 2.5f;
    image->AddMask();
    static_cast<unsigned char*>(image->GetMask()->GetPlane(1)->GetData())[1] = 0;
    buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateVectorFrame(BufferApi::DATATYPE_FLOAT, 2, 2, 1, 8)));
    set.AppendBuffer(buffer.get());
    ImageSetVariant images(set, true);

    Math::Size3T<unsigned> size;
    unsigned frames = 0;
    images.GetImageVolumeSize(size, frames);
    EXPECT_EQ(size, Math::Size3T<unsigned>(4, 3, 2));
    EXPECT_EQ(frames, 2u);

    auto plane = images.GetImageVariant(0, 0, 1);
    EXPECT_EQ(dynamic_cast<Image<float>&>(*plane)(0, 0), 2.5f);
    EXPECT_FALSE(plane->GetMask().IsValid(1, 0));
    EXPECT_EQ(dynamic_cast<ImageData<float>&>(*images.GetImageDataVariant(0, 0, 1))(0, 0), 2.5f);
    EXPECT_EQ(images.GetImageVolumeVariant(0, 0)->GetDepth(), 2u);

    EXPECT_EQ(MessageOf([&] { images.GetImageVariant(0, 1, 0); }), "Frame of buffer is not from type image");
    EXPECT_EQ(MessageOf([&] { images.GetImageDataVariant(0, 1, 0); }), "Frame of buffer is not from type image");
    EXPECT_EQ(MessageOf([&] { images.GetImageBufferVariant(0); }), "Frame of buffer is not from type image");

    ImageSet<double> wrongType(set, true);
    EXPECT_NE(MessageOf([&] { wrongType.GetImage(0); }), "(no exception)");
}

TEST(ImageSetVariant, VolumeSizeOfAnEmptySet)
{
    MemorySet set;
    Math::Size3T<unsigned> size(7, 7, 7);
    unsigned frames = 0;
    ImageSetVariant(set, true).GetImageVolumeSize(size, frames);
    EXPECT_EQ(size, Math::Size3T<unsigned>(0, 0, 1));
    EXPECT_EQ(frames, 1u);
}

TEST(ImageSetVariant, AppendStoresAMaskOnlyWhenSomeByteIsZero)
{
    MemorySet set;
    ImageSetVariant images(set, true);

    Image<unsigned short> image(3, 2, 5);
    image.GetMask().Fill(255); // non-zero everywhere: no mask at all
    images.Append(image);
    EXPECT_FALSE(set.Buffer(0).GetFrame(0)->HasMask());

    image.GetMask()(2, 1) = 0;
    images.Append(std::move(image));
    ASSERT_TRUE(set.Buffer(1).GetFrame(0)->HasMask());
    EXPECT_FALSE(images.GetImageVariant(1, 0, 0)->GetMask().IsValid(2, 1));

    images.Append(ImageData<int>(2, 2, 1));
    EXPECT_FALSE(set.Buffer(2).GetFrame(0)->HasMask());
    EXPECT_EQ(set.Buffer(2).GetFrame(0)->GetDataType(), BufferApi::DATATYPE_INT32);

    ImageVolumeVariant volume;
    volume.AddXYPlane(std::make_unique<Image<float>>(2, 2));
    volume.AddXYPlane(std::make_unique<Image<float>>(2, 2));
    images.Append(volume);
    EXPECT_FALSE(set.Buffer(3).GetFrame(0)->HasMask());
    volume.GetXYPlane(1).GetMask()(1, 1) = 0;
    images.Append(std::move(volume));
    EXPECT_TRUE(set.Buffer(4).GetFrame(0)->HasMask());
    EXPECT_EQ(set.Buffer(4).GetFrame(0)->GetDepth(), 2u);

    ImageBufferVariant buffer;
    for (int frame = 0; frame < 2; ++frame) {
        ImageVolumeVariant frameVolume;
        frameVolume.AddXYPlane(std::make_unique<Image<double>>(2, 2));
        buffer.AddImageVolume(std::move(frameVolume));
    }
    images.Append(buffer);
    EXPECT_FALSE(set.Buffer(5).GetFrame(1)->HasMask());
    buffer.GetImageVolume(1).GetXYPlane(0).GetMask()(0, 0) = 0;
    images.Append(std::move(buffer));
    EXPECT_TRUE(set.Buffer(6).GetFrame(0)->HasMask());
    EXPECT_TRUE(set.Buffer(6).GetFrame(1)->HasMask());
    EXPECT_EQ(images.GetSize(), 7u);
}

TEST(ImageSetVariant, AppendRefusesUnsupportedPixelTypes)
{
    MemorySet set;
    ImageSetVariant images(set, true);
    EXPECT_EQ(MessageOf([&] { images.Append(Image<short>(2, 2)); }),
              "Image type not supported by macro. Function is 'CreateBufferFromImageT(...)'.");
    EXPECT_EQ(MessageOf([&] { images.Append(ImageData<short>(2, 2)); }),
              "Image type not supported by macro. Function is 'CreateBufferFromImageDataT(...)'.");
    EXPECT_EQ(set.GetSize(), 0u);
}

TEST(ImageSetVariant, OtherSetsIgnoreParametersAndClearRemovesFromTheTop)
{
    MemorySet set;
    Fill(set, 3);
    ImageSetVariant images(set, true);
    images.AddParameter("Name", "Value");
    EXPECT_EQ(images.GetParameter("Name"), "");

    ImageSetVariant copy(images);
    EXPECT_EQ(&copy.GetSet(), &set);
    copy.Clear();
    EXPECT_EQ(set.removed, (std::vector<unsigned>{2, 1, 0}));
    EXPECT_TRUE(images.IsEmpty());
}
