// The grey windowing of the PNG export: which pixels set the window, and what the edge cases give.

#include "Windowing.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

using SetApiTool::S_PlaneView;

template <typename T>
S_PlaneView View(BufferApi::E_DataType type, const std::vector<T>& data, const std::vector<unsigned char>* mask = nullptr)
{
    S_PlaneView view;
    view.type = type;
    view.width = static_cast<unsigned>(data.size());
    view.height = 1;
    view.data = data.data();
    view.mask = mask ? mask->data() : nullptr;
    return view;
}

TEST(Windowing, MapsMinimumToBlackAndMaximumToWhite)
{
    const std::vector<std::uint16_t> words = {1000, 3000, 2000, 1500};
    EXPECT_EQ(SetApiTool::WindowToGrey8(View(BufferApi::DATATYPE_WORD, words)),
              (std::vector<unsigned char>{0, 255, 128, 64}));
    const std::vector<std::int32_t> ints = {-5, 5, 0};
    EXPECT_EQ(SetApiTool::WindowToGrey8(View(BufferApi::DATATYPE_INT32, ints)), (std::vector<unsigned char>{0, 255, 128}));
}

TEST(Windowing, ConstantPlaneIsMidGreyAndEmptyWindowIsBlack)
{
    const std::vector<float> constant(5, 7.25f);
    EXPECT_EQ(SetApiTool::WindowToGrey8(View(BufferApi::DATATYPE_FLOAT, constant)), std::vector<unsigned char>(5, 128));

    const std::vector<float> nothing(3, std::numeric_limits<float>::quiet_NaN());
    EXPECT_TRUE(SetApiTool::FindWindow(View(BufferApi::DATATYPE_FLOAT, nothing)).empty);
    EXPECT_EQ(SetApiTool::WindowToGrey8(View(BufferApi::DATATYPE_FLOAT, nothing)), std::vector<unsigned char>(3, 0));

    const std::vector<std::uint8_t> bytes = {9, 9};
    const std::vector<unsigned char> allMasked = {0, 0};
    EXPECT_EQ(SetApiTool::WindowToGrey8(View(BufferApi::DATATYPE_BYTE, bytes, &allMasked)),
              (std::vector<unsigned char>{0, 0}));
}

TEST(Windowing, MaskedOutNanAndInfinitePixelsDoNotWidenTheWindow)
{
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    const std::vector<float> values = {10, 20, -1000, nan, inf, -inf, 15, 1000};
    const std::vector<unsigned char> mask = {1, 1, 0, 1, 1, 1, 1, 0};
    const S_PlaneView view = View(BufferApi::DATATYPE_FLOAT, values, &mask);

    const SetApiTool::S_Window window = SetApiTool::FindWindow(view);
    EXPECT_FALSE(window.empty);
    EXPECT_EQ(window.low, 10.0);
    EXPECT_EQ(window.high, 20.0);
    EXPECT_EQ(SetApiTool::WindowToGrey8(view), (std::vector<unsigned char>{0, 255, 0, 0, 255, 0, 128, 0}));
}

TEST(Windowing, ExtremeDoublesDoNotOverflowTheSpan)
{
    const std::vector<double> values = {-DBL_MAX, DBL_MAX, 0.0};
    EXPECT_EQ(SetApiTool::WindowToGrey8(View(BufferApi::DATATYPE_DOUBLE, values)),
              (std::vector<unsigned char>{0, 255, 128}));
    // Values apart only below the smallest normal number count as constant.
    const std::vector<double> tiny = {0.0, std::numeric_limits<double>::denorm_min()};
    EXPECT_EQ(SetApiTool::WindowToGrey8(View(BufferApi::DATATYPE_DOUBLE, tiny)), (std::vector<unsigned char>{128, 128}));
}

TEST(Windowing, ColourIsShownByLuminanceWithoutWindow)
{
    const std::vector<std::uint32_t> rgb = {0x000000, 0xffffff, 0xff0000, 0x00ff00, 0x0000ff, 0x808080};
    const std::vector<unsigned char> mask = {1, 1, 1, 1, 1, 0};
    EXPECT_EQ(SetApiTool::WindowToGrey8(View(BufferApi::DATATYPE_RGB, rgb, &mask)),
              (std::vector<unsigned char>{0, 255, 76, 150, 29, 0}));
}

} // namespace
