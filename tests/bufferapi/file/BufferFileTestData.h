#pragma once
// Buffers for the buffer file tests: deterministic content of every kind the format carries, a
// deep bit-exact comparison, and access to the documented byte layout for crafting bad files.

#include <BufferApi/AttributeStore.h>
#include <BufferApi/BufferFile.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>

#include <RTE/Parameter/Factory.h>

#include "common/ByteOrder.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace BufferFileTest {

using BufferPtr = std::unique_ptr<BufferApi::I_Buffer>;

inline boost::shared_ptr<RTE::Parameter::C_Tree> PackOptions(long long packType)
{
    auto tree = RTE::Parameter::CreateTree();
    tree->Add(RTE::Parameter::CreateInteger(QStringLiteral("PackType"), packType));
    return tree;
}

inline BufferPtr Import(const std::string& path)
{
    return BufferPtr(BufferApi::ImportBuffer(path, nullptr));
}

// Fills a plane: smooth (a gradient with a little deterministic noise, which packs well) or with
// pseudo-random bits (every bit pattern, NaN payloads of floats and doubles among them).
inline void Fill(BufferApi::I_PlaneBase& plane, std::uint32_t seed, bool smooth)
{
    auto* bytes = static_cast<std::uint8_t*>(plane.GetData());
    const std::size_t size = plane.GetByteSize();
    std::uint32_t state = seed * 2654435761u + 1;
    const auto next = [&] {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    };
    if (!smooth) {
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = std::uint8_t(next() >> 24);
        return;
    }
    const std::size_t elementSize = plane.GetElementSize();
    for (std::size_t i = 0; i < plane.GetElementCount(); ++i) {
        const double value = double(i % plane.GetWidth()) + double(i / plane.GetWidth()) / 2 + double(next() % 4);
        std::uint8_t* element = bytes + i * elementSize;
        switch (plane.GetDataType()) {
        case BufferApi::DATATYPE_DOUBLE: std::memcpy(element, &value, 8); break;
        case BufferApi::DATATYPE_FLOAT: {
            const float f = float(value);
            std::memcpy(element, &f, 4);
            break;
        }
        default: {
            const std::uint64_t v = std::uint64_t(value) + 100;
            std::memcpy(element, &v, elementSize); // little-endian host: the low bytes
        }
        }
    }
}

inline std::unique_ptr<BufferApi::I_Scale> Scale(double factor, double offset, const std::string& unit,
                                                 const std::string& description)
{
    return std::unique_ptr<BufferApi::I_Scale>(
        BufferApi::C_ScaleFactory::GetInstance().CreateLinearScale(factor, offset, unit, description));
}

// Fills every plane of every component of the frame; `seed` makes frames differ.
inline void FillFrame(BufferApi::I_Frame& frame, std::uint32_t seed, bool smooth)
{
    for (unsigned c = 0; c < frame.GetComponentCount(); ++c) {
        BufferApi::I_Component& component = *frame.GetComponentAt(c);
        for (unsigned p = 0; p < component.GetPlaneCount(); ++p)
            Fill(*component.GetPlane(p), seed * 131 + c * 17 + p, smooth && c == 0);
    }
}

// An image frame with mask, a typed scalar, scales on all axes, name and settings.
inline std::unique_ptr<BufferApi::I_Frame> RichImage(BufferApi::E_DataType type, unsigned width, unsigned height,
                                                     unsigned depth, std::uint32_t seed, bool smooth = true)
{
    std::unique_ptr<BufferApi::I_Frame> frame(BufferApi::CreateImageFrame(type, width, height, depth));
    frame->SetName("Camera " + std::to_string(seed));
    frame->SetSettings("exposure=10us\ngain=2\n");
    frame->AddMask();
    BufferApi::CreateTypedScalarInFrame(frame.get(), "Temperature", BufferApi::DATATYPE_FLOAT);
    BufferApi::C_TypedScalarFrame(frame.get(), "Temperature").SetLinearScale(0.5, -273.15, "\xC2\xB0" "C", "temperature");
    frame->SetScale(BufferApi::SCALE_X, Scale(0.1, -3.0, "mm", "x"));
    frame->SetScale(BufferApi::SCALE_Y, Scale(-0.1, 7.5, "mm", "y"));
    frame->SetScale(BufferApi::SCALE_Z, Scale(2.0, 0.0, "mm", "z"));
    frame->SetScale(BufferApi::SCALE_T, Scale(1e-6, 0.25, "s", "time"));
    frame->SetScale(BufferApi::SCALE_I, Scale(1.0, 0.0, "counts", "intensity"));
    FillFrame(*frame, seed, smooth);
    return frame;
}

