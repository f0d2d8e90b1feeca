#include "TreeTextTestSupport.h"

#include <RTE/Exception.h>
#include <RTE/FaultInjectingFileSystem.h>

#include <sstream>

#include "support/TestSupport.h"

using namespace RTE::Parameter;
using RTE::C_RangeT;
using namespace TreeTextTest;

TEST(ParameterTreeText, EveryKindAndAttributeRoundTrips)
{
    const auto tree = MakeRichTree();
    const std::string text = ToText(*tree);
    const auto back = FromText(text);
    ExpectSameTree(*tree, *back);
    EXPECT_EQ(ToText(*back), text); // and writing is stable

    // Known editors come back as the very constants, so pointer comparisons keep working.
    EXPECT_EQ(back->Find("Numbers/plain")->GetEditor(), C_Integer::EditorSpinBox);
    EXPECT_EQ(back->Find("Points")->GetEditor(), C_List::EditorLineEdit);
    EXPECT_EQ(back->Find("Strings/empty")->GetEditor(), C_Text::EditorLineEdit);
}

TEST(ParameterTreeText, TextIsVersionedLineBasedUtf8)
{
    auto tree = CreateTree();
    tree->Add(CreateText("t", QString::fromUtf8("\xc3\xa4\n")));
    tree->Add(CreateDouble("d", 0.1));
    const std::string text = ToText(*tree);
    EXPECT_EQ(text.rfind("SetApiParameterTree 1\n", 0), 0u);
    EXPECT_NE(text.find("value=\"\xc3\xa4\\n\""), std::string::npos);
    EXPECT_NE(text.find("value=0.1\n"), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 4), "end\n");
}

TEST(ParameterTreeText, WindowsLineEndsAndMissingFinalLineEndRead)
{
    const auto tree = MakeRichTree();
    std::string text = ToText(*tree);
    std::string crlf;
    for (char c : text) {
        if (c == '\n')
            crlf += '\r';
        crlf += c;
    }
    ExpectSameTree(*tree, *FromText(crlf));
    text.pop_back();
    ExpectSameTree(*tree, *FromText(text));
}

TEST(ParameterTreeText, FilesRoundTripAndMissingFilesNameThePath)
{
    TestSupport::TempDir dir;
    TestSupport::LogCapture log;
    const QString path = QString::fromStdString(dir / "tree.txt");
    const auto tree = MakeRichTree();
    tree->WriteFile(path);
    C_Tree back;
    back.ReadFile(path);
    ExpectSameTree(*tree, back);

    try {
        back.ReadFile(QString::fromStdString(dir / "missing.txt"));
        FAIL() << "no exception";
    } catch (const RTE::FileError& error) {
        EXPECT_TRUE(error.message().contains("missing.txt"));
    }
    EXPECT_THROW(tree->WriteFile(QString::fromStdString(dir / "no/such/folder/tree.txt")), RTE::FileWriteError);

    // A full disk: the error names the file and the cause, and the earlier file stays whole.
    const std::string before = TestSupport::ReadFile(dir / "tree.txt");
    auto faults = std::make_shared<RTE::FaultInjectingFileSystem>();
    faults->FailWritesAfter(16);
    RTE::ScopedFileSystemBackend installed(faults);
    auto changed = CreateTree();
    changed->Add(CreateText("t", QStringLiteral("another tree")));
    try {
        changed->WriteFile(path);
        ADD_FAILURE() << "no exception";
    } catch (const RTE::FileWriteError& error) {
        EXPECT_TRUE(error.message().contains("tree.txt")) << error.message().toStdString();
        EXPECT_TRUE(error.message().contains("No space left on device")) << error.message().toStdString();
    }
    EXPECT_EQ(TestSupport::ReadFile(dir / "tree.txt"), before);
}

