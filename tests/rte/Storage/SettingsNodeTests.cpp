#include <Storage/SettingsNode.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include "support/TestSupport.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

using Storage::SettingsNode;

namespace {

std::uint64_t Bits(double value) { return TestSupport::BitsOf(value); }

double FromBits(std::uint64_t bits) { return TestSupport::DoubleFromBits(bits); }

} // namespace

TEST(SettingsNode, ValuesKeepFirstInsertionOrderAndReplaceInPlace)
{
    SettingsNode node("top");
    node.SetValue("b", "1");
    node.SetValue("a", "2");
    node.SetValue("c", "3");
    node.SetValue("a", "changed");
    EXPECT_EQ(node.GetValueNames(), QStringList({"b", "a", "c"}));
    EXPECT_EQ(node.GetValue("a"), "changed");

    EXPECT_TRUE(node.RemoveValue("b"));
    EXPECT_FALSE(node.RemoveValue("b"));
    EXPECT_FALSE(node.HasValue("b"));
    EXPECT_EQ(node.GetValue("b", "fallback"), "fallback");
    // The index of the values after a removed one must still be right.
    node.SetValue("c", "3b");
    node.SetValue("d", "4");
    EXPECT_EQ(node.GetValueNames(), QStringList({"a", "c", "d"}));
    EXPECT_EQ(node.GetValue("c"), "3b");
    EXPECT_EQ(node.GetValue("d"), "4");

    // An empty value exists and differs from a missing one.
    node.SetValue("", "");
    EXPECT_TRUE(node.HasValue(""));
    EXPECT_EQ(node.GetValue("", "x"), "");
}

TEST(SettingsNode, ChildrenAreOrderedFoundByFirstNameAndRangeChecked)
{
    SettingsNode node;
    node.AddChild("x").SetValue("n", "1");
    node.AddChild("y");
    node.AddChild("x").SetValue("n", "2");
    ASSERT_EQ(node.GetChildCount(), 3);
    EXPECT_EQ(node.GetChild(1).GetName(), "y");
    ASSERT_NE(node.FindChild("x"), nullptr);
    EXPECT_EQ(node.FindChild("x")->GetValue("n"), "1");
    EXPECT_EQ(node.FindChild("z"), nullptr);
    const SettingsNode& constNode = node;
    EXPECT_EQ(constNode.FindChild("y"), &constNode.GetChild(1));

    node.RemoveChild(0);
    ASSERT_EQ(node.GetChildCount(), 2);
    EXPECT_EQ(node.FindChild("x")->GetValue("n"), "2");

    EXPECT_THROW(node.GetChild(2), RTE::VerificationFailed);
    EXPECT_THROW(node.GetChild(-1), RTE::VerificationFailed);
    EXPECT_THROW(constNode.GetChild(5), RTE::VerificationFailed);
    EXPECT_THROW(node.RemoveChild(2), RTE::VerificationFailed);
}

TEST(SettingsNode, CloneCopyAndCopyFromAreDeepAndIndependent)
{
    SettingsNode node("top");
    node.SetClass("Cls");
    node.SetVersion(7);
    node.SetValue("v", "1");
    node.AddChild("a").AddChild("b").SetValue("deep", "x");
    node.AddChild("c");

    const std::unique_ptr<Storage::Settings> clone = node.Clone();
    SettingsNode copy(node);
    SettingsNode assigned;
    assigned.SetValue("stale", "gone");
    assigned.AddChild("stale");
    assigned = node;
    SettingsNode copiedFrom("other");
    copiedFrom.SetValue("stale", "gone");
    copiedFrom.CopyFrom(node);
    const std::vector<const Storage::Settings*> copies = {clone.get(), &copy, &assigned, &copiedFrom};
    for (const Storage::Settings* other : copies)
        EXPECT_TRUE(Storage::AreEqual(node, *other));

    node.GetChild(0).GetChild(0).SetValue("deep", "changed");
    EXPECT_EQ(clone->GetChild(0).GetChild(0).GetValue("deep"), "x");
    EXPECT_EQ(copy.GetChild(0).GetChild(0).GetValue("deep"), "x");
    EXPECT_FALSE(Storage::AreEqual(node, copy));
}

TEST(SettingsNode, CopyFromAndAddCopyHandleAliasing)
{
    SettingsNode node("top");
    node.AddChild("a").AddChild("b").SetValue("k", "v");

    node.CopyFrom(node);
    EXPECT_EQ(node.GetChild(0).GetChild(0).GetValue("k"), "v");

    // Copying a descendant over its ancestor must not read freed memory.
    node.CopyFrom(node.GetChild(0));
    EXPECT_EQ(node.GetName(), "a");
    ASSERT_EQ(node.GetChildCount(), 1);
    EXPECT_EQ(node.GetChild(0).GetName(), "b");

    // Appending a copy of oneself copies the state before the append.
    node.AddCopy(node);
    ASSERT_EQ(node.GetChildCount(), 2);
    EXPECT_EQ(node.GetChild(1).GetChildCount(), 1);
    EXPECT_EQ(node.GetChild(1).GetChild(0).GetValue("k"), "v");
}

