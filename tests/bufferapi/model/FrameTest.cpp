#include "model/FrameFactory.h"

#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace BufferApi;
using Private::PlaneMemory;

namespace {

std::vector<std::string> ComponentNames(const I_Frame& frame)
{
    std::vector<std::string> names;
    for (unsigned i = 0; i < frame.GetComponentCount(); ++i)
        names.push_back(frame.GetComponentAt(i)->GetName());
    return names;
}

std::unique_ptr<I_FrameImage> Image(E_DataType type, unsigned w, unsigned h, unsigned depth)
{
    return std::unique_ptr<I_FrameImage>(CreateImageFrame(type, w, h, depth));
}

} // namespace

TEST(FrameTest, KindsCarryTheirStandardComponents)
{
    auto image = Image(DATATYPE_WORD, 8, 4, 2);
    EXPECT_EQ(image->GetKind(), E_FrameKind::Image);
    EXPECT_EQ(ComponentNames(*image), (std::vector<std::string>{"PIXEL"}));
    EXPECT_EQ(image->GetComponent("PIXEL")->GetPlaneCount(), 2u);
    EXPECT_EQ(image->GetComponent("PIXEL")->GetDataType(), DATATYPE_WORD);
    EXPECT_EQ(image->GetPixelPlane(1), image->GetComponent("PIXEL")->GetPlane(1));
    EXPECT_TRUE(image->HasData());
    EXPECT_TRUE(image->GetName().empty());
    EXPECT_TRUE(image->GetSettings().empty());

    std::unique_ptr<I_FrameVector> vector(CreateVectorFrame(DATATYPE_FLOAT, 5, 5, 1, 16));
    EXPECT_EQ(vector->GetKind(), E_FrameKind::Vector);
    EXPECT_EQ(vector->GetGridSize(), 16u);
    EXPECT_EQ(ComponentNames(*vector), (std::vector<std::string>{"U", "V"}));

    std::unique_ptr<I_FrameVector3C> vector3(CreateVector3CFrame(DATATYPE_DOUBLE, 5, 5, 3, 8));
    EXPECT_EQ(vector3->GetKind(), E_FrameKind::Vector3C);
    EXPECT_EQ(ComponentNames(*vector3), (std::vector<std::string>{"U", "V", "W"}));
    EXPECT_EQ(dynamic_cast<I_FrameVector*>(vector3.get()), nullptr);
    EXPECT_EQ(vector3->GetComponent("W")->GetPlaneCount(), 3u);
}

TEST(FrameTest, CreationRefusesBadShapes)
{
    EXPECT_THROW(Image(DATATYPE_BYTE, 0, 4, 1), RTE::VerificationFailed);
    EXPECT_THROW(Image(DATATYPE_BYTE, 4, 0, 1), RTE::VerificationFailed);
    EXPECT_THROW(Image(DATATYPE_BYTE, 4, 4, 0), RTE::VerificationFailed);
    EXPECT_THROW(Image(DATATYPE_UNKNOWN, 4, 4, 1), RTE::VerificationFailed);
    EXPECT_THROW(Private::CreateFrame(E_FrameKind(9), DATATYPE_BYTE, 4, 4, 1, 1, PlaneMemory::Zeroed),
                 RTE::VerificationFailed);
}

TEST(FrameTest, ComponentsAddFindRemove)
{
    auto frame = Image(DATATYPE_BYTE, 3, 2, 2);
    I_Component* extra = frame->AddComponent("Extra", DATATYPE_DOUBLE);
    EXPECT_EQ(extra->GetPlaneCount(), 2u);
    EXPECT_EQ(extra->GetPlane(1)->GetWidth(), 3u);
    EXPECT_EQ(extra->GetPlane(1)->GetDataType(), DATATYPE_DOUBLE);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(extra->GetPlane(1)->GetData()) % 4096, 0u);
    EXPECT_EQ(frame->GetComponent("Extra"), extra);
    EXPECT_EQ(frame->GetComponent("extra"), nullptr);

    EXPECT_THROW(frame->AddComponent("Extra", DATATYPE_BYTE), RTE::VerificationFailed);
    EXPECT_THROW(frame->AddComponent("PIXEL", DATATYPE_BYTE), RTE::VerificationFailed);
    EXPECT_THROW(frame->AddComponent("", DATATYPE_BYTE), RTE::VerificationFailed);
    EXPECT_THROW(frame->AddComponent("Bad", E_DataType(0)), RTE::VerificationFailed);
    EXPECT_EQ(frame->GetComponentCount(), 2u);

    EXPECT_THROW(frame->GetComponentAt(2), RTE::VerificationFailed);
    EXPECT_THROW(extra->GetPlane(2), RTE::VerificationFailed);

    EXPECT_TRUE(frame->RemoveComponent("PIXEL"));
    EXPECT_FALSE(frame->RemoveComponent("PIXEL"));
    EXPECT_EQ(ComponentNames(*frame), (std::vector<std::string>{"Extra"}));
    EXPECT_THROW(frame->GetPixelPlane(0), RTE::VerificationFailed);
}

