// Walking the buffers of a set: the walk begins at buffer 1 whatever index is given, ends once the
// index reaches the set's size, and every step returns the iterator as it is after the step.

#include <SetApi/factory/C_SetIterator.h>
#include <SetApi/set/C_NullSet.h>

#include <BufferApi/Creation.h>

#include <gtest/gtest.h>

#include <vector>

using namespace SetApi;

namespace {

// A set of a given size whose buffer i has i frames, and which remembers what was loaded.
struct SizedSet : C_NullSet {
    explicit SizedSet(unsigned size) : C_NullSet("sized"), size(size) {}
    unsigned GetSize() const override { return size; }
    std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const override
    {
        loaded.push_back(index);
        std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
        for (unsigned i = 0; i < index; ++i)
            buffer->AddFrame(std::unique_ptr<BufferApi::I_Frame>(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 1, 1, 1)));
        return buffer;
    }
    unsigned size;
    mutable std::vector<unsigned> loaded;
};

std::vector<unsigned> Walk(SizedSet& set, int startIndex)
{
    set.loaded.clear();
    for (C_SetIterator it(&set, startIndex); it != C_SetIterator(); ++it)
        *it;
    return set.loaded;
}

} // namespace

TEST(C_SetIterator, StartsAtBufferOneWhateverTheIndexAndStopsAtTheSize)
{
    SizedSet empty(0), one(1), three(3);
    EXPECT_EQ(C_SetIterator(&empty, 0), C_SetIterator());
    EXPECT_EQ(C_SetIterator(nullptr, 2), C_SetIterator());
    EXPECT_EQ(Walk(empty, 0), std::vector<unsigned>{});
    EXPECT_EQ(Walk(one, 0), std::vector<unsigned>{1}); // buffer 0 is never visited
    EXPECT_EQ(Walk(three, 0), (std::vector<unsigned>{1, 2}));
    EXPECT_EQ(Walk(three, -7), (std::vector<unsigned>{1, 2}));
    EXPECT_EQ(C_SetIterator(&three, 0), C_SetIterator(&three, 2));
    EXPECT_NE(C_SetIterator(&three, 0), C_SetIterator(&one, 0));
}

TEST(C_SetIterator, StepsReturnThePositionAfterTheStepAndTheEndLoadsNothing)
{
    SizedSet three(3);
    C_SetIterator it(&three, 1);
    EXPECT_EQ(it->GetNumberOfFrames(), 1u);
    EXPECT_EQ(it()->GetNumberOfFrames(), 1u);
    const C_SetIterator prefix = ++it;
    EXPECT_EQ(prefix, it);
    EXPECT_EQ((*it)->GetNumberOfFrames(), 2u);
    EXPECT_EQ(it++, C_SetIterator()); // the postfix form too gives the new position
    EXPECT_EQ(it, C_SetIterator());

    three.loaded.clear();
    EXPECT_EQ(*it, nullptr);
    EXPECT_EQ(it(), nullptr);
    EXPECT_EQ(it.Next(), C_SetIterator()); // the end stays the end
    EXPECT_EQ(three.loaded, std::vector<unsigned>{});
}