TEST(ParameterTreeText, ReadingUsesTheElementFactoriesOfTheTreeBeingReplaced)
{
    int made = 0;
    int signalCount = 0;
    const auto factory = [&] {
        ++made;
        auto point = CreateCategory("Point", "", "");
        auto x = CreateInteger("x", "x", "", AccessReadWrite, 0, C_RangeT<long long>(0, 1000));
        x->Changed().connect([&](C_Node&) { ++signalCount; }); // something only the factory can set up
        point->Add(x);
        point->Add(CreateList("Sub", "", "", [] { return CreateText("s", "made"); }));
        return point;
    };
    C_Tree target;
    auto group = CreateCategory("Group", "", "");
    group->Add(CreateList("Points", "", "", factory));
    target.Add(group);

    // The text as another program wrote it: elements with values and an extra child.
    C_Tree source;
    auto sourceGroup = CreateCategory("Group", "", "");
    auto sourceList = CreateList("Points", "", "", {});
    for (int i = 1; i <= 2; ++i) {
        auto point = CreateCategory("Point", "", "");
        point->Add(CreateInteger("x", "x", "", AccessReadWrite, i * 10, C_RangeT<long long>(0, 1000)));
        auto sub = CreateList("Sub", "", "", {});
        sub->Append(CreateText("s", "written"));
        point->Add(sub);
        point->Add(CreateText("extra", "kept"));
        sourceList->Append(point);
    }
    sourceGroup->Add(sourceList);
    source.Add(sourceGroup);

    std::istringstream in(ToText(source));
    target.Read(in, "points");
    ExpectSameTree(source, target);
    EXPECT_EQ(made, 2);

    const auto list = CastToList(target.Find("Group/Points"));
    ASSERT_TRUE(list->GetElementFactory());
    const auto x = CastToInteger(CastToCategory(list->GetAt(0))->Find("x"));
    const int before = signalCount;
    x->SetValue(500);
    EXPECT_EQ(signalCount, before + 1); // the factory's connection is on the element read
    const auto sub = CastToList(CastToCategory(list->GetAt(1))->Find("Sub"));
    EXPECT_EQ(CastToText(sub->Append())->GetValue(), "made"); // nested factories too
    list->Append();
    EXPECT_EQ(made, 3);
}

TEST(ParameterTreeText, ListsWithoutACounterpartAreReadAsWritten)
{
    TestSupport::LogCapture log;
    const auto source = MakeRichTree();
    C_Tree target;
    std::istringstream in(ToText(*source));
    target.Read(in, "rich");
    ExpectSameTree(*source, target);
    EXPECT_THROW(CastToList(target.Find("Points"))->Append(), RTE::VerificationFailed); // no factory
}

TEST(ParameterTreeText, AFactoryOfAnotherKindIsAnError)
{
    TestSupport::LogCapture log;
    C_Tree target;
    target.Add(CreateList("L", "", "", [] { return CreateDouble("d", 0.0); }));
    target.Add(CreateText("keep", "me"));
    const std::string text = "SetApiParameterTree 1\n"
                             "list \"L\" {\n"
                             "  text \"t\" value=\"x\"\n"
                             "}\n"
                             "end\n";
    std::istringstream in(text);
    try {
        target.Read(in, "kinds.txt");
        FAIL() << "no exception";
    } catch (const RTE::Exception& error) {
        EXPECT_TRUE(error.message().startsWith("kinds.txt:3:")) << error.message().toStdString();
    }
    EXPECT_TRUE(target.Find("keep")); // unchanged after the failure
}

TEST(ParameterTreeText, OptionalAttributesTakeTheirDefaults)
{
    const auto tree = FromText("SetApiParameterTree 1\n"
                               "integer \"i\" value=3\n"
                               "double \"d\" value=-2.5e-3\n"
                               "enumeration \"e\" {\n"
                               "  entry \"a\" value=1\n"
                               "  entry \"b\" value=2\n"
                               "}\n"
                               "category \"c\" {\n"
                               "}\n"
                               "\n"
                               "end\n"
                               "\n");
    const auto integer = CastToInteger(tree->Find("i"));
    EXPECT_EQ(integer->GetRange(), C_Integer::DefaultRange());
    EXPECT_EQ(integer->GetAccessMode(), AccessReadWrite);
    EXPECT_TRUE(integer->GetTitle().isEmpty());
    EXPECT_EQ(CastToDouble(tree->Find("d"))->GetValue(), -2.5e-3);
    EXPECT_EQ(CastToEnumeration(tree->Find("e"))->GetSelectedIndex(), 0);
    EXPECT_EQ(tree->GetChildCount(), 4u);
}