TEST(SettingsNode, AreEqualSeesEveryDifference)
{
    SettingsNode base("n");
    base.SetClass("c");
    base.SetVersion(1);
    base.SetValue("a", "1");
    base.SetValue("b", "2");
    base.AddChild("x").SetValue("k", "v");
    base.AddChild("y");

    auto variant = [&](auto change) {
        SettingsNode copy(base);
        change(copy);
        return Storage::AreEqual(base, copy) || Storage::AreEqual(copy, base);
    };
    EXPECT_TRUE(variant([](SettingsNode&) {}));
    EXPECT_FALSE(variant([](SettingsNode& s) { s.SetName("m"); }));
    EXPECT_FALSE(variant([](SettingsNode& s) { s.SetClass("d"); }));
    EXPECT_FALSE(variant([](SettingsNode& s) { s.SetVersion(2); }));
    EXPECT_FALSE(variant([](SettingsNode& s) { s.SetValue("a", "1 "); }));
    EXPECT_FALSE(variant([](SettingsNode& s) { s.SetValue("c", ""); }));
    EXPECT_FALSE(variant([](SettingsNode& s) {
        s.RemoveValue("a");
        s.SetValue("a", "1"); // same values, other order
    }));
    EXPECT_FALSE(variant([](SettingsNode& s) { s.GetChild(0).SetValue("k", "w"); }));
    EXPECT_FALSE(variant([](SettingsNode& s) { s.RemoveChild(1); }));
    EXPECT_FALSE(variant([](SettingsNode& s) { s.GetChild(1).AddChild(""); }));
}

TEST(SettingsNode, DeepTreesAreCopiedComparedAndDestroyedWithoutRecursion)
{
    // Deeper than any document may be; stack-bound recursion would overflow here.
    SettingsNode node("0");
    Storage::Settings* leaf = &node;
    for (int i = 1; i < 200000; ++i)
        leaf = &leaf->AddChild(QString::number(i));
    leaf->SetValue("end", "yes");
    const std::unique_ptr<Storage::Settings> clone = node.Clone();
    EXPECT_TRUE(Storage::AreEqual(node, *clone));
}

TEST(SettingsTypedValues, IntegersAndBooleansReadStrictly)
{
    SettingsNode node;
    node.SetInt("i", -42);
    node.SetInt64("big", std::numeric_limits<qint64>::min());
    node.SetBool("t", true);
    node.SetBool("f", false);
    EXPECT_EQ(node.GetValue("i"), "-42");
    EXPECT_EQ(node.GetInt("i", 0), -42);
    EXPECT_EQ(node.GetInt64("big", 0), std::numeric_limits<qint64>::min());
    EXPECT_EQ(node.GetValue("t"), "true");
    EXPECT_TRUE(node.GetBool("t", false));
    EXPECT_FALSE(node.GetBool("f", true));

    for (const char* bad : {"", " 5", "5 ", "+5", "5x", "0x10", "1.0", "99999999999"}) {
        node.SetValue("bad", bad);
        EXPECT_EQ(node.GetInt("bad", 17), 17) << bad;
    }
    node.SetValue("bad", "99999999999999999999");
    EXPECT_EQ(node.GetInt64("bad", 3), 3);
    EXPECT_EQ(node.GetInt("missing", 9), 9);

    node.SetValue("b", "1");
    EXPECT_TRUE(node.GetBool("b", false));
    node.SetValue("b", "0");
    EXPECT_FALSE(node.GetBool("b", true));
    node.SetValue("b", "yes");
    EXPECT_TRUE(node.GetBool("b", true));
    EXPECT_FALSE(node.GetBool("b", false));
}

TEST(SettingsTypedValues, DoublesAreBitExact)
{
    SettingsNode node;
    std::vector<double> values = {0.0,
                                  -0.0,
                                  0.1,
                                  1.0 / 3.0,
                                  -1e300,
                                  5e-324,
                                  std::numeric_limits<double>::min(),
                                  std::numeric_limits<double>::max(),
                                  std::numeric_limits<double>::infinity(),
                                  -std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN(),
                                  -std::numeric_limits<double>::quiet_NaN(),
                                  FromBits(0x7FF0000000000001ull),
                                  FromBits(0xFFF800000000BEEFull)};
    std::mt19937_64 random(12345);
    for (int i = 0; i < 5000; ++i)
        values.push_back(FromBits(random()));
    for (double value : values) {
        node.SetDouble("d", value);
        EXPECT_EQ(Bits(node.GetDouble("d", 42.0)), Bits(value)) << node.GetValue("d").toStdString();
    }
    node.SetDouble("d", 0.1);
    EXPECT_EQ(node.GetValue("d"), "0.1");

    for (const char* bad : {"", "abc", " 1", "1 ", "nan:123", "nan:zzzzzzzzzzzzzzzz", "1,5"}) {
        node.SetValue("d", bad);
        EXPECT_EQ(node.GetDouble("d", 2.5), 2.5) << bad;
    }
}

TEST(SettingsTypedValues, StringListsKeepEveryItem)
{
    SettingsNode node;
    const std::vector<QStringList> lists = {
        {}, {""}, {"", ""}, {"a"}, {"a;b", "c\\", "\\;", ""}, {"x", "", "y"}, {QString(QChar(0)), ";;"}};
    for (const QStringList& list : lists) {
        node.SetStringList("l", list);
        EXPECT_EQ(node.GetStringList("l", {"default"}), list) << node.GetValue("l").toStdString();
    }
    EXPECT_EQ(node.GetStringList("missing", {"default"}), QStringList({"default"}));
    // Hand-written lists without the last terminator read as well; a dangling escape does not.
    node.SetValue("l", "a;b");
    EXPECT_EQ(node.GetStringList("l", {}), QStringList({"a", "b"}));
    node.SetValue("l", "a\\");
    EXPECT_EQ(node.GetStringList("l", {"default"}), QStringList({"default"}));
}
