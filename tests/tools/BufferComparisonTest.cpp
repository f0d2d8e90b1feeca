// The demo's check is only worth something if the comparison sees every kind of change, and if
// the demo's buffers are the same on every call.

#include "BufferComparison.h"
#include "DemoBuffers.h"

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace {

using namespace BufferApi;

std::unique_ptr<I_Buffer> Demo(unsigned index = 1) { return SetApiTool::MakeDemoBuffer(index, 64, 48); }

TEST(DemoBuffers, AreDeterministicAndDifferByIndex)
{
    const auto first = Demo(), again = Demo();
    EXPECT_EQ(SetApiTool::FirstDifference(*first, *again), "");
    EXPECT_NE(SetApiTool::FirstDifference(*first, *Demo(2)), "");
    const auto clone = first->Clone();
    EXPECT_EQ(SetApiTool::FirstDifference(*first, *clone), "");
}

TEST(DemoBuffers, HaveWhatTheDemoPromises)
{
    const auto buffer = Demo();
    ASSERT_EQ(buffer->GetNumberOfFrames(), 2u);
    const I_Frame& camera = *buffer->GetFrame(0);
    const I_Frame& temperature = *buffer->GetFrame(1);
    EXPECT_EQ(camera.GetDataType(), DATATYPE_WORD);
    EXPECT_EQ(temperature.GetDataType(), DATATYPE_FLOAT);
    for (const I_Frame* frame : {&camera, &temperature}) {
        ASSERT_TRUE(frame->HasMask());
        const auto* mask = static_cast<const unsigned char*>(frame->GetMask()->GetPlane(0)->GetData());
        EXPECT_EQ(mask[0], 0) << "corners are masked out";
        EXPECT_NE(mask[24 * 64 + 32], 0) << "the centre is valid";
        EXPECT_EQ(GetNamesOfFrameBoundTypedScalars(frame), std::vector<std::string>{"Correlation"});
        EXPECT_EQ(frame->GetScale(SCALE_X).GetUnit(), "mm");
    }
    const auto* kelvin = static_cast<const float*>(temperature.GetComponentAt(0)->GetPlane(0)->GetData());
    EXPECT_TRUE(std::isnan(kelvin[0]));
    EXPECT_FALSE(std::isnan(kelvin[24 * 64 + 32]));
}

// Each change to a copy of a demo buffer must be reported.
void ExpectSeen(const std::string& what, const std::function<void(I_Buffer&)>& change, const std::string& expected)
{
    const auto original = Demo();
    const auto changed = original->Clone();
    change(*changed);
    const std::string difference = SetApiTool::FirstDifference(*original, *changed);
    EXPECT_NE(difference.find(expected), std::string::npos) << what << ": '" << difference << "'";
}

TEST(BufferComparison, SeesEveryKindOfChange)
{
    ExpectSeen("one bit of one pixel", [](I_Buffer& b) {
        static_cast<std::uint16_t*>(b.GetFrame(0)->GetComponentAt(0)->GetPlane(0)->GetData())[65] ^= 1;
    }, "frame 0 component \"PIXEL\" plane 0 differs first at pixel (1, 1)");
    ExpectSeen("a NaN payload", [](I_Buffer& b) {
        static_cast<std::uint32_t*>(b.GetFrame(1)->GetComponentAt(0)->GetPlane(0)->GetData())[0] ^= 1;
    }, "frame 1 component \"PIXEL\" plane 0 differs first at pixel (0, 0)");
    ExpectSeen("a mask byte", [](I_Buffer& b) {
        static_cast<unsigned char*>(b.GetFrame(1)->GetMask()->GetPlane(0)->GetData())[5] = 7;
    }, "frame 1 component \"MASK\" plane 0 differs first at pixel (5, 0)");
    ExpectSeen("a typed scalar's scale", [](I_Buffer& b) {
        C_TypedScalarFrame(b.GetFrame(0), "Correlation").SetLinearScale(0.01, 1e-300, "", "Correlation coefficient");
    }, "Correlation\" value scale is");
    ExpectSeen("an axis scale", [](I_Buffer& b) {
        b.GetFrame(1)->SetScale(SCALE_Y, nullptr);
    }, "frame 1 y scale is");
    ExpectSeen("a frame name", [](I_Buffer& b) { b.GetFrame(0)->SetName("Camera 2"); }, "frame 0 is named");
    ExpectSeen("a settings text", [](I_Buffer& b) { b.GetFrame(0)->SetSettings(""); }, "settings text");
    ExpectSeen("a frame attribute", [](I_Buffer& b) {
        const float exposure[] = {12.5000010f};
        b.GetFrame(0)->GetAttributeStore().SetArray("ExposureTime", 1, DATATYPE_FLOAT, exposure);
    }, "frame 0 attribute 1 \"ExposureTime\" has other values");
    ExpectSeen("a buffer attribute", [](I_Buffer& b) { b.GetAttributeStore().SetString("Source", "elsewhere"); },
               "buffer attribute 1 \"Source\" has another text");
    ExpectSeen("a lost component", [](I_Buffer& b) {
        I_Frame& frame = *b.GetFrame(1);
        ASSERT_TRUE(frame.RemoveComponent(frame.GetComponentAt(2)->GetName()));
    },
               "frame 1 has 2 components instead of 3");
    ExpectSeen("a lost frame", [](I_Buffer& b) { b.RemoveFrame(1); }, "1 frames instead of 2");
}

} // namespace
