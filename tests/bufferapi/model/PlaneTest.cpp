#include "model/AlignedMemory.h"
#include "model/Plane.h"

#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/Exception.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

using namespace BufferApi;

namespace {

bool IsAligned(const void* p)
{
    return reinterpret_cast<std::uintptr_t>(p) % 4096 == 0;
}

bool AllZero(const I_PlaneBase& plane)
{
    const auto* bytes = static_cast<const unsigned char*>(plane.GetData());
    for (std::size_t i = 0; i < plane.GetByteSize(); ++i)
        if (bytes[i] != 0)
            return false;
    return true;
}

template <typename T>
void ExpectTypedPlane(E_DataType type)
{
    std::unique_ptr<I_PlaneBase> plane(CreatePlane(type, 7, 3, nullptr));
    ASSERT_EQ(plane->GetDataType(), type);
    EXPECT_EQ(plane->GetElementSize(), sizeof(T));
    EXPECT_EQ(plane->GetByteSize(), 7u * 3u * sizeof(T));
    EXPECT_TRUE(IsAligned(plane->GetData()));
    EXPECT_TRUE(AllZero(*plane));
    auto* typed = dynamic_cast<I_Plane<T>*>(plane.get());
    ASSERT_NE(typed, nullptr);
    (*typed)(6, 2) = T(42);
    (*typed)(0, 1) = T(7);
    // Rows are packed: (x, y) lies at y * width + x.
    EXPECT_EQ(static_cast<const T*>(plane->GetData())[2 * 7 + 6], T(42));
    EXPECT_EQ(typed->GetRow(1)[0], T(7));
}

} // namespace

TEST(PlaneTest, EveryTypeIsAnAlignedZeroedPlaneOfItsCppType)
{
    ExpectTypedPlane<unsigned char>(DATATYPE_BYTE);
    ExpectTypedPlane<unsigned int>(DATATYPE_RGB);
    ExpectTypedPlane<double>(DATATYPE_DOUBLE);
    ExpectTypedPlane<float>(DATATYPE_FLOAT);
    ExpectTypedPlane<int>(DATATYPE_INT32);
    ExpectTypedPlane<unsigned int>(DATATYPE_UINT32);
    ExpectTypedPlane<unsigned short>(DATATYPE_WORD);
}

TEST(PlaneTest, DataTypeSizes)
{
    // Codes beyond 7 are not E_DataType values at all (the enumeration's range ends there); files
    // are checked with IsValidDataType before their codes become E_DataType.
    const std::size_t expected[] = {0, 1, 4, 8, 4, 4, 4, 2};
    for (int code = 0; code <= 7; ++code)
        EXPECT_EQ(GetDataTypeSize(E_DataType(code)), expected[code]) << code;
    EXPECT_FALSE(IsValidDataType(0));
    EXPECT_TRUE(IsValidDataType(1));
    EXPECT_TRUE(IsValidDataType(7));
    EXPECT_FALSE(IsValidDataType(8));
    EXPECT_FALSE(IsValidDataType(-1));
}

TEST(PlaneTest, ManyAllocationsStayAlignedAndZeroed)
{
    // Reused heap memory must be zeroed again; odd sizes must not shift the start.
    std::vector<std::unique_ptr<I_PlaneBase>> planes;
    for (unsigned i = 1; i < 40; ++i) {
        std::unique_ptr<I_PlaneBase> dirty(CreatePlane(DATATYPE_BYTE, i * 13, 3, nullptr));
        std::memset(dirty->GetData(), 0xAB, dirty->GetByteSize());
        dirty.reset();
        planes.emplace_back(CreatePlane(DATATYPE_BYTE, i * 13, 3, nullptr));
        EXPECT_TRUE(IsAligned(planes.back()->GetData())) << i;
        EXPECT_TRUE(AllZero(*planes.back())) << i;
    }
}

