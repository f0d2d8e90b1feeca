#include <DataObjects/BufferAttributes.h>
#include <DataObjects/ImageConversion.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <memory>

using namespace DataObjects;
using TestSupport::MessageOf;

namespace {

template <typename T>
Image<T> MakeImage(unsigned width, unsigned height)
{
    Image<T> image(width, height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            image(x, y) = static_cast<T>(x + 10 * y + 1);
    image.SetScaleX(LinearScale(0.5, -1.0, "mm", "x position"));
    image.SetScaleY(LinearScale(0.25, 2.0, "mm", "y position"));
    image.SetScaleI(LinearScale(3.0, 0.0, "counts", "intensity"));
    image.GetAttributes().Set("Camera", "cam 1");
    image.GetAttributes().Set("Exposure", std::vector<double>{1.5, 2.5});
    ScalarField field("Temperature", BufferApi::DATATYPE_DOUBLE, width, height, LinearScale(1.0, 273.15, "K", "T"));
    field.GetDataAs<double>()[1] = 4.5;
    image.GetScalarFields().Set(field);
    return image;
}

// The frame of a one-frame buffer, taken over as an image.
std::unique_ptr<ImageVariant> Reload(BufferApi::I_Buffer& buffer, bool withMask)
{
    auto* frame = dynamic_cast<BufferApi::I_FrameImage*>(buffer.GetFrame(0));
    EXPECT_NE(frame, nullptr);
    return GetImage(std::move(*frame), 0, withMask);
}

template <typename T>
class ImageRoundTrip : public ::testing::Test {};

using PixelTypes = ::testing::Types<unsigned char, unsigned short, int, unsigned int, float, double>;
TYPED_TEST_SUITE(ImageRoundTrip, PixelTypes);

void ExpectSameMetadata(const ImageVariant& expected, const ImageVariant& actual)
{
    EXPECT_EQ(actual.GetScaleX(), expected.GetScaleX());
    EXPECT_EQ(actual.GetScaleY(), expected.GetScaleY());
    EXPECT_EQ(actual.GetScaleI(), expected.GetScaleI());
    EXPECT_EQ(actual.GetAttributes(), expected.GetAttributes());
    EXPECT_EQ(actual.GetScalarFields(), expected.GetScalarFields());
}

} // namespace

TYPED_TEST(ImageRoundTrip, WithMask)
{
    Image<TypeParam> image = MakeImage<TypeParam>(4, 3);
    image.GetMask()(2, 1) = 0;
    auto buffer = CreateBufferFromImage(image, true);

    ASSERT_EQ(buffer->GetNumberOfFrames(), 1u);
    const BufferApi::I_Frame& frame = *buffer->GetFrame(0);
    EXPECT_EQ(frame.GetDataType(), BufferApi::DataTypeOf<TypeParam>::value);
    ASSERT_TRUE(frame.HasMask());
    EXPECT_EQ(static_cast<const unsigned char*>(frame.GetMask()->GetPlane(0)->GetData())[1 * 4 + 2], 0);
    // The z scale is the identity.
    EXPECT_DOUBLE_EQ(frame.GetScale(BufferApi::SCALE_Z).GetFactor(), 1.0);
    EXPECT_DOUBLE_EQ(frame.GetScale(BufferApi::SCALE_Z).GetOffset(), 0.0);
    EXPECT_EQ(frame.GetScale(BufferApi::SCALE_Z).GetUnit(), "");

    auto reloaded = Reload(*buffer, true);
    auto* typed = dynamic_cast<Image<TypeParam>*>(reloaded.get());
    ASSERT_NE(typed, nullptr);
    EXPECT_EQ(typed->GetData(), image.GetData());
    EXPECT_EQ(typed->GetMask(), image.GetMask());
    ExpectSameMetadata(image, *typed);
}

TYPED_TEST(ImageRoundTrip, WithoutMask)
{
    Image<TypeParam> image = MakeImage<TypeParam>(3, 5);
    image.GetMask()(0, 0) = 0;
    auto buffer = CreateBufferFromImage(std::move(image), false);
    EXPECT_FALSE(buffer->GetFrame(0)->HasMask());
    auto reloaded = Reload(*buffer, true);
    EXPECT_TRUE(reloaded->GetMask().IsAllValid());
    EXPECT_EQ(reloaded->GetWidth(), 3u);
    EXPECT_EQ(reloaded->GetHeight(), 5u);
    EXPECT_EQ(dynamic_cast<Image<TypeParam>&>(*reloaded)(2, 4), static_cast<TypeParam>(43));
}

TYPED_TEST(ImageRoundTrip, ImageData)
{
    ImageData<TypeParam> data(2, 2, static_cast<TypeParam>(7));
    data(1, 1) = static_cast<TypeParam>(9);
    auto buffer = CreateBufferFromImageData(data);
    EXPECT_FALSE(buffer->GetFrame(0)->HasMask());
    auto* frame = dynamic_cast<BufferApi::I_FrameImage*>(buffer->GetFrame(0));
    auto reloaded = GetImageData(std::move(*frame), 0);
    EXPECT_EQ(dynamic_cast<ImageData<TypeParam>&>(*reloaded), data);
}

TEST(ImageConversion, MaskIsIgnoredWhenNotAsked)
{
    Image<float> image = MakeImage<float>(2, 2);
    image.GetMask().Fill(0);
    auto buffer = CreateBufferFromImage(image, true);
    EXPECT_TRUE(Reload(*buffer, false)->GetMask().IsAllValid());
    EXPECT_FALSE(Reload(*buffer, true)->GetMask().IsValid(1, 1));
}

TEST(ImageConversion, AttributesReplaceThoseOfTheFrame)
{
    Image<unsigned short> image = MakeImage<unsigned short>(2, 2);
    auto frame = CreateFrameFromImage(image, false);
    EXPECT_EQ(C_BufferAttributes(*frame).GetAttributeValue("Camera").ToString(), "cam 1");
    image.GetAttributes().Set("Camera", "cam 2");
    auto again = CreateFrameFromImage(std::move(image), false);
    EXPECT_EQ(C_BufferAttributes(*again).GetAttributeValue("Camera").ToString(), "cam 2");
    EXPECT_EQ(again->GetAttributeStore().GetCount(), 2u);
}

TEST(ImageConversion, VolumeAndBufferRoundTrip)
{
    ImageBufferVariant images;
    images.GetGlobalAttributes().Set("Run", 3);
    for (unsigned frame = 0; frame < 2; ++frame) {
        ImageVolumeVariant volume;
        volume.SetName(frame == 0 ? "Camera 1" : "Camera 2");
        for (unsigned plane = 0; plane < 3; ++plane) {
            auto image = std::make_unique<Image<int>>(MakeImage<int>(4, 2));
            (*image)(0, 0) = int(100 * frame + plane);
            image->GetScalarFields().Get("Temperature").GetDataAs<double>()[0] = plane;
            if (frame == 1 && plane == 2)
                image->GetMask()(3, 1) = 0;
            volume.AddXYPlane(std::move(image));
        }
        images.AddImageVolume(std::move(volume));
    }
    EXPECT_FALSE(images.IsMaskAllValid());

    auto buffer = CreateBufferFromImageBuffer(images, true);
    ASSERT_EQ(buffer->GetNumberOfFrames(), 2u);
    EXPECT_EQ(buffer->GetFrame(1)->GetDepth(), 3u);
    EXPECT_EQ(buffer->GetFrame(1)->GetName(), "Camera 2");
    EXPECT_EQ(GetBufferAttributes(*buffer).GetAttributeValue("Run"), C_AttributeValue(3));

    auto copy = buffer->Clone();
    auto volume = GetImageVolume(std::move(*copy), 1, true);
    ASSERT_EQ(volume->GetDepth(), 3u);
    EXPECT_EQ(dynamic_cast<Image<int>&>(volume->GetXYPlane(2))(0, 0), 102);
    EXPECT_FALSE(volume->GetMaskVolume().GetMask(2).IsValid(3, 1));
    EXPECT_TRUE(volume->GetMaskVolume().GetMask(1).IsAllValid());
    EXPECT_DOUBLE_EQ(volume->GetXYPlane(2).GetScalarFields().Get("Temperature").GetValue(0, 0), 2.0);

    auto reloaded = GetImageBuffer(std::move(*buffer), true);
    ASSERT_EQ(reloaded->GetListSize(), 2u);
    EXPECT_EQ(reloaded->GetGlobalAttributes(), images.GetGlobalAttributes());
    EXPECT_EQ(reloaded->GetImageVolume(0).GetName(), "Camera 1");
    for (unsigned frame = 0; frame < 2; ++frame)
        for (unsigned plane = 0; plane < 3; ++plane) {
            const auto& expected = dynamic_cast<const Image<int>&>(images.GetImageVolume(frame).GetXYPlane(plane));
            const auto& actual = dynamic_cast<const Image<int>&>(reloaded->GetImageVolume(frame).GetXYPlane(plane));
            EXPECT_EQ(actual.GetData(), expected.GetData());
            EXPECT_EQ(actual.GetMask(), expected.GetMask());
            ExpectSameMetadata(expected, actual);
        }
}

TEST(ImageConversion, BadFramesAndPlanesAreRefused)
{
    std::unique_ptr<BufferApi::I_FrameImage> rgb(BufferApi::CreateImageFrame(BufferApi::DATATYPE_RGB, 2, 2, 1));
    EXPECT_EQ(MessageOf([&] { GetImage(std::move(*rgb), 0, true); }), "RGB images are not supported");
    EXPECT_EQ(MessageOf([&] { GetImageData(std::move(*rgb), 0); }), "RGB images are not supported");

    std::unique_ptr<BufferApi::I_FrameImage> frame(BufferApi::CreateImageFrame(BufferApi::DATATYPE_BYTE, 2, 2, 2));
    EXPECT_EQ(MessageOf([&] { GetImage(std::move(*frame), 2, true); }),
              "Plane 2 is out of range for a frame of depth 2");

    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateVectorFrame(BufferApi::DATATYPE_FLOAT, 2, 2, 1, 8)));
    EXPECT_EQ(MessageOf([&] { GetImageVolume(std::move(*buffer), 0, true); }), "Frame of buffer is not from type image");
    EXPECT_EQ(MessageOf([&] { GetImageBuffer(std::move(*buffer), true); }), "Frame of buffer is not from type image");
    EXPECT_EQ(MessageOf([&] { GetImageVolume(std::move(*buffer), 1, true); }),
              "Frame 1 is out of range for a buffer of 1 frames");
    EXPECT_EQ(MessageOf([&] { CreateBufferFromImageVolume(ImageVolumeVariant(), false); }), "Image volume has no planes");
}