TEST(FrameTest, SetPlaneReplacesOnlyAMatchingPlane)
{
    auto frame = Image(DATATYPE_WORD, 2, 2, 3);
    I_Component* pixels = frame->GetComponent("PIXEL");
    std::vector<unsigned short> memory = {1, 2, 3, 4};
    pixels->SetPlane(2, std::unique_ptr<I_PlaneBase>(CreatePlane(DATATYPE_WORD, 2, 2, memory.data())));
    EXPECT_EQ(pixels->GetPlane(2)->GetData(), memory.data());

    EXPECT_THROW(pixels->SetPlane(0, std::unique_ptr<I_PlaneBase>(CreatePlane(DATATYPE_FLOAT, 2, 2, nullptr))),
                 RTE::VerificationFailed);
    EXPECT_THROW(pixels->SetPlane(0, std::unique_ptr<I_PlaneBase>(CreatePlane(DATATYPE_WORD, 3, 2, nullptr))),
                 RTE::VerificationFailed);
    EXPECT_THROW(pixels->SetPlane(3, std::unique_ptr<I_PlaneBase>(CreatePlane(DATATYPE_WORD, 2, 2, nullptr))),
                 RTE::VerificationFailed);
    EXPECT_THROW(pixels->SetPlane(0, nullptr), RTE::VerificationFailed);
}

TEST(FrameTest, MaskIsAddedOnceAsAllValidBytes)
{
    auto frame = Image(DATATYPE_FLOAT, 5, 3, 2);
    EXPECT_FALSE(frame->HasMask());
    I_Component* mask = frame->AddMask();
    ASSERT_NE(mask, nullptr);
    EXPECT_TRUE(frame->HasMask());
    EXPECT_EQ(mask->GetName(), "MASK");
    EXPECT_EQ(mask->GetDataType(), DATATYPE_BYTE);
    ASSERT_EQ(mask->GetPlaneCount(), 2u);
    for (unsigned p = 0; p < 2; ++p) {
        const auto& plane = dynamic_cast<const I_Plane<unsigned char>&>(*mask->GetPlane(p));
        for (unsigned y = 0; y < 3; ++y)
            for (unsigned x = 0; x < 5; ++x)
                EXPECT_EQ(plane(x, y), 1);
    }
    dynamic_cast<I_Plane<unsigned char>&>(*mask->GetPlane(0))(0, 0) = 0;
    EXPECT_EQ(frame->AddMask(), mask); // a second call keeps the mask as it is
    EXPECT_EQ(dynamic_cast<I_Plane<unsigned char>&>(*mask->GetPlane(0))(0, 0), 0);
    EXPECT_EQ(frame->GetComponentCount(), 2u);
}

TEST(FrameTest, ScalesStartAsIdentityAndRestore)
{
    auto frame = Image(DATATYPE_BYTE, 2, 2, 1);
    for (unsigned axis = 0; axis < SCALE_TYPE_COUNT; ++axis) {
        const I_Scale& scale = frame->GetScale(E_ScaleType(axis));
        EXPECT_EQ(scale.GetFactor(), 1.0);
        EXPECT_EQ(scale.GetOffset(), 0.0);
        EXPECT_TRUE(scale.GetUnit().empty());
        EXPECT_TRUE(scale.GetDescription().empty());
    }
    frame->SetScale(SCALE_Y, std::unique_ptr<I_Scale>(
                                 C_ScaleFactory::GetInstance().CreateLinearScale(0.5, -3, "mm", "position")));
    EXPECT_EQ(frame->GetScale(SCALE_Y).Apply(10), 2.0);
    EXPECT_EQ(frame->GetScale(SCALE_Y).GetUnit(), "mm");
    EXPECT_EQ(frame->GetScale(SCALE_X).GetFactor(), 1.0);
    frame->SetScale(SCALE_Y, nullptr);
    EXPECT_EQ(frame->GetScale(SCALE_Y).GetFactor(), 1.0);
    EXPECT_TRUE(frame->GetScale(SCALE_Y).GetUnit().empty());

    EXPECT_THROW(frame->GetScale(E_ScaleType(5)), RTE::VerificationFailed);
    EXPECT_THROW(frame->SetScale(E_ScaleType(5), nullptr), RTE::VerificationFailed);
}