// A buffer of one plain word image with a few attributes: the small file of the bad-input tests.
inline BufferPtr SmallBuffer(unsigned width = 4, unsigned height = 3)
{
    BufferPtr buffer(BufferApi::CreateBuffer());
    std::unique_ptr<BufferApi::I_Frame> frame(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, width, height, 1));
    frame->SetName("F");
    FillFrame(*frame, 1, true);
    frame->GetAttributeStore().SetString("Exposure", "10 us");
    buffer->AddFrame(std::move(frame));
    const double values[] = {1.5, -2.25};
    buffer->GetAttributeStore().SetArray("Values", 2, BufferApi::DATATYPE_DOUBLE, values);
    return buffer;
}

using TestSupport::BitsOf;

inline void ExpectSameScale(const BufferApi::I_Scale& a, const BufferApi::I_Scale& b, const std::string& where)
{
    EXPECT_EQ(BitsOf(a.GetFactor()), BitsOf(b.GetFactor())) << where;
    EXPECT_EQ(BitsOf(a.GetOffset()), BitsOf(b.GetOffset())) << where;
    EXPECT_EQ(a.GetUnit(), b.GetUnit()) << where;
    EXPECT_EQ(a.GetDescription(), b.GetDescription()) << where;
}

inline void ExpectSameAttributes(const BufferApi::AttributeStore& a, const BufferApi::AttributeStore& b,
                                 const std::string& where)
{
    ASSERT_EQ(a.GetCount(), b.GetCount()) << where;
    for (std::size_t i = 0; i < a.GetCount(); ++i) {
        const BufferApi::I_AttributeBase& x = a.At(i);
        const BufferApi::I_AttributeBase& y = b.At(i);
        const std::string at = where + ", attribute " + x.GetName();
        ASSERT_EQ(x.GetName(), y.GetName()) << at;
        ASSERT_EQ(x.IsString(), y.IsString()) << at;
        if (x.IsString()) {
            EXPECT_EQ(static_cast<const BufferApi::I_AttributeString&>(x).GetValue(),
                      static_cast<const BufferApi::I_AttributeString&>(y).GetValue())
                << at;
            continue;
        }
        const auto& u = static_cast<const BufferApi::I_AttributePlane&>(x);
        const auto& v = static_cast<const BufferApi::I_AttributePlane&>(y);
        ASSERT_EQ(u.GetDataType(), v.GetDataType()) << at;
        ASSERT_EQ(u.GetCount(), v.GetCount()) << at;
        if (u.GetCount() > 0) {
            EXPECT_EQ(std::memcmp(u.GetData(), v.GetData(), u.GetCount() * BufferApi::GetDataTypeSize(u.GetDataType())), 0)
                << at;
        }
    }
}

