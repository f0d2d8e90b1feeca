#include <BufferApi/Creation.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include <memory>

using namespace BufferApi;

TEST(BufferTest, FramesInOrderOwnedByTheBuffer)
{
    std::unique_ptr<I_Buffer> buffer(CreateBuffer());
    EXPECT_EQ(buffer->GetNumberOfFrames(), 0u);
    EXPECT_THROW(buffer->GetFrame(0), RTE::VerificationFailed);
    EXPECT_THROW(buffer->AddFrame(nullptr), RTE::VerificationFailed);

    I_Frame* first = buffer->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_BYTE, 2, 2, 1)));
    I_Frame* second = buffer->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_WORD, 2, 2, 1)));
    first->SetName("a");
    second->SetName("b");
    EXPECT_EQ(buffer->GetNumberOfFrames(), 2u);
    EXPECT_EQ(buffer->GetFrame(1), second);
    EXPECT_THROW(buffer->GetFrame(2), RTE::VerificationFailed);

    std::unique_ptr<I_Frame> taken = buffer->RemoveFrame(0);
    EXPECT_EQ(taken.get(), first);
    EXPECT_EQ(buffer->GetNumberOfFrames(), 1u);
    EXPECT_EQ(buffer->GetFrame(0)->GetName(), "b");
    EXPECT_THROW(buffer->RemoveFrame(1), RTE::VerificationFailed);
}

TEST(BufferTest, IsVectorBufferFollowsFrameZero)
{
    std::unique_ptr<I_Buffer> buffer(CreateBuffer());
    EXPECT_FALSE(buffer->IsVectorBuffer());
    buffer->AddFrame(std::unique_ptr<I_Frame>(CreateVectorFrame(DATATYPE_FLOAT, 2, 2, 1, 8)));
    EXPECT_TRUE(buffer->IsVectorBuffer());
    buffer->RemoveFrame(0);
    buffer->AddFrame(std::unique_ptr<I_Frame>(CreateVector3CFrame(DATATYPE_FLOAT, 2, 2, 1, 8)));
    EXPECT_TRUE(buffer->IsVectorBuffer());
    buffer->RemoveFrame(0);
    buffer->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_FLOAT, 2, 2, 1)));
    buffer->AddFrame(std::unique_ptr<I_Frame>(CreateVectorFrame(DATATYPE_FLOAT, 2, 2, 1, 8)));
    EXPECT_FALSE(buffer->IsVectorBuffer());
}

TEST(BufferTest, CloneAndCreateBufferCopyAreDeep)
{
    // Clone copies within the buffer's own class; CreateBufferCopy copies any buffer into one of
    // the library's own (what a writer that queues a caller's buffer needs).
    for (bool viaCreate : {false, true}) {
        SCOPED_TRACE(viaCreate ? "CreateBufferCopy" : "Clone");
        std::unique_ptr<I_Buffer> buffer(CreateBuffer());
        buffer->GetAttributeStore().SetString("Run", "1");
        I_Frame* frame = buffer->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_DOUBLE, 3, 3, 1)));
        dynamic_cast<I_Plane<double>&>(*frame->GetComponent("PIXEL")->GetPlane(0))(1, 1) = 2.5;

        std::unique_ptr<I_Buffer> clone(viaCreate ? CreateBufferCopy(*buffer) : buffer->Clone().release());
        ASSERT_EQ(clone->GetNumberOfFrames(), 1u);
        EXPECT_NE(clone->GetFrame(0), frame);
        dynamic_cast<I_Plane<double>&>(*frame->GetComponent("PIXEL")->GetPlane(0))(1, 1) = 0;
        buffer->GetAttributeStore().SetString("Run", "2");
        buffer->RemoveFrame(0);
        EXPECT_EQ(dynamic_cast<const I_Plane<double>&>(*clone->GetFrame(0)->GetComponent("PIXEL")->GetPlane(0))(1, 1),
                  2.5);
        ASSERT_NE(clone->GetAttributeStore().Find("Run"), nullptr);
        EXPECT_EQ(dynamic_cast<const I_AttributeString*>(clone->GetAttributeStore().Find("Run"))->GetValue(), "1");
    }
}
