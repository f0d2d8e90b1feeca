#include <RTE/Exception.h>
#include <RTE/Parameter/Factory.h>

#include <gtest/gtest.h>

#include "support/TestSupport.h"

using namespace RTE::Parameter;
using RTE::C_RangeT;

namespace {

boost::shared_ptr<C_Tree> MakeTree()
{
    auto tree = CreateTree();
    auto camera = CreateCategory("Camera", "Camera", "");
    camera->Add(CreateInteger("Exposure", 20));
    camera->Add(CreateText("Name", "cam"));
    tree->Add(camera);
    tree->Add(CreateDouble("Gain", 1.5));
    tree->Add(CreateList("Tags", "", "", [] { return CreateText("Tag", ""); }));
    return tree;
}

} // namespace

TEST(ParameterTree, FindsByNameThenByPath)
{
    const auto tree = MakeTree();
    EXPECT_EQ(tree->GetChildCount(), 3u);
    EXPECT_EQ(CastToDouble(tree->Find("Gain"))->GetValue(), 1.5);
    EXPECT_EQ(CastToInteger(tree->Find("Camera/Exposure"))->GetValue(), 20);
    EXPECT_FALSE(tree->Find("Camera/Missing"));

    tree->Add(CreateText("Camera/Exposure", "a name, not a path"));
    EXPECT_TRUE(CastToText(tree->Find("Camera/Exposure")));

    EXPECT_TRUE(tree->Remove("Gain"));
    EXPECT_FALSE(tree->Find("Gain"));
}

TEST(ParameterTree, CopiesAreDeepAndDoNotCopySignals)
{
    const auto tree = MakeTree();
    int originalSignals = 0;
    tree->Changed().connect([&](C_Node&) { ++originalSignals; });
    CastToList(tree->Find("Tags"))->Append();

    C_Tree copy(*tree);
    CastToInteger(copy.Find("Camera/Exposure"))->SetValue(99);
    EXPECT_EQ(CastToInteger(tree->Find("Camera/Exposure"))->GetValue(), 20);
    EXPECT_EQ(originalSignals, 0);
    EXPECT_EQ(copy.Find("Camera/Exposure")->GetParent(), copy.Find("Camera").get());
    // The copied list keeps its factory.
    EXPECT_EQ(CastToList(copy.Find("Tags"))->GetSize(), 1u);
    CastToList(copy.Find("Tags"))->Append();

    int assignedSignals = 0;
    C_Tree assigned;
    assigned.Changed().connect([&](C_Node&) { ++assignedSignals; });
    assigned = *tree;
    CastToDouble(assigned.Find("Gain"))->SetValue(2.5);
    EXPECT_EQ(assignedSignals, 1); // its own connection stays
    EXPECT_EQ(CastToDouble(tree->Find("Gain"))->GetValue(), 1.5);
    EXPECT_EQ(originalSignals, 0);
}

TEST(ParameterTree, ChangedFiresForValuesAtAnyDepthButNotForStructure)
{
    const auto tree = MakeTree();
    std::vector<QString> changed;
    tree->Changed().connect([&](C_Node& node) { changed.push_back(node.GetName()); });

    CastToInteger(tree->Find("Camera/Exposure"))->SetValue(30);
    const auto tag = CastToText(CastToList(tree->Find("Tags"))->Append()); // structure: silent
    tag->SetValue("red");
    tree->Add(CreateText("New", "x")); // structure: silent
    const auto gain = CastToDouble(tree->Find("Gain"));
    tree->Remove("Gain");
    gain->SetValue(3.0); // no longer in the tree
    EXPECT_EQ(changed, (std::vector<QString>{"Exposure", "Tag"}));
}

TEST(ParameterTree, NodesOutliveTheirTree)
{
    boost::shared_ptr<C_Integer> exposure;
    {
        const auto tree = MakeTree();
        tree->Changed().connect([](C_Node&) { FAIL() << "the tree is gone"; });
        exposure = CastToInteger(tree->Find("Camera/Exposure"));
    }
    exposure->SetValue(1);
    EXPECT_EQ(exposure->GetParent(), nullptr); // the category went with the tree
}
