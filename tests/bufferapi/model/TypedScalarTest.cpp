#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace BufferApi;

TEST(TypedScalarTest, CreateListAndAccess)
{
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 4, 3, 2));
    frame->AddMask();
    CreateTypedScalarInFrame(frame.get(), "Temperature", DATATYPE_FLOAT);
    CreateTypedScalarInFrame(frame.get(), "Correlation", DATATYPE_DOUBLE);
    frame->AddComponent("Other", DATATYPE_BYTE);

    // Stored as prefixed components, listed without the prefix in the order of adding.
    EXPECT_NE(frame->GetComponent("TS:Temperature"), nullptr);
    EXPECT_EQ(GetNamesOfFrameBoundTypedScalars(frame.get()),
              (std::vector<std::string>{"Temperature", "Correlation"}));

    C_TypedScalarFrame scalar(frame.get(), "Correlation");
    EXPECT_EQ(scalar.GetName(), "Correlation");
    EXPECT_EQ(scalar.GetDataType(), DATATYPE_DOUBLE);
    I_PlaneBase* plane = scalar.GetComponent(1);
    EXPECT_EQ(plane, frame->GetComponent("TS:Correlation")->GetPlane(1));
    EXPECT_EQ(plane->GetWidth(), 4u);
    EXPECT_EQ(dynamic_cast<I_Plane<double>&>(*plane)(3, 2), 0.0);
    EXPECT_THROW(scalar.GetComponent(2), RTE::VerificationFailed);
}

TEST(TypedScalarTest, ScaleIsIdentityUntilSetAndLivesInTheComponent)
{
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 2, 2, 1));
    CreateTypedScalarInFrame(frame.get(), "T", DATATYPE_WORD);
    C_TypedScalarFrame scalar(frame.get(), "T");
    EXPECT_EQ(scalar.GetScale().GetFactor(), 1.0);
    EXPECT_EQ(scalar.GetScale().GetOffset(), 0.0);
    scalar.SetLinearScale(0.01, -273.15, "°C", "temperature");
    const I_Scale* stored = frame->GetComponent("TS:T")->GetScale();
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->GetFactor(), 0.01);
    EXPECT_EQ(stored->GetUnit(), "°C");
    // Another view of the same scalar sees the scale, and so does a clone of the frame.
    EXPECT_EQ(C_TypedScalarFrame(frame.get(), "T").GetScale().GetDescription(), "temperature");
    auto clone = frame->Clone();
    EXPECT_EQ(C_TypedScalarFrame(clone.get(), "T").GetScale().GetOffset(), -273.15);

    // A scalar component that a reader added without a scale still reads as identity.
    frame->AddComponent("TS:Raw", DATATYPE_FLOAT);
    EXPECT_EQ(C_TypedScalarFrame(frame.get(), "Raw").GetScale().GetFactor(), 1.0);
}

TEST(TypedScalarTest, BadArgumentsAreRefused)
{
    std::unique_ptr<I_Frame> frame(CreateImageFrame(DATATYPE_WORD, 2, 2, 1));
    CreateTypedScalarInFrame(frame.get(), "T", DATATYPE_WORD);
    EXPECT_THROW(CreateTypedScalarInFrame(frame.get(), "T", DATATYPE_FLOAT), RTE::VerificationFailed);
    EXPECT_THROW(CreateTypedScalarInFrame(frame.get(), "", DATATYPE_FLOAT), RTE::VerificationFailed);
    EXPECT_THROW(CreateTypedScalarInFrame(nullptr, "X", DATATYPE_FLOAT), RTE::VerificationFailed);
    EXPECT_THROW(CreateTypedScalarInFrame(frame.get(), "X", DATATYPE_UNKNOWN), RTE::VerificationFailed);
    EXPECT_THROW(C_TypedScalarFrame(frame.get(), "Missing"), RTE::VerificationFailed);
    EXPECT_THROW(C_TypedScalarFrame(frame.get(), "PIXEL"), RTE::VerificationFailed);
    EXPECT_THROW(C_TypedScalarFrame(nullptr, "T"), RTE::VerificationFailed);
    EXPECT_THROW(GetNamesOfFrameBoundTypedScalars(nullptr), RTE::VerificationFailed);
    EXPECT_EQ(GetNamesOfFrameBoundTypedScalars(frame.get()), (std::vector<std::string>{"T"}));
}