TEST(ImageConversion, PixelTypesTheBuffersCannotHoldAreRefused)
{
    Image<long long> image(2, 2);
    ImageData<char> data(2, 2);
    EXPECT_EQ(MessageOf([&] { CreateBufferFromImage(image, false); }),
              "Image type not supported by macro. Function is 'CreateBufferFromImageT(...)'.");
    EXPECT_EQ(MessageOf([&] { CreateFrameFromImage(std::move(image), false); }),
              "Image type not supported by macro. Function is 'CreateBufferFromImageT(...)'.");
    EXPECT_EQ(MessageOf([&] { CreateBufferFromImageData(data); }),
              "Image type not supported by macro. Function is 'CreateBufferFromImageDataT(...)'.");
    EXPECT_EQ(MessageOf([&] { CreateFrameFromImageData(data); }),
              "Image type not supported by macro. Function is 'CreateFrameFromImageDataT(...)'.");
}

TEST(ImageObjects, VolumesRefuseMixedPlanesAndCopyDeeply)
{
    ImageVolumeVariant volume;
    volume.AddXYPlane(std::make_unique<Image<float>>(2, 2, 1.f));
    EXPECT_EQ(MessageOf([&] { volume.AddXYPlane(std::make_unique<Image<double>>(2, 2)); }),
              "Image volume planes differ in pixel type or size");
    EXPECT_EQ(MessageOf([&] { volume.AddXYPlane(std::make_unique<Image<float>>(2, 3)); }),
              "Image volume planes differ in pixel type or size");
    ImageVolumeVariant copy = volume;
    dynamic_cast<Image<float>&>(volume.GetXYPlane(0))(0, 0) = 5.f;
    EXPECT_EQ(dynamic_cast<Image<float>&>(copy.GetXYPlane(0))(0, 0), 1.f);
    EXPECT_EQ(MessageOf([&] { copy.GetXYPlane(1); }), "Image volume plane index out of range");
    EXPECT_EQ(MessageOf([&] { copy.GetMaskVolume().GetMask(1); }), "Mask plane index out of range");

    Image<float> image(2, 2);
    EXPECT_EQ(MessageOf([&] { image.SetMask(Mask(3, 2)); }), "Mask size does not match the image size");
}

TEST(LinearScale, ConvertsToAndFromRuntimeAndFrameScales)
{
    const LinearScale scale(2.0, -1.0, "mm", "position");
    const RTE::S_Scale runtime = scale;
    EXPECT_EQ(runtime, RTE::S_Scale(2.0, -1.0, "mm", "position"));
    EXPECT_EQ(LinearScale(runtime), scale);

    std::unique_ptr<BufferApi::I_FrameImage> frame(BufferApi::CreateImageFrame(BufferApi::DATATYPE_BYTE, 1, 1, 1));
    frame->SetScale(BufferApi::SCALE_I, scale.CreateBufferScale());
    EXPECT_EQ(GetScaleFromFrame(*frame, BufferApi::SCALE_I), scale);
    EXPECT_EQ(GetScaleFromFrame(*frame, BufferApi::SCALE_X), LinearScale());
}