TEST(FrameTest, ScaleFactory)
{
    std::unique_ptr<I_Scale> identity(C_ScaleFactory::GetInstance().CreateIdentityScale());
    EXPECT_EQ(identity->Apply(7.25), 7.25);
    std::unique_ptr<I_Scale> linear(C_ScaleFactory::GetInstance().CreateLinearScale(2, 1, "m/s", "velocity"));
    auto copy = linear->Clone();
    EXPECT_EQ(copy->Apply(3), 7.0);
    EXPECT_EQ(copy->GetDescription(), "velocity");
}

TEST(FrameTest, CloneIsDeep)
{
    auto frame = Image(DATATYPE_INT32, 4, 2, 2);
    frame->SetName("Camera 1");
    frame->SetSettings("exposure=10");
    frame->AddMask();
    frame->GetComponent("PIXEL")->SetScale(
        std::unique_ptr<I_Scale>(C_ScaleFactory::GetInstance().CreateLinearScale(3, 0, "K", "")));
    frame->SetScale(SCALE_I, std::unique_ptr<I_Scale>(C_ScaleFactory::GetInstance().CreateLinearScale(2, 0, "", "")));
    frame->GetAttributeStore().SetString("Lens", "50mm");
    dynamic_cast<I_Plane<int>&>(*frame->GetPixelPlane(1))(3, 1) = -17;

    std::unique_ptr<I_Frame> clone = frame->Clone();
    auto* image = dynamic_cast<I_FrameImage*>(clone.get());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetName(), "Camera 1");
    EXPECT_EQ(image->GetSettings(), "exposure=10");
    EXPECT_EQ(ComponentNames(*image), (std::vector<std::string>{"PIXEL", "MASK"}));
    EXPECT_EQ(image->GetScale(SCALE_I).GetFactor(), 2.0);
    ASSERT_NE(image->GetComponent("PIXEL")->GetScale(), nullptr);
    EXPECT_EQ(image->GetComponent("PIXEL")->GetScale()->GetUnit(), "K");
    EXPECT_NE(image->GetPixelPlane(1)->GetData(), frame->GetPixelPlane(1)->GetData());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image->GetPixelPlane(1)->GetData()) % 4096, 0u);
    EXPECT_EQ(dynamic_cast<I_Plane<int>&>(*image->GetPixelPlane(1))(3, 1), -17);

    // Changes to the original do not reach the clone.
    dynamic_cast<I_Plane<int>&>(*frame->GetPixelPlane(1))(3, 1) = 5;
    frame->SetName("changed");
    frame->GetAttributeStore().SetString("Lens", "85mm");
    frame->SetScale(SCALE_I, nullptr);
    frame->RemoveComponent("MASK");
    EXPECT_EQ(dynamic_cast<I_Plane<int>&>(*image->GetPixelPlane(1))(3, 1), -17);
    EXPECT_EQ(image->GetName(), "Camera 1");
    EXPECT_NE(image->GetAttributeStore().Find("Lens"), nullptr);
    EXPECT_EQ(image->GetScale(SCALE_I).GetFactor(), 2.0);
    EXPECT_TRUE(image->HasMask());

    std::unique_ptr<I_FrameVector> vector(CreateVectorFrame(DATATYPE_FLOAT, 2, 2, 1, 12));
    auto vectorClone = vector->Clone();
    ASSERT_NE(dynamic_cast<I_FrameVector*>(vectorClone.get()), nullptr);
    EXPECT_EQ(dynamic_cast<I_FrameVector&>(*vectorClone).GetGridSize(), 12u);
    std::unique_ptr<I_FrameVector3C> vector3(CreateVector3CFrame(DATATYPE_FLOAT, 2, 2, 1, 6));
    auto vector3Clone = vector3->Clone();
    ASSERT_NE(dynamic_cast<I_FrameVector3C*>(vector3Clone.get()), nullptr);
    EXPECT_EQ(dynamic_cast<I_FrameVector3C&>(*vector3Clone).GetGridSize(), 6u);
}

