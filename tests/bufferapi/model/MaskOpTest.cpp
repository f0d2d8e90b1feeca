#include "model/FrameFactory.h"

#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/MaskOp.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include <memory>

using namespace BufferApi;

namespace {
I_Plane<unsigned char>& MaskPlane(I_Frame& frame, unsigned plane)
{
    return dynamic_cast<I_Plane<unsigned char>&>(*frame.GetMask()->GetPlane(plane));
}
} // namespace

TEST(MaskOpTest, CopiesOnePlaneAndAddsTheTargetMask)
{
    std::unique_ptr<I_Frame> source(CreateImageFrame(DATATYPE_WORD, 3, 2, 2));
    std::unique_ptr<I_Frame> target(CreateImageFrame(DATATYPE_FLOAT, 3, 2, 3));
    source->AddMask();
    MaskPlane(*source, 1)(2, 1) = 0;
    MaskPlane(*source, 1)(0, 0) = 0;

    MaskOp::CopyMask(source.get(), 1, target.get(), 2);
    ASSERT_TRUE(target->HasMask());
    EXPECT_EQ(MaskPlane(*target, 2)(2, 1), 0);
    EXPECT_EQ(MaskPlane(*target, 2)(0, 0), 0);
    EXPECT_EQ(MaskPlane(*target, 2)(1, 0), 1);
    // Other target planes keep the "all valid" of a new mask.
    EXPECT_EQ(MaskPlane(*target, 0)(2, 1), 1);
    // The source is unchanged and independent.
    MaskPlane(*target, 2)(1, 1) = 0;
    EXPECT_EQ(MaskPlane(*source, 1)(1, 1), 1);
}

TEST(MaskOpTest, SourceWithoutMaskCopiesAllValid)
{
    std::unique_ptr<I_Frame> source(CreateImageFrame(DATATYPE_WORD, 2, 2, 1));
    std::unique_ptr<I_Frame> target(CreateImageFrame(DATATYPE_WORD, 2, 2, 1));
    target->AddMask();
    MaskPlane(*target, 0)(1, 1) = 0;
    MaskOp::CopyMask(source.get(), 0, target.get(), 0);
    EXPECT_EQ(MaskPlane(*target, 0)(1, 1), 1);
    EXPECT_FALSE(source->HasMask());
}

TEST(MaskOpTest, CopyOntoItselfIsHarmless)
{
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 2, 2, 2));
    frame->AddMask();
    MaskPlane(*frame, 0)(1, 0) = 0;
    MaskOp::CopyMask(frame.get(), 0, frame.get(), 0);
    EXPECT_EQ(MaskPlane(*frame, 0)(1, 0), 0);
    MaskOp::CopyMask(frame.get(), 0, frame.get(), 1);
    EXPECT_EQ(MaskPlane(*frame, 1)(1, 0), 0);
}

TEST(MaskOpTest, MismatchesAreRefusedWithoutChangingTheTarget)
{
    std::unique_ptr<I_Frame> source(CreateImageFrame(DATATYPE_WORD, 3, 2, 1));
    std::unique_ptr<I_Frame> wider(CreateImageFrame(DATATYPE_WORD, 4, 2, 1));
    std::unique_ptr<I_Frame> target(CreateImageFrame(DATATYPE_WORD, 3, 2, 2));
    EXPECT_THROW(MaskOp::CopyMask(source.get(), 0, wider.get(), 0), RTE::VerificationFailed);
    EXPECT_THROW(MaskOp::CopyMask(source.get(), 1, target.get(), 0), RTE::VerificationFailed);
    EXPECT_THROW(MaskOp::CopyMask(source.get(), 0, target.get(), 2), RTE::VerificationFailed);
    EXPECT_THROW(MaskOp::CopyMask(nullptr, 0, target.get(), 0), RTE::VerificationFailed);
    EXPECT_THROW(MaskOp::CopyMask(source.get(), 0, nullptr, 0), RTE::VerificationFailed);
    EXPECT_FALSE(target->HasMask());
    EXPECT_FALSE(wider->HasMask());

    auto head = Private::CreateFrame(E_FrameKind::Image, DATATYPE_WORD, 3, 2, 1, 1, Private::PlaneMemory::None);
    EXPECT_THROW(MaskOp::CopyMask(source.get(), 0, head.get(), 0), RTE::VerificationFailed);
    head->AddMask();
    EXPECT_THROW(MaskOp::CopyMask(head.get(), 0, target.get(), 0), RTE::VerificationFailed);
}