TEST(PlaneTest, ExternalMemoryIsViewedNotCopied)
{
    std::vector<unsigned short> memory(6, 5);
    std::unique_ptr<I_PlaneBase> plane(CreatePlane(DATATYPE_WORD, 3, 2, memory.data()));
    EXPECT_EQ(plane->GetData(), memory.data());
    dynamic_cast<I_Plane<unsigned short>&>(*plane)(2, 1) = 9;
    EXPECT_EQ(memory[5], 9);
    plane.reset();
    EXPECT_EQ(memory[5], 9); // still the caller's
}

TEST(PlaneTest, BadShapesAndTypesAreRefused)
{
    EXPECT_THROW(delete CreatePlane(DATATYPE_BYTE, 0, 5, nullptr), RTE::VerificationFailed);
    EXPECT_THROW(delete CreatePlane(DATATYPE_BYTE, 5, 0, nullptr), RTE::VerificationFailed);
    EXPECT_THROW(delete CreatePlane(DATATYPE_UNKNOWN, 5, 5, nullptr), RTE::VerificationFailed);
    const unsigned max = std::numeric_limits<unsigned>::max();
    // (2^32-1)^2 * 8 bytes does not fit in 64 bits.
    EXPECT_THROW(delete CreatePlane(DATATYPE_DOUBLE, max, max, nullptr), RTE::VerificationFailed);
    EXPECT_THROW(delete CreateImageFrame(DATATYPE_DOUBLE, max, max, 1), RTE::VerificationFailed);
}

TEST(PlaneTest, CheckedPlaneBytes)
{
    using Private::CheckedPlaneBytes;
    const unsigned max = std::numeric_limits<unsigned>::max();
    EXPECT_EQ(CheckedPlaneBytes(3, 5, 8), 120u);
    EXPECT_EQ(CheckedPlaneBytes(max, max, 1), std::size_t(max) * max);
    EXPECT_THROW(CheckedPlaneBytes(max, max, 2), RTE::VerificationFailed);
    EXPECT_THROW(Private::AllocateAligned(std::numeric_limits<std::size_t>::max() - 10, true),
                 RTE::VerificationFailed);
}

TEST(PlaneTest, MemoryThatCannotBeHadRaisesException)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers abort on allocations beyond its limit";
#else
    const unsigned max = std::numeric_limits<unsigned>::max();
    // Nearly 2^64 bytes: the size is valid arithmetic but no system can provide it.
    try {
        delete CreatePlane(DATATYPE_BYTE, max, max, nullptr);
        FAIL() << "an allocation of 2^64 bytes succeeded";
    } catch (const RTE::VerificationFailed&) {
        FAIL() << "an unavailable allocation is an RTE::Exception, not a bad argument";
    } catch (const RTE::Exception& e) {
        EXPECT_NE(std::string(e.what()).find("bytes"), std::string::npos) << e.what();
    }
#endif
}

TEST(PlaneTest, HeadPlanesHaveShapeButNoMemory)
{
    auto plane = Private::MakePlane(DATATYPE_FLOAT, 4, 4, Private::PlaneMemory::None);
    EXPECT_FALSE(plane->HasData());
    EXPECT_EQ(plane->GetByteSize(), 64u);
    auto copy = Private::ClonePlane(*plane);
    EXPECT_FALSE(copy->HasData());
    EXPECT_EQ(copy->GetWidth(), 4u);
}

TEST(PlaneTest, CloneOfAViewOwnsACopy)
{
    std::vector<float> memory = {1, 2, 3, 4};
    std::unique_ptr<I_PlaneBase> view(CreatePlane(DATATYPE_FLOAT, 2, 2, memory.data()));
    auto copy = Private::ClonePlane(*view);
    EXPECT_NE(copy->GetData(), memory.data());
    EXPECT_TRUE(IsAligned(copy->GetData()));
    memory[3] = 99;
    EXPECT_EQ(dynamic_cast<I_Plane<float>&>(*copy)(1, 1), 4.0f);
}