TEST(FrameTest, HeadFramesHaveNoMemoryEvenAfterAddingAndCloning)
{
    auto head = Private::CreateFrame(E_FrameKind::Image, DATATYPE_WORD, 640, 480, 2, 1, PlaneMemory::None);
    EXPECT_FALSE(head->HasData());
    EXPECT_EQ(head->GetWidth(), 640u);
    EXPECT_FALSE(head->GetComponent("PIXEL")->GetPlane(1)->HasData());
    EXPECT_EQ(head->GetComponent("PIXEL")->GetPlane(1)->GetHeight(), 480u);
    head->AddMask();
    head->AddComponent("TS:Extra", DATATYPE_FLOAT);
    EXPECT_FALSE(head->GetMask()->GetPlane(0)->HasData());
    EXPECT_FALSE(head->GetComponent("TS:Extra")->GetPlane(1)->HasData());

    auto clone = head->Clone();
    EXPECT_FALSE(clone->HasData());
    EXPECT_EQ(clone->GetComponentCount(), 3u);
    EXPECT_FALSE(clone->GetComponent("PIXEL")->GetPlane(0)->HasData());
}

TEST(FrameTest, MemoryPolicies)
{
    auto empty = Private::CreateEmptyFrame(E_FrameKind::Vector3C, DATATYPE_FLOAT, 3, 3, 1, 4, PlaneMemory::Zeroed);
    EXPECT_EQ(empty->GetComponentCount(), 0u);
    EXPECT_TRUE(empty->HasData());
    EXPECT_EQ(dynamic_cast<I_FrameVector3C&>(*empty).GetGridSize(), 4u);
    // A reader adds the components in its own order.
    empty->AddComponent("W", DATATYPE_FLOAT);
    empty->AddComponent("U", DATATYPE_FLOAT);
    EXPECT_EQ(ComponentNames(*empty), (std::vector<std::string>{"W", "U"}));

    auto raw = Private::CreateFrame(E_FrameKind::Image, DATATYPE_BYTE, 4096, 2, 1, 1, PlaneMemory::Uninitialised);
    EXPECT_TRUE(raw->HasData());
    const I_PlaneBase* plane = raw->GetComponent("PIXEL")->GetPlane(0);
    ASSERT_TRUE(plane->HasData());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plane->GetData()) % 4096, 0u);
    // A mask is "all valid" whatever the policy.
    std::memset(raw->AddComponent("Scratch", DATATYPE_BYTE)->GetPlane(0)->GetData(), 0xCD, 4096 * 2);
    raw->RemoveComponent("Scratch");
    const auto& mask = dynamic_cast<const I_Plane<unsigned char>&>(*raw->AddMask()->GetPlane(0));
    EXPECT_EQ(mask(4095, 1), 1);

    // A reader switches its frame to zero-filling before handing it over; clones keep the policy.
    EXPECT_EQ(Private::GetPlaneMemory(*raw), PlaneMemory::Uninitialised);
    Private::SetPlaneMemory(*raw, PlaneMemory::Zeroed);
    EXPECT_EQ(Private::GetPlaneMemory(*raw->Clone()), PlaneMemory::Zeroed);
    const I_PlaneBase* added = raw->AddComponent("Later", DATATYPE_BYTE)->GetPlane(0);
    const auto* bytes = static_cast<const unsigned char*>(added->GetData());
    EXPECT_TRUE(std::all_of(bytes, bytes + added->GetByteSize(), [](unsigned char b) { return b == 0; }));

    EXPECT_THROW(Private::SetPlaneMemory(*raw, PlaneMemory::None), RTE::VerificationFailed);
    auto head = Private::CreateFrame(E_FrameKind::Image, DATATYPE_BYTE, 2, 2, 1, 1, PlaneMemory::None);
    EXPECT_THROW(Private::SetPlaneMemory(*head, PlaneMemory::Zeroed), RTE::VerificationFailed);
    EXPECT_EQ(Private::GetPlaneMemory(*head->Clone()), PlaneMemory::None);
    std::unique_ptr<I_Frame> publicFrame(CreateImageFrame(DATATYPE_BYTE, 2, 2, 1));
    EXPECT_EQ(Private::GetPlaneMemory(*publicFrame), PlaneMemory::Zeroed);
}
