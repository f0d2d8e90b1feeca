// The parameter tree text reader: C_Tree::ReadNew on any text. A tree that reads must write and
// read back: the text form keeps every node, attribute and value.

#include "FuzzTargets.h"

#include <RTE/Parameter/Enumeration.h>
#include <RTE/Parameter/Factory.h>
#include <RTE/Parameter/Tree.h>

#include <sstream>

namespace SetApiFuzz {

using namespace RTE::Parameter;

void RunParameterTree(const std::uint8_t* data, std::size_t size)
{
    QuietLogging();
    boost::shared_ptr<C_Tree> tree;
    Guarded([&] {
        std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
        tree = C_Tree::ReadNew(in, QStringLiteral("input"));
    });
    if (!tree)
        return;
    std::ostringstream out;
    try {
        tree->Write(out);
        std::istringstream again(out.str());
        C_Tree::ReadNew(again, QStringLiteral("written"));
    } catch (const RTE::Exception& failure) {
        Fail("a tree that was read does not write and read back", failure);
    }
}

std::vector<Bytes> SeedsParameterTree()
{
    auto tree = CreateTree();
    auto category = CreateCategory(QStringLiteral("Camera"), QStringLiteral("Camera \"one\""), QStringLiteral("d\ne"));
    category->Add(CreateText(QStringLiteral("Model"), QStringLiteral("Zarvo X \u00e9")));
    category->Add(CreateInteger(QStringLiteral("Width"), QStringLiteral("Width"), QString(), AccessReadOnly, 640,
                                RTE::C_RangeT<long long>(1, 4096)));
    category->Add(CreateDouble(QStringLiteral("Rate"), QStringLiteral("Rate"), QStringLiteral("Hz"),
                               AccessInternal, 12.5, RTE::C_RangeT<double>(0.0, 1e6)));
    auto enumeration = CreateEnumeration(QStringLiteral("Mode"), QStringLiteral("Mode"), QString());
    enumeration->AddEntry(Private::CreateEnumerationEntry(QStringLiteral("Single"), QStringLiteral("single"), QString(), 1));
    enumeration->AddEntry(Private::CreateEnumerationEntry(QStringLiteral("Double"), QStringLiteral("double"), QString(), 2));
    enumeration->SetSelectedIndex(1);
    category->Add(enumeration);
    tree->Add(category);
    tree->Add(CreateDouble(QStringLiteral("Tiny"), -0.0));
    std::ostringstream out;
    tree->Write(out);
    const std::string text = out.str();
    return {Bytes(text.begin(), text.end())};
}

} // namespace SetApiFuzz