// Everything but the plane bytes when `withData` is false (head buffers have none).
inline void ExpectSameFrame(const BufferApi::I_Frame& a, const BufferApi::I_Frame& b, const std::string& where,
                            bool withData = true, bool withAttributes = true)
{
    ASSERT_EQ(a.GetKind(), b.GetKind()) << where;
    EXPECT_EQ(a.GetName(), b.GetName()) << where;
    EXPECT_EQ(a.GetSettings(), b.GetSettings()) << where;
    ASSERT_EQ(a.GetDataType(), b.GetDataType()) << where;
    ASSERT_EQ(a.GetWidth(), b.GetWidth()) << where;
    ASSERT_EQ(a.GetHeight(), b.GetHeight()) << where;
    ASSERT_EQ(a.GetDepth(), b.GetDepth()) << where;
    if (const auto* vector = dynamic_cast<const BufferApi::I_FrameVector*>(&a)) {
        EXPECT_EQ(vector->GetGridSize(), dynamic_cast<const BufferApi::I_FrameVector&>(b).GetGridSize()) << where;
    }
    if (const auto* vector = dynamic_cast<const BufferApi::I_FrameVector3C*>(&a)) {
        EXPECT_EQ(vector->GetGridSize(), dynamic_cast<const BufferApi::I_FrameVector3C&>(b).GetGridSize()) << where;
    }
    for (unsigned axis = 0; axis < BufferApi::SCALE_TYPE_COUNT; ++axis)
        ExpectSameScale(a.GetScale(BufferApi::E_ScaleType(axis)), b.GetScale(BufferApi::E_ScaleType(axis)),
                        where + ", axis " + std::to_string(axis));
    ASSERT_EQ(a.GetComponentCount(), b.GetComponentCount()) << where;
    for (unsigned c = 0; c < a.GetComponentCount(); ++c) {
        const BufferApi::I_Component& x = *a.GetComponentAt(c);
        const BufferApi::I_Component& y = *b.GetComponentAt(c);
        const std::string at = where + ", component " + x.GetName();
        ASSERT_EQ(x.GetName(), y.GetName()) << at;
        ASSERT_EQ(x.GetDataType(), y.GetDataType()) << at;
        ASSERT_EQ(x.GetScale() != nullptr, y.GetScale() != nullptr) << at;
        if (x.GetScale())
            ExpectSameScale(*x.GetScale(), *y.GetScale(), at);
        ASSERT_EQ(x.GetPlaneCount(), y.GetPlaneCount()) << at;
        for (unsigned p = 0; withData && p < x.GetPlaneCount(); ++p)
            ASSERT_EQ(std::memcmp(x.GetPlane(p)->GetData(), y.GetPlane(p)->GetData(), x.GetPlane(p)->GetByteSize()), 0)
                << at << ", plane " << p;
    }
    if (withAttributes)
        ExpectSameAttributes(a.GetAttributeStore(), b.GetAttributeStore(), where);
}

inline void ExpectSameBuffer(const BufferApi::I_Buffer& a, const BufferApi::I_Buffer& b, bool withData = true,
                             bool withAttributes = true)
{
    ASSERT_EQ(a.GetNumberOfFrames(), b.GetNumberOfFrames());
    for (unsigned f = 0; f < a.GetNumberOfFrames(); ++f)
        ExpectSameFrame(*a.GetFrame(f), *b.GetFrame(f), "frame " + std::to_string(f), withData, withAttributes);
    if (withAttributes)
        ExpectSameAttributes(a.GetAttributeStore(), b.GetAttributeStore(), "buffer");
}

// The documented layout, for tests that edit files byte by byte.
constexpr std::size_t kHeadBytesAt = 16;
constexpr std::size_t kFrameCountAt = 20;
constexpr std::size_t kAttributesOffsetAt = 24;
constexpr std::size_t kAttributesBytesAt = 32;
constexpr std::size_t kFileBytesAt = 40;
constexpr std::size_t kFirstFrameAt = 48;

inline std::uint64_t Load(const std::string& bytes, std::size_t at, unsigned size)
{
    return BufferApi::Private::LoadLE(reinterpret_cast<const std::uint8_t*>(bytes.data()) + at, size);
}

inline void Store(std::string& bytes, std::size_t at, std::uint64_t value, unsigned size)
{
    BufferApi::Private::StoreLE(value, reinterpret_cast<std::uint8_t*>(&bytes[0]) + at, size);
}

} // namespace BufferFileTest
