#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Attribute.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace BufferApi;

namespace {
std::vector<std::string> Names(const AttributeStore& store)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < store.GetCount(); ++i)
        names.push_back(store.At(i).GetName());
    return names;
}

std::string Text(const AttributeStore& store, const std::string& name)
{
    const auto* attribute = dynamic_cast<const I_AttributeString*>(store.Find(name));
    return attribute ? attribute->GetValue() : "(none)";
}
} // namespace

TEST(AttributeStoreTest, OrderOfFirstSettingAndReplaceInPlace)
{
    AttributeStore store;
    EXPECT_TRUE(store.IsEmpty());
    store.SetString("b", "1");
    store.SetString("a", "2");
    const double values[] = {1.5, 2.5};
    EXPECT_TRUE(store.SetArray("c", 2, DATATYPE_DOUBLE, values));
    store.SetString("b", "3"); // replaced where it stands
    EXPECT_EQ(Names(store), (std::vector<std::string>{"b", "a", "c"}));
    EXPECT_EQ(Text(store, "b"), "3");

    // A name may change kind: the text "a" becomes an array in its place.
    const int ints[] = {4};
    EXPECT_TRUE(store.SetArray("a", 1, DATATYPE_INT32, ints));
    EXPECT_FALSE(store.Find("a")->IsString());
    EXPECT_EQ(Names(store), (std::vector<std::string>{"b", "a", "c"}));

    EXPECT_TRUE(store.Remove("b"));
    EXPECT_FALSE(store.Remove("b"));
    EXPECT_EQ(Names(store), (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(store.Find("b"), nullptr);
    EXPECT_THROW(store.At(2), RTE::VerificationFailed);
    store.Clear();
    EXPECT_TRUE(store.IsEmpty());
}

TEST(AttributeStoreTest, ArraysCopyTheirElements)
{
    AttributeStore store;
    std::vector<unsigned short> words = {1, 65535, 7};
    ASSERT_TRUE(store.SetArray("w", 3, DATATYPE_WORD, words.data()));
    words[1] = 0;
    const auto* array = dynamic_cast<const I_AttributePlane*>(store.Find("w"));
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->GetDataType(), DATATYPE_WORD);
    EXPECT_EQ(array->GetCount(), 3u);
    EXPECT_EQ(static_cast<const unsigned short*>(array->GetData())[1], 65535);

    ASSERT_TRUE(store.SetArray("empty", 0, DATATYPE_FLOAT, nullptr));
    EXPECT_EQ(dynamic_cast<const I_AttributePlane*>(store.Find("empty"))->GetData(), nullptr);
}

TEST(AttributeStoreTest, RefusedArraysLeaveNothing)
{
    AttributeStore store;
    const unsigned char bytes[] = {1, 2};
    const unsigned int uints[] = {1, 2};
    EXPECT_FALSE(store.SetArray("x", 2, DATATYPE_BYTE, bytes));
    EXPECT_FALSE(store.SetArray("x", 2, DATATYPE_RGB, uints));
    EXPECT_FALSE(store.SetArray("x", 2, DATATYPE_UINT32, uints));
    EXPECT_FALSE(store.SetArray("x", 2, DATATYPE_UNKNOWN, uints));
    EXPECT_FALSE(store.SetArray("", 2, DATATYPE_INT32, uints));
    EXPECT_FALSE(store.SetArray("x", 2, DATATYPE_INT32, nullptr));
    EXPECT_TRUE(store.IsEmpty());
    EXPECT_THROW(store.SetString("", "v"), RTE::VerificationFailed);
    EXPECT_THROW(store.Set(nullptr), RTE::VerificationFailed);
    EXPECT_TRUE(store.IsEmpty());
}

TEST(AttributeStoreTest, CopiesAreIndependent)
{
    AttributeStore store;
    store.SetString("a", "1");
    AttributeStore copy(store);
    store.SetString("a", "2");
    store.SetString("b", "3");
    EXPECT_EQ(Text(copy, "a"), "1");
    EXPECT_EQ(copy.GetCount(), 1u);
    copy = store;
    EXPECT_EQ(Names(copy), (std::vector<std::string>{"a", "b"}));
    AttributeStore& self = copy;
    copy = self;
    EXPECT_EQ(copy.GetCount(), 2u);
    AttributeStore moved(std::move(copy));
    EXPECT_EQ(Text(moved, "b"), "3");
}
