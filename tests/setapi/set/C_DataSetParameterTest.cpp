#include <SetApi/set/C_DataSetParameter.h>

#include <RTE/Exception.h>
#include <RTE/Parameter/Factory.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/TestSupport.h"

using SetApi::C_DataSetParameter;
namespace P = RTE::Parameter;

TEST(C_DataSetParameter, StartsWithTheNineStandardKeysInOrder)
{
    const C_DataSetParameter parameters;
    const char* const names[] = {"SetType",  "SetGroups",    "SetTime",         "SetComments",    "SetStart",
                                 "SetInc",   "SetSourceSet", "SetViewCallback", "SetLoadCallback"};
    ASSERT_EQ(parameters.GetSize(), 9u);
    for (unsigned i = 0; i < 9; ++i)
        EXPECT_EQ(parameters.GetName(i), names[i]);
    int integer = -1;
    EXPECT_TRUE(parameters.GetValue("SetType", integer));
    EXPECT_EQ(integer, 0);
    EXPECT_TRUE(parameters.GetValue("SetStart", integer));
    EXPECT_EQ(integer, 1);
    EXPECT_TRUE(parameters.GetValue("SetInc", integer));
    EXPECT_EQ(integer, 1);
    std::string text = "x";
    EXPECT_TRUE(parameters.GetValue("SetLoadCallback", text));
    EXPECT_EQ(text, "");
    EXPECT_TRUE(parameters.IsString("SetTime"));
    EXPECT_FALSE(parameters.IsString("SetType"));
    EXPECT_EQ(parameters.GetName(9), "");
    EXPECT_EQ(parameters.GetName(std::numeric_limits<std::uint64_t>::max()), "");
}

TEST(C_DataSetParameter, NodesCarryNameAsTitleInternalAccessAndKindRanges)
{
    C_DataSetParameter parameters;
    parameters.Add("SetScale", 2.5);
    const auto tree = parameters.GetTree();
    const auto type = P::CastToInteger(tree->Find("SetType"));
    ASSERT_TRUE(type);
    EXPECT_EQ(type->GetTitle(), "SetType");
    EXPECT_TRUE(type->GetDescription().isEmpty());
    EXPECT_EQ(type->GetAccessMode(), P::AccessInternal);
    EXPECT_EQ(type->GetRange(), RTE::C_RangeT<long long>(-2147483648LL, 2147483647LL));
    EXPECT_EQ(type->GetEditor(), P::C_Integer::EditorSpinBox);
    const auto scale = P::CastToDouble(tree->Find("SetScale"));
    ASSERT_TRUE(scale);
    EXPECT_EQ(scale->GetRange().GetMax(), std::numeric_limits<double>::max());
    EXPECT_EQ(scale->GetRange().GetMin(), -std::numeric_limits<double>::max());
    EXPECT_EQ(scale->GetEditor(), P::C_Double::EditorSpinBox);
    EXPECT_EQ(tree->Find("SetTime")->GetEditor(), P::C_Text::EditorLineEdit);
    EXPECT_EQ(tree->Find("SetTime")->GetAccessMode(), P::AccessInternal);
}

TEST(C_DataSetParameter, TheFirstAddDecidesTheKind)
{
    C_DataSetParameter parameters;
    parameters.Add("SetRatio", 0.5);
    parameters.Add("SetRatio", 7);         // an int does not fit a double node: nothing changes
    parameters.Add("SetRatio", std::string("text"));
    EXPECT_TRUE(parameters.IsDouble("SetRatio"));
    double ratio = 0;
    EXPECT_TRUE(parameters.GetValue("SetRatio", ratio));
    EXPECT_EQ(ratio, 0.5);
    parameters.Add("SetRatio", 0.75);
    EXPECT_TRUE(parameters.GetValue("SetRatio", ratio));
    EXPECT_EQ(ratio, 0.75);
    EXPECT_EQ(parameters.GetSize(), 10u);
    EXPECT_EQ(parameters.GetName(9), "SetRatio");
}

TEST(C_DataSetParameter, SetAndGetRefuseOtherKindsAndClearTheOutput)
{
    C_DataSetParameter parameters;
    parameters.Add("SetRatio", 0.5);
    EXPECT_FALSE(parameters.SetValue("SetRatio", 1));
    EXPECT_FALSE(parameters.SetValue("SetType", 1.0));
    EXPECT_FALSE(parameters.SetValue("SetType", std::string("1")));
    EXPECT_FALSE(parameters.SetValue("SetMissing", 1));
    EXPECT_TRUE(parameters.SetValue("SetType", 12));
    EXPECT_TRUE(parameters.SetValue("SetComments", std::string("hello")));

    int integer = 99;
    EXPECT_FALSE(parameters.GetValue("SetRatio", integer));
    EXPECT_EQ(integer, 0);
    double number = 99;
    EXPECT_FALSE(parameters.GetValue("SetType", number));
    EXPECT_EQ(number, 0);
    std::string text = "old";
    EXPECT_FALSE(parameters.GetValue("SetType", text));
    EXPECT_EQ(text, "");
    EXPECT_FALSE(parameters.GetValue("SetMissing", text));
    EXPECT_TRUE(parameters.GetValue("SetType", integer));
    EXPECT_EQ(integer, 12);
    EXPECT_FALSE(parameters.Has("SetMissing"));
    EXPECT_FALSE(parameters.IsDouble("SetMissing"));
}

TEST(C_DataSetParameter, DoublesOutsideTheFiniteRangeAreRefused)
{
    TestSupport::LogCapture log;
    C_DataSetParameter parameters;
    parameters.Add("SetRatio", 0.5);
    EXPECT_FALSE(parameters.SetValue("SetRatio", std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(parameters.SetValue("SetRatio", std::nan("")));
    EXPECT_THROW(parameters.Add("SetInfinite", -std::numeric_limits<double>::infinity()), RTE::VerificationFailed);
    EXPECT_THROW(parameters.Add("", 1), RTE::VerificationFailed);
}

TEST(C_DataSetParameter, CopiesShareOneTree)
{
    C_DataSetParameter source;
    C_DataSetParameter copy(source);
    copy.Add("SetIdentifier", std::string("StreamSet"));
    EXPECT_TRUE(source.Has("SetIdentifier"));
    source.SetValue("SetType", 3);
    int type = 0;
    copy.GetValue("SetType", type);
    EXPECT_EQ(type, 3);

    C_DataSetParameter assigned;
    assigned = source;
    EXPECT_EQ(assigned.GetTree(), source.GetTree());
}

TEST(C_DataSetParameter, AnyBytesSurviveAsNamesAndValues)
{
    C_DataSetParameter parameters;
    const std::string name = "SetCaf\xe9";
    std::string value = "\xff\xfe latin \xe9, utf-8 \xc3\xa4, cut \xe2\x82, nul ";
    value += '\0';
    parameters.Add(name, value);
    std::string back;
    EXPECT_TRUE(parameters.GetValue(name, back));
    EXPECT_EQ(back, value);
    EXPECT_EQ(parameters.GetName(9), name);
    EXPECT_EQ(parameters.GetTree()->Find("SetCaf\u00e9"), nullptr); // not taken for the UTF-8 name
}
