#include "TreeTextTestSupport.h"
#include "support/TestSupport.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>

using namespace RTE::Parameter;
using RTE::C_RangeT;

namespace TreeTextTest {

namespace {
std::uint64_t Bits(double value) { return TestSupport::BitsOf(value); }

double FromBits(std::uint64_t bits) { return TestSupport::DoubleFromBits(bits); }
} // namespace

boost::shared_ptr<C_Tree> MakeRichTree()
{
    const double inf = std::numeric_limits<double>::infinity();
    const C_RangeT<double> all(-inf, inf);
    auto tree = CreateTree();

    QString awkward = QStringLiteral("quote\" backslash\\ newline\n cr\r tab\t nul");
    awkward += QChar(0);
    awkward += QStringLiteral(" bell\x07 del\x7f umlaut \u00e4 euro \u20ac clef ");
    awkward += QString::fromUcs4(U"\U0001D11E");
    awkward += QChar(0xD800); // unpaired surrogates
    awkward += QStringLiteral(" ");
    awkward += QChar(0xDFFF);
    awkward += QStringLiteral(" \\u0041 end");

    auto strings = CreateCategory("Strings", "Titles \"too\"\n", "Description with \u00e4");
    strings->Add(CreateText("awkward", awkward, awkward, AccessReadOnly, awkward));
    strings->Add(CreateText("empty", ""));
    strings->Add(CreateText(QStringLiteral("name with spaces = and \"quotes\" / slash"), "v"));
    tree->Add(strings);

    auto numbers = CreateCategory("Numbers", "", "");
    numbers->Add(CreateInteger("min", "min", "", AccessInternal, std::numeric_limits<long long>::min(),
                               C_RangeT<long long>(std::numeric_limits<long long>::min(),
                                                   std::numeric_limits<long long>::max())));
    numbers->Add(CreateInteger("plain", 42));
    const std::pair<const char*, double> doubles[] = {
        {"tenth", 0.1},
        {"negzero", -0.0},
        {"denormal", std::numeric_limits<double>::denorm_min()},
        {"max", std::numeric_limits<double>::max()},
        {"lowest", std::numeric_limits<double>::lowest()},
        {"inf", inf},
        {"minusinf", -inf},
        {"nan", std::nan("")},
        {"nanpayload", FromBits(0xFFF4000000000123ULL)},
        {"third", 1.0 / 3.0},
    };
    for (const auto& [name, value] : doubles)
        numbers->Add(CreateDouble(name, name, "", AccessReadWrite, value, all));
    numbers->Add(CreateDouble("ranged", "ranged", "", AccessReadWrite, 0.5, C_RangeT<double>(0.25, 0.75)));
    tree->Add(numbers);

    auto mode = CreateEnumeration("Mode", "Mode", "pick one", "CustomCombo");
    mode->AddEntry(Private::CreateEnumerationEntry("a", "A \"first\"", "desc", -7));
    mode->AddEntry(Private::CreateEnumerationEntry("b", "B", "", std::numeric_limits<int>::max()));
    mode->SetSelectedIndex(1);
    tree->Add(mode);
    auto none = CreateEnumeration("NoEntries", "", "");
    tree->Add(none);

    auto points = CreateList("Points", "Points", "", {});
    for (int i = 0; i < 3; ++i) {
        auto point = CreateCategory("Point", "", "");
        point->Add(CreateDouble("x", i * 1.25));
        point->Add(CreateList("Inner", "", "", {}));
        points->Append(point);
    }
    CastToList(CastToCategory(points->GetAt(2))->Find("Inner"))->Append(CreateText("deep", "value"));
    tree->Add(points);
    tree->Add(CreateList("EmptyList", "", "", {}));

    auto editor = CreateText("custom", "custom", "", AccessReadWrite, "x");
    editor->SetEditor("ColorPicker");
    tree->Add(editor);
    return tree;
}

std::string ToText(const C_Tree& tree)
{
    std::ostringstream out;
    tree.Write(out);
    return out.str();
}

boost::shared_ptr<C_Tree> FromText(const std::string& text, const QString& source)
{
    std::istringstream in(text);
    return C_Tree::ReadNew(in, source);
}

void ExpectSameNode(const C_Node& expected, const C_Node& actual, const QString& path)
{
    const QString where = path + "/" + expected.GetName();
    SCOPED_TRACE(where.toStdString());
    ASSERT_EQ(expected.GetKind(), actual.GetKind());
    EXPECT_EQ(expected.GetName(), actual.GetName());
    EXPECT_EQ(expected.GetTitle(), actual.GetTitle());
    EXPECT_EQ(expected.GetDescription(), actual.GetDescription());
    EXPECT_EQ(expected.GetAccessMode(), actual.GetAccessMode());
    EXPECT_STREQ(expected.GetEditor(), actual.GetEditor());
    switch (expected.GetKind()) {
    case E_NodeKind::Text:
        EXPECT_EQ(static_cast<const C_Text&>(expected).GetValue(), static_cast<const C_Text&>(actual).GetValue());
        break;
    case E_NodeKind::Integer:
        EXPECT_EQ(static_cast<const C_Integer&>(expected).GetValue(), static_cast<const C_Integer&>(actual).GetValue());
        EXPECT_EQ(static_cast<const C_Integer&>(expected).GetRange(), static_cast<const C_Integer&>(actual).GetRange());
        break;
    case E_NodeKind::Double: {
        const auto& e = static_cast<const C_Double&>(expected);
        const auto& a = static_cast<const C_Double&>(actual);
        EXPECT_EQ(Bits(e.GetValue()), Bits(a.GetValue()));
        EXPECT_EQ(Bits(e.GetRange().GetMin()), Bits(a.GetRange().GetMin()));
        EXPECT_EQ(Bits(e.GetRange().GetMax()), Bits(a.GetRange().GetMax()));
        break;
    }
    case E_NodeKind::Enumeration: {
        const auto& e = static_cast<const C_Enumeration&>(expected);
        const auto& a = static_cast<const C_Enumeration&>(actual);
        ASSERT_EQ(e.GetEntryCount(), a.GetEntryCount());
        EXPECT_EQ(e.GetSelectedIndex(), a.GetSelectedIndex());
        for (unsigned i = 0; i < e.GetEntryCount(); ++i) {
            EXPECT_EQ(e.GetEntry(i)->GetName(), a.GetEntry(i)->GetName());
            EXPECT_EQ(e.GetEntry(i)->GetTitle(), a.GetEntry(i)->GetTitle());
            EXPECT_EQ(e.GetEntry(i)->GetDescription(), a.GetEntry(i)->GetDescription());
            EXPECT_EQ(e.GetEntry(i)->GetValue(), a.GetEntry(i)->GetValue());
        }
        break;
    }
    case E_NodeKind::List: {
        const auto& e = static_cast<const C_List&>(expected);
        const auto& a = static_cast<const C_List&>(actual);
        ASSERT_EQ(e.GetSize(), a.GetSize());
        for (unsigned i = 0; i < e.GetSize(); ++i)
            ExpectSameNode(*e.GetAt(i), *a.GetAt(i), where + "[" + QString::number(i) + "]");
        break;
    }
    case E_NodeKind::Category: {
        const auto& e = static_cast<const C_Category&>(expected);
        const auto& a = static_cast<const C_Category&>(actual);
        ASSERT_EQ(e.GetChildCount(), a.GetChildCount());
        for (unsigned i = 0; i < e.GetChildCount(); ++i)
            ExpectSameNode(*e.GetChildAt(i), *a.GetChildAt(i), where);
        break;
    }
    }
}

void ExpectSameTree(const C_Tree& expected, const C_Tree& actual)
{
    ExpectSameNode(*expected.GetRoot(), *actual.GetRoot());
}

} // namespace TreeTextTest
