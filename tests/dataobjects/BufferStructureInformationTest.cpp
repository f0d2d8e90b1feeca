#include <DataObjects/BufferStructureInformation.h>

#include <BufferApi/BufferFile.h>
#include <BufferApi/Creation.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>

#include <memory>
#include <tuple>

using namespace DataObjects;

namespace {

std::unique_ptr<BufferApi::I_Buffer> NewBuffer() { return std::unique_ptr<BufferApi::I_Buffer>(BufferApi::CreateBuffer()); }

template <typename Frame>
BufferApi::I_Frame* Add(BufferApi::I_Buffer& buffer, Frame* frame)
{
    return buffer.AddFrame(std::unique_ptr<BufferApi::I_Frame>(frame));
}

} // namespace

TEST(BufferStructureInformation, EmptyBufferGivesZeros)
{
    EXPECT_EQ(GetBufferStructureInformationForBuffer(*NewBuffer()), BufferStructureInformation());
}

TEST(BufferStructureInformation, ImageFrameWithMask)
{
    auto buffer = NewBuffer();
    Add(*buffer, BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, 5, 4, 3))->AddMask();
    Add(*buffer, BufferApi::CreateImageFrame(BufferApi::DATATYPE_BYTE, 1, 1, 1));
    const BufferStructureInformation info = GetBufferStructureInformationForBuffer(*buffer);
    EXPECT_EQ(info.frameCount, 2u);
    EXPECT_EQ(info.width, 5u);
    EXPECT_EQ(info.height, 4u);
    EXPECT_EQ(info.depth, 3u);
    EXPECT_EQ(info.dataType, BufferApi::DATATYPE_FLOAT);
    EXPECT_TRUE(info.isImage);
    EXPECT_FALSE(info.isVector);
    EXPECT_FALSE(info.isVector3C);
    EXPECT_TRUE(info.hasMask);
    EXPECT_EQ(info.vectorGridSize, 0);
}

TEST(BufferStructureInformation, VectorFramesGiveKindAndGridSize)
{
    auto buffer = NewBuffer();
    Add(*buffer, BufferApi::CreateVectorFrame(BufferApi::DATATYPE_FLOAT, 8, 6, 1, 16));
    BufferStructureInformation info = GetBufferStructureInformationForBuffer(*buffer);
    EXPECT_TRUE(info.isVector);
    EXPECT_FALSE(info.isVector3C);
    EXPECT_FALSE(info.isImage);
    EXPECT_FALSE(info.hasMask);
    EXPECT_EQ(info.vectorGridSize, 16);

    auto buffer3C = NewBuffer();
    Add(*buffer3C, BufferApi::CreateVector3CFrame(BufferApi::DATATYPE_DOUBLE, 8, 6, 2, 12));
    info = GetBufferStructureInformationForBuffer(*buffer3C);
    EXPECT_TRUE(info.isVector3C);
    EXPECT_FALSE(info.isVector);
    EXPECT_EQ(info.depth, 2u);
    EXPECT_EQ(info.dataType, BufferApi::DATATYPE_DOUBLE);
    EXPECT_EQ(info.vectorGridSize, 12);
}

TEST(BufferStructureInformation, HeadBufferGivesTheSameAsTheLoadedOne)
{
    TestSupport::TempDir dir;
    auto buffer = NewBuffer();
    Add(*buffer, BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 7, 3, 2))->AddMask();
    Add(*buffer, BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 7, 3, 2));
    const std::string path = dir / "B00001.im7";
    BufferApi::ExportBuffer(buffer.get(), path, nullptr);

    unsigned frames = 0, width = 0, height = 0, depth = 0;
    std::unique_ptr<BufferApi::I_Buffer> head(
        BufferApi::GetImportInformation(path, frames, width, height, depth, false));
    ASSERT_NE(head, nullptr);
    ASSERT_FALSE(head->GetFrame(0)->HasData());
    const BufferStructureInformation info = GetBufferStructureInformationForBuffer(*head);
    EXPECT_EQ(info, GetBufferStructureInformationForBuffer(*buffer));
    EXPECT_EQ(info.frameCount, frames);
    EXPECT_EQ(info.width, width);
    EXPECT_EQ(info.height, height);
    EXPECT_EQ(info.depth, depth);
    EXPECT_TRUE(info.hasMask);
}

TEST(IsXYPlotBuffer, EveryFrameMustBeAFloatImageOfTwoRowsAndOnePlane)
{
    auto plot = NewBuffer();
    EXPECT_FALSE(IsXYPlotBuffer(*plot));
    Add(*plot, BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, 100, 2, 1));
    EXPECT_TRUE(IsXYPlotBuffer(*plot));
    Add(*plot, BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, 3, 2, 1));
    EXPECT_TRUE(IsXYPlotBuffer(*plot));

    auto oldTrace = NewBuffer();
    Add(*oldTrace, BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, 100, 1, 1));
    Add(*oldTrace, BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, 100, 1, 1));
    EXPECT_FALSE(IsXYPlotBuffer(*oldTrace));

    auto cases = {std::make_tuple(BufferApi::DATATYPE_DOUBLE, 2u, 1u), std::make_tuple(BufferApi::DATATYPE_FLOAT, 3u, 1u),
                  std::make_tuple(BufferApi::DATATYPE_FLOAT, 2u, 2u)};
    for (auto [type, height, depth] : cases) {
        auto buffer = NewBuffer();
        Add(*buffer, BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, 10, 2, 1));
        Add(*buffer, BufferApi::CreateImageFrame(type, 10, height, depth));
        EXPECT_FALSE(IsXYPlotBuffer(*buffer)) << type << " " << height << " " << depth;
    }

    auto vector = NewBuffer();
    Add(*vector, BufferApi::CreateVectorFrame(BufferApi::DATATYPE_FLOAT, 10, 2, 1, 1));
    EXPECT_FALSE(IsXYPlotBuffer(*vector));
}
