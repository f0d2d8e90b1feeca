#include <DataObjects/BufferAttributes.h>

#include <BufferApi/Creation.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <memory>

using namespace DataObjects;

namespace {

std::unique_ptr<BufferApi::I_Buffer> BufferWithFrames(unsigned frames)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    for (unsigned i = 0; i < frames; ++i)
        buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 2, 2, 1)));
    return buffer;
}

} // namespace

TEST(BufferAttributes, ArraysKeepTheirElementTypeAndOneElementReadsAsSingleValue)
{
    auto buffer = BufferWithFrames(2);
    const unsigned short words[] = {1, 2, 3};
    const float floats[] = {0.5f, 1.5f};
    const double one = 7.25;
    const int ints[] = {-1, 2};
    BufferApi::AttributeStore& global = buffer->GetAttributeStore();
    global.SetArray("words", 3, BufferApi::DATATYPE_WORD, words);
    global.SetArray("floats", 2, BufferApi::DATATYPE_FLOAT, floats);
    global.SetArray("one", 1, BufferApi::DATATYPE_DOUBLE, &one);
    global.SetArray("empty", 0, BufferApi::DATATYPE_INT32, nullptr);
    global.SetString("text", "hello");
    buffer->GetFrame(1)->GetAttributeStore().SetArray("ints", 2, BufferApi::DATATYPE_INT32, ints);

    const GlobalAndFrameAttributes all = GetBufferAttributes(*buffer);
    EXPECT_TRUE(all.GetAttributeValue("words").IsList<unsigned short>());
    EXPECT_EQ(all.GetAttributeValue("words").GetValue<std::vector<unsigned short>>(),
              (std::vector<unsigned short>{1, 2, 3}));
    EXPECT_EQ(all.GetAttributeValue("floats"), C_AttributeValue(std::vector<float>{0.5f, 1.5f}));
    EXPECT_EQ(all.GetAttributeValue("one"), C_AttributeValue(7.25));
    EXPECT_FALSE(all.GetAttributeValue("one").IsList<double>());
    EXPECT_EQ(all.GetAttributeValue("empty"), C_AttributeValue(std::vector<int>{}));
    EXPECT_EQ(all.GetAttributeValue("text").ToString(), "hello");
    EXPECT_TRUE(all.GetAttributeValue("missing").IsNull());

    // Order of setting is kept.
    ASSERT_EQ(all.global.GetCount(), 5u);
    EXPECT_EQ(all.global.GetAttributes()[0].GetName(), "words");
    EXPECT_EQ(all.global.GetAttributes()[4].GetName(), "text");

    ASSERT_TRUE(all.HasFrameAttributes());
    ASSERT_EQ(all.frames.size(), 2u);
    EXPECT_TRUE(all.frames[0].IsEmpty());
    EXPECT_EQ(all.frames[1].GetAttributeValue("ints"), C_AttributeValue(std::vector<int>{-1, 2}));
    // Frame attributes are not global ones.
    EXPECT_TRUE(all.GetAttributeValue("ints").IsNull());
}

TEST(BufferAttributes, BufferWithoutFramesHasNoFrameAttributes)
{
    auto buffer = BufferWithFrames(0);
    EXPECT_FALSE(GetBufferAttributes(*buffer).HasFrameAttributes());
}

TEST(BufferAttributes, ViewWritesThroughAndReadsBack)
{
    auto buffer = BufferWithFrames(1);
    C_BufferAttributes frameView(*buffer->GetFrame(0));
    frameView.Set("d", std::vector<double>{1.0, 2.0});
    frameView.Set("s", "x");
    frameView.Set("w", static_cast<unsigned short>(9));
    frameView.Set("s", "y");
    EXPECT_EQ(buffer->GetFrame(0)->GetAttributeStore().GetCount(), 3u);
    EXPECT_EQ(frameView.GetAttributeValue("s").ToString(), "y");
    EXPECT_EQ(frameView.GetAttributeValue("w"), C_AttributeValue(static_cast<unsigned short>(9)));
    EXPECT_EQ(frameView.GetAttribute("d"), C_Attribute("d", std::vector<double>{1.0, 2.0}));
    EXPECT_TRUE(frameView.Contains("d"));
    EXPECT_TRUE(buffer->GetAttributeStore().IsEmpty());

    auto clone = frameView.Clone();
    frameView.Set("s", C_AttributeValue());
    EXPECT_FALSE(frameView.Contains("s"));
    EXPECT_EQ(clone->GetAttributeValue("s").ToString(), "y");

    EXPECT_TRUE(frameView.Remove("d"));
    frameView.Clear();
    EXPECT_TRUE(frameView.IsEmpty());
    EXPECT_EQ(TestSupport::MessageOf([&] { frameView.Set("", 1); }), "Attribute name is empty");
}
