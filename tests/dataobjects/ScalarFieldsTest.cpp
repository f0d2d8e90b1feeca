#include <DataObjects/ImageConversion.h>
#include <DataObjects/ScalarFields.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <memory>

using namespace DataObjects;
using TestSupport::MessageOf;

namespace {

ScalarField FloatField(const std::string& name, unsigned width, unsigned height, float first)
{
    ScalarField field(name, BufferApi::DATATYPE_FLOAT, width, height, LinearScale(2.0, 1.0, "K", "temperature"));
    float* values = field.GetDataAs<float>();
    for (unsigned i = 0; i < width * height; ++i)
        values[i] = first + float(i);
    return field;
}

} // namespace

TEST(ScalarFields, CopiesAreDeep)
{
    ScalarFields fields;
    fields.Set(FloatField("t", 2, 2, 1.f));
    ScalarFields copy = fields;
    fields.Get("t").GetDataAs<float>()[0] = 99.f;
    EXPECT_EQ(copy.Get("t").GetDataAs<float>()[0], 1.f);
    EXPECT_EQ(copy.Get("t").GetScale(), LinearScale(2.0, 1.0, "K", "temperature"));
    EXPECT_EQ(MessageOf([&] { copy.Get("t").GetDataAs<double>(); }), "Scalar field 't' has element type 4, not 3");
    EXPECT_EQ(MessageOf([&] { copy.Get("missing"); }), "No scalar field 'missing'");
}

TEST(ScalarFields, BoundFieldsWriteIntoTheFrame)
{
    std::unique_ptr<BufferApi::I_FrameImage> frame(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 3, 2, 2));
    ScalarFields source;
    source.Set(FloatField("t", 3, 2, 10.f));
    source.Set(ScalarField("c", BufferApi::DATATYPE_BYTE, 3, 2));

    GetScalarFields(*frame, 1).DeepCopyFrom(source);
    EXPECT_EQ(BufferApi::GetNamesOfFrameBoundTypedScalars(frame.get()), (std::vector<std::string>{"t", "c"}));
    BufferApi::C_TypedScalarFrame typed(frame.get(), "t");
    EXPECT_EQ(typed.GetDataType(), BufferApi::DATATYPE_FLOAT);
    EXPECT_EQ(static_cast<const float*>(typed.GetComponent(1)->GetData())[5], 15.f);
    EXPECT_EQ(static_cast<const float*>(typed.GetComponent(0)->GetData())[5], 0.f);
    EXPECT_EQ(typed.GetScale().GetUnit(), "K");
    EXPECT_DOUBLE_EQ(typed.GetScale().GetFactor(), 2.0);

    // Reading plane 1 back gives the same fields; plane 0 has them zero-filled.
    ScalarFields plane1 = GetScalarFields(*frame, 1);
    EXPECT_EQ(ScalarFields(plane1), source);
    EXPECT_DOUBLE_EQ(GetScalarFields(*frame, 0).Get("t").GetValue(2, 1), 0.0);

    EXPECT_EQ(MessageOf([&] { GetScalarFields(*frame, 2); }), "Scalar field plane index out of range");
    EXPECT_NE(MessageOf([&] { plane1.Set(FloatField("u", 2, 2, 0.f)); }), "(no exception)");
    EXPECT_EQ(MessageOf([&] { plane1.Set(ScalarField("t", BufferApi::DATATYPE_DOUBLE, 3, 2)); }),
              "Scalar field 't' has another element type in the frame");
    EXPECT_NE(MessageOf([&] { plane1.Remove("t"); }), "(no exception)");
}
