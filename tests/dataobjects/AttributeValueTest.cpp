#include <DataObjects/C_Attributes.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

using DataObjects::C_Attribute;
using DataObjects::C_Attributes;
using DataObjects::C_AttributeValue;
using TestSupport::MessageOf;

TEST(AttributeValue, TypesAndCountsByConstruction)
{
    EXPECT_EQ(C_AttributeValue().GetType(), C_AttributeValue::TYPE_NULL);
    EXPECT_TRUE(C_AttributeValue().IsNull());
    EXPECT_EQ(C_AttributeValue().Count(), 0u);

    EXPECT_EQ(C_AttributeValue("text").GetType(), C_AttributeValue::TYPE_STRING);
    EXPECT_EQ(C_AttributeValue(std::string("text")).Count(), 1u);

    // The list codes are the ones writers of attribute files switch on.
    EXPECT_EQ(int(C_AttributeValue(std::vector<unsigned short>{1, 2}).GetType()), 2);
    EXPECT_EQ(int(C_AttributeValue(std::vector<int>{1}).GetType()), 3);
    EXPECT_EQ(int(C_AttributeValue(std::vector<float>{}).GetType()), 4);
    EXPECT_EQ(int(C_AttributeValue(std::vector<double>{1, 2, 3}).GetType()), 5);
    EXPECT_EQ(C_AttributeValue(std::vector<double>{1, 2, 3}).Count(), 3u);

    EXPECT_EQ(C_AttributeValue(2.5).GetType(), C_AttributeValue::TYPE_DOUBLE);
    EXPECT_EQ(C_AttributeValue(2.5f).GetType(), C_AttributeValue::TYPE_FLOAT);
    EXPECT_EQ(C_AttributeValue(7).GetType(), C_AttributeValue::TYPE_INT);
    EXPECT_EQ(C_AttributeValue(static_cast<unsigned short>(7)).GetType(), C_AttributeValue::TYPE_WORD);
}

TEST(AttributeValue, IsListOnlyForListsOfThatElementType)
{
    const C_AttributeValue list(std::vector<float>{1.f});
    EXPECT_TRUE(list.IsList<float>());
    EXPECT_FALSE(list.IsList<double>());
    EXPECT_FALSE(C_AttributeValue(1.f).IsList<float>());
    EXPECT_FALSE(C_AttributeValue("1").IsList<double>());
    EXPECT_FALSE(C_AttributeValue().IsList<unsigned short>());
}

TEST(AttributeValue, GetValueConvertsSingleNumbersAndKeepsListTypesStrict)
{
    EXPECT_EQ(C_AttributeValue("abc").GetValue<std::string>(), "abc");
    EXPECT_DOUBLE_EQ(C_AttributeValue(3).GetValue<double>(), 3.0);
    EXPECT_EQ(C_AttributeValue(std::vector<double>{4.75}).GetValue<int>(), 4);
    EXPECT_EQ(C_AttributeValue(2.5).GetValue<std::vector<double>>(), std::vector<double>{2.5});
    EXPECT_EQ((C_AttributeValue(std::vector<unsigned short>{1, 65535}).GetValue<std::vector<unsigned short>>()),
              (std::vector<unsigned short>{1, 65535}));

    EXPECT_EQ(MessageOf([] { C_AttributeValue(1.0).GetValue<std::string>(); }), "Attribute value is not a text");
    EXPECT_NE(MessageOf([] { C_AttributeValue(std::vector<int>{1, 2}).GetValue<int>(); }), "(no exception)");
    EXPECT_NE(MessageOf([] { C_AttributeValue(std::vector<int>{1}).GetValue<std::vector<double>>(); }),
              "(no exception)");
    EXPECT_NE(MessageOf([] { C_AttributeValue().GetValue<double>(); }), "(no exception)");
    EXPECT_NE(MessageOf([] { C_AttributeValue("5").GetValue<double>(); }), "(no exception)");
}

TEST(AttributeValue, ToString)
{
    EXPECT_EQ(C_AttributeValue().ToString(), "");
    EXPECT_EQ(C_AttributeValue("a;b").ToString(), "a;b");
    EXPECT_EQ(C_AttributeValue(std::vector<double>{0.1, -2.0, 1e300}).ToString(), "0.1;-2;1e+300");
    EXPECT_EQ(C_AttributeValue(std::vector<float>{0.1f}).ToString(), "0.1");
    EXPECT_EQ(C_AttributeValue(std::vector<int>{-3, 4}).ToString(), "-3;4");
    EXPECT_EQ(C_AttributeValue(static_cast<unsigned short>(65535)).ToString(), "65535");
}

TEST(AttributeValue, EqualityTellsSingleValueFromListOfOne)
{
    EXPECT_EQ(C_AttributeValue(1.0), C_AttributeValue(1.0));
    EXPECT_NE(C_AttributeValue(1.0), C_AttributeValue(std::vector<double>{1.0}));
    EXPECT_NE(C_AttributeValue(1.0), C_AttributeValue(1.f));
    EXPECT_EQ(C_AttributeValue("x"), C_AttributeValue(std::string("x")));
}

TEST(Attributes, SetReplacesInPlaceAndNullRemoves)
{
    C_Attributes attributes;
    EXPECT_TRUE(attributes.IsEmpty());
    attributes.Set("a", 1);
    attributes.Set("b", "two");
    attributes.Set("a", 3.0);
    ASSERT_EQ(attributes.GetCount(), 2u);
    EXPECT_EQ(attributes.GetAttributes()[0], C_Attribute("a", 3.0));
    EXPECT_EQ(attributes.GetAttributes()[1].GetName(), "b");

    attributes.Set("a", C_AttributeValue());
    EXPECT_FALSE(attributes.Contains("a"));
    EXPECT_TRUE(attributes.GetAttributeValue("a").IsNull());
    EXPECT_TRUE(attributes.GetAttribute("a").IsNull());
    EXPECT_FALSE(attributes.Remove("a"));
    EXPECT_TRUE(attributes.Remove("b"));
    EXPECT_TRUE(attributes.IsEmpty());

    EXPECT_EQ(MessageOf([&] { attributes.Set("", 1); }), "Attribute name is empty");
}

TEST(Attributes, CloneIsIndependent)
{
    C_Attributes attributes;
    attributes.Set("a", "x");
    auto clone = attributes.Clone();
    attributes.Set("a", "y");
    attributes.Clear();
    EXPECT_EQ(clone->GetAttributeValue("a").ToString(), "x");
}
