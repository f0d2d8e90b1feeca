#include "model/FrameFactory.h"

#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/ImagePlaneAccess.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include <memory>

using namespace BufferApi;

namespace {
template <typename T>
void ExpectAccess(E_DataType type, T value)
{
    std::unique_ptr<I_FrameImage> frame(CreateImageFrame(type, 3, 2, 2));
    dynamic_cast<I_Plane<T>&>(*frame->GetPixelPlane(1))(2, 1) = value;
    C_ImagePlaneAccess access(frame.get(), 1);
    EXPECT_EQ(access.GetWidth(), 3u);
    EXPECT_EQ(access.GetHeight(), 2u);
    EXPECT_EQ(access.GetDataType(), type);
    EXPECT_EQ(access.GetData(), frame->GetPixelPlane(1)->GetData());
    EXPECT_EQ(&access.GetPlane(), frame->GetPixelPlane(1));
    EXPECT_EQ(access.GetValue(2, 1), double(value));
    EXPECT_EQ(access.GetValue(1, 1), 0.0);
    EXPECT_EQ(access.template GetRow<T>(1)[2], value);
}
} // namespace

TEST(ImagePlaneAccessTest, EveryElementType)
{
    ExpectAccess<unsigned char>(DATATYPE_BYTE, 255);
    ExpectAccess<unsigned int>(DATATYPE_RGB, 0x00FF8040u);
    ExpectAccess<double>(DATATYPE_DOUBLE, -1.0e300);
    ExpectAccess<float>(DATATYPE_FLOAT, 0.5f);
    ExpectAccess<int>(DATATYPE_INT32, -2147483647 - 1);
    ExpectAccess<unsigned int>(DATATYPE_UINT32, 4294967295u);
    ExpectAccess<unsigned short>(DATATYPE_WORD, 65535);
}

TEST(ImagePlaneAccessTest, PixelComponentOrFirstComponent)
{
    std::unique_ptr<I_Frame> image(CreateImageFrame(DATATYPE_WORD, 2, 2, 1));
    image->RemoveComponent("PIXEL");
    image->AddComponent("Other", DATATYPE_WORD);
    // An image frame is read through its pixels only.
    EXPECT_THROW(C_ImagePlaneAccess(image.get(), 0), RTE::VerificationFailed);

    std::unique_ptr<I_Frame> vector(CreateVectorFrame(DATATYPE_FLOAT, 2, 2, 1, 8));
    C_ImagePlaneAccess access(vector.get(), 0);
    EXPECT_EQ(&access.GetPlane(), vector->GetComponent("U")->GetPlane(0));
}

TEST(ImagePlaneAccessTest, MissingPlanesAreRefused)
{
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 2, 2, 2));
    EXPECT_THROW(C_ImagePlaneAccess(frame.get(), 2), RTE::VerificationFailed);
    EXPECT_THROW(C_ImagePlaneAccess(nullptr, 0), RTE::VerificationFailed);
    auto empty = Private::CreateEmptyFrame(E_FrameKind::Vector, DATATYPE_FLOAT, 2, 2, 1, 8,
                                           Private::PlaneMemory::Zeroed);
    EXPECT_THROW(C_ImagePlaneAccess(empty.get(), 0), RTE::VerificationFailed);
    auto head = Private::CreateFrame(E_FrameKind::Image, DATATYPE_WORD, 2, 2, 1, 1, Private::PlaneMemory::None);
    EXPECT_THROW(C_ImagePlaneAccess(head.get(), 0), RTE::VerificationFailed);
}
