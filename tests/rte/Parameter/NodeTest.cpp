#include <RTE/Exception.h>
#include <RTE/Parameter/Factory.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/TestSupport.h"

using namespace RTE::Parameter;
using RTE::C_RangeT;

namespace {

// Counts the change signals of one node.
struct SignalCounter {
    explicit SignalCounter(C_Node& node)
    {
        node.Changed().connect([this](C_Node& changed) {
            ++count;
            last = &changed;
        });
    }
    int count = 0;
    C_Node* last = nullptr;
};

} // namespace

TEST(ParameterNode, ShortFormsUseNameAsTitleAndKindDefaults)
{
    const auto integer = CreateInteger("Count", 5);
    EXPECT_EQ(integer->GetTitle(), "Count");
    EXPECT_TRUE(integer->GetDescription().isEmpty());
    EXPECT_EQ(integer->GetAccessMode(), AccessReadWrite);
    EXPECT_EQ(integer->GetRange(), C_RangeT<long long>(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    EXPECT_EQ(integer->GetEditor(), C_Integer::EditorSpinBox);

    const auto number = CreateDouble("Gain", 0.5);
    EXPECT_EQ(number->GetRange().GetMax(), std::numeric_limits<double>::max());
    EXPECT_EQ(number->GetRange().GetMin(), -std::numeric_limits<double>::max());
    EXPECT_EQ(number->GetEditor(), C_Double::EditorSpinBox);
    EXPECT_EQ(CreateText("t", "v")->GetEditor(), C_Text::EditorLineEdit);
    EXPECT_EQ(CreateList("l", "", "", {})->GetEditor(), C_List::EditorLineEdit);
    EXPECT_EQ(CreateEnumeration("e", "", "")->GetEditor(), C_Enumeration::EditorComboBox);
}

TEST(ParameterNode, IntegerRangeIsEnforced)
{
    TestSupport::LogCapture log; // the failures log themselves
    const auto node = CreateInteger("n", "n", "", AccessReadWrite, 5, C_RangeT<long long>(0, 10));
    SignalCounter counter(*node);
    EXPECT_THROW(node->SetValue(11), RTE::VerificationFailed);
    EXPECT_THROW(node->SetValue(-1), RTE::VerificationFailed);
    EXPECT_EQ(node->GetValue(), 5);
    node->SetValue(10);
    EXPECT_EQ(node->GetValue(), 10);
    EXPECT_THROW(node->SetRange(C_RangeT<long long>(0, 9)), RTE::VerificationFailed); // would exclude 10
    EXPECT_THROW(node->SetRange(C_RangeT<long long>(3, 2)), RTE::VerificationFailed);
    node->SetValueAndRange(-100, C_RangeT<long long>(-200, -50));
    EXPECT_EQ(node->GetValue(), -100);
    EXPECT_EQ(counter.count, 2);
    EXPECT_THROW(CreateInteger("big", 1LL << 40), RTE::VerificationFailed); // outside the int range
    EXPECT_THROW(CreateInteger("x", "x", "", AccessReadWrite, 0, C_RangeT<long long>(1, 0)), RTE::VerificationFailed);
    EXPECT_TRUE(log.contains("Exception", "outside the range"));
}

TEST(ParameterNode, DoubleRangeAcceptsNanButNotInfinityByDefault)
{
    TestSupport::LogCapture log;
    const auto node = CreateDouble("d", 1.0);
    EXPECT_THROW(node->SetValue(std::numeric_limits<double>::infinity()), RTE::VerificationFailed);
    EXPECT_FALSE(node->Accepts(-std::numeric_limits<double>::infinity()));
    node->SetValue(std::nan(""));
    EXPECT_TRUE(std::isnan(node->GetValue()));

    const double inf = std::numeric_limits<double>::infinity();
    const auto open = CreateDouble("o", "o", "", AccessReadWrite, inf, C_RangeT<double>(-inf, inf));
    EXPECT_EQ(open->GetValue(), inf);
    EXPECT_THROW(open->SetRange(C_RangeT<double>(std::nan(""), 1.0)), RTE::VerificationFailed);
}

TEST(ParameterNode, EqualValuesDoNotSignalButBitChangesDo)
{
    const auto number = CreateDouble("d", 0.0);
    SignalCounter doubles(*number);
    number->SetValue(0.0);
    EXPECT_EQ(doubles.count, 0);
    number->SetValue(-0.0); // other bits: a change
    EXPECT_EQ(doubles.count, 1);
    EXPECT_EQ(doubles.last, number.get());

    const auto text = CreateText("t", "a");
    SignalCounter texts(*text);
    text->SetValue("a");
    text->SetValue("b");
    text->SetValue("b");
    EXPECT_EQ(texts.count, 1);
}

TEST(ParameterNode, EnumerationSelectsFirstEntryAndSignalsSelectionChanges)
{
    TestSupport::LogCapture log;
    const auto mode = CreateEnumeration("Mode", "Mode", "");
    EXPECT_EQ(mode->GetSelectedIndex(), -1);
    EXPECT_FALSE(mode->GetSelected());
    SignalCounter counter(*mode);
    mode->AddEntry(Private::CreateEnumerationEntry("single", "Single", "", 10));
    mode->AddEntry(Private::CreateEnumerationEntry("double", "Double", "", 20));
    EXPECT_EQ(mode->GetSelectedIndex(), 0);
    EXPECT_EQ(counter.count, 0); // adding entries is structure
    EXPECT_THROW(mode->AddEntry(Private::CreateEnumerationEntry("single", "", "", 3)), RTE::VerificationFailed);

    mode->SelectByValue(20);
    EXPECT_EQ(mode->GetSelected()->GetName(), "double");
    mode->SelectByName("double");
    EXPECT_EQ(counter.count, 1);
    EXPECT_THROW(mode->SelectByName("triple"), RTE::VerificationFailed);
    EXPECT_THROW(mode->SetSelectedIndex(2), RTE::VerificationFailed);
    mode->SetSelectedIndex(-1);
    EXPECT_FALSE(mode->GetSelected());
    EXPECT_THROW(mode->GetEntry(2), RTE::VerificationFailed);
}

TEST(ParameterNode, ListMakesElementsWithItsFactory)
{
    TestSupport::LogCapture log;
    int made = 0;
    const auto list = CreateList("Points", "Points", "", [&made] {
        ++made;
        return CreateInteger("Point", "Point", "", AccessReadWrite, 7, C_RangeT<long long>(0, 100));
    });
    const auto first = list->Append();
    list->Append();
    EXPECT_EQ(made, 2);
    EXPECT_EQ(list->GetSize(), 2u);
    EXPECT_EQ(first->GetParent(), list.get());
    EXPECT_EQ(CastToInteger(list->GetAt(1))->GetValue(), 7);
    EXPECT_THROW(list->GetAt(2), RTE::VerificationFailed);
    EXPECT_THROW(list->Append(first), RTE::VerificationFailed); // already in the list

    list->Remove(0);
    EXPECT_EQ(first->GetParent(), nullptr);
    EXPECT_EQ(list->GetSize(), 1u);
    EXPECT_THROW(list->Remove(1), RTE::VerificationFailed);

    EXPECT_THROW(CreateList("none", "", "", {})->Append(), RTE::VerificationFailed);
    EXPECT_THROW(CreateList("null", "", "", [] { return boost::shared_ptr<C_Node>(); })->Append(),
                 RTE::VerificationFailed);
}

TEST(ParameterNode, CategoryKeepsUniqueNamesInOrderAndRefusesCycles)
{
    TestSupport::LogCapture log;
    const auto root = CreateCategory("root", "", "");
    const auto inner = CreateCategory("inner", "", "");
    root->Add(CreateText("b", "1"));
    root->Add(CreateText("a", "2"));
    root->Add(inner);
    inner->Add(CreateInteger("x/y", 3)); // a name may hold '/'
    inner->Add(CreateInteger("z", 4));

    EXPECT_EQ(root->GetChildAt(0)->GetName(), "b");
    EXPECT_EQ(root->GetChildAt(1)->GetName(), "a");
    EXPECT_THROW(root->Add(CreateText("a", "dup")), RTE::VerificationFailed);
    EXPECT_THROW(root->Add(CreateText("", "no name")), RTE::VerificationFailed);
    EXPECT_THROW(root->Add(nullptr), RTE::VerificationFailed);
    EXPECT_THROW(inner->Add(root), RTE::VerificationFailed); // root holds inner
    EXPECT_THROW(inner->Add(inner), RTE::VerificationFailed);

    EXPECT_EQ(root->FindPath("inner/z")->GetName(), "z");
    EXPECT_FALSE(root->FindPath("inner/x/y")); // steps are split at '/'
    EXPECT_TRUE(inner->Find("x/y"));
    EXPECT_FALSE(root->FindPath("a/b")); // "a" is not a category
    EXPECT_FALSE(root->FindPath(""));

    EXPECT_TRUE(root->Remove("b"));
    EXPECT_FALSE(root->Remove("b"));
    EXPECT_EQ(root->GetChildCount(), 2u);
    EXPECT_EQ(root->GetChildAt(0)->GetName(), "a");
    root->Add(CreateText("b", "again")); // the name is free again
    EXPECT_THROW(root->GetChildAt(3), RTE::VerificationFailed);
}

TEST(ParameterNode, ChildrenForgetADestroyedParent)
{
    boost::shared_ptr<C_Node> child = CreateText("t", "v");
    {
        const auto category = CreateCategory("c", "", "");
        category->Add(child);
        EXPECT_EQ(child->GetParent(), category.get());
    }
    EXPECT_EQ(child->GetParent(), nullptr);
    CastToText(child)->SetValue("still fine");
}

TEST(ParameterNode, CastsGiveNullForOtherKinds)
{
    const boost::shared_ptr<C_Node> text = CreateText("t", "v");
    EXPECT_TRUE(CastToText(text));
    EXPECT_FALSE(CastToDouble(text));
    EXPECT_FALSE(CastToInteger(text));
    EXPECT_FALSE(CastToCategory(text));
    EXPECT_FALSE(CastToEnumeration(text));
    EXPECT_FALSE(CastToList(text));
    EXPECT_FALSE(CastToText(nullptr));
    EXPECT_TRUE(CastToCategory(CreateCategory("c", "", "")));
}

TEST(ParameterNode, AccessModeAndEditorAreChecked)
{
    TestSupport::LogCapture log;
    const auto node = CreateText("t", "t", "", AccessInternal, "v");
    EXPECT_EQ(node->GetAccessMode(), 2);
    EXPECT_THROW(node->SetAccessMode(static_cast<E_AccessMode>(3)), RTE::VerificationFailed);
    EXPECT_THROW(node->SetEditor(nullptr), RTE::VerificationFailed);
    node->SetEditor("ColorPicker");
    EXPECT_STREQ(node->GetEditor(), "ColorPicker");
}
