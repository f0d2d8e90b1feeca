#pragma once
// The buffer file format (docs/formats/buffer-file.md): constants, limits, and the head as the
// writer lays it out and the reader finds it. Plane data stays out of here.

#include <BufferApi/DataType.h>
#include <BufferApi/I_Frame.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace BufferApi {
namespace Private {
namespace BufferFile {

constexpr std::array<std::uint8_t, 8> kMagic = {0x89, 'S', 'B', 'F', 0x0D, 0x0A, 0x1A, 0x0A};
constexpr std::uint16_t kMajorVersion = 1;
constexpr std::uint16_t kMinorVersion = 0;

constexpr std::size_t kPreambleBytes = 48;
constexpr std::size_t kChecksumBytes = 4;
constexpr std::size_t kPlaneEntryBytes = 24;
constexpr std::uint64_t kPlaneAlignment = 4096;

// Limits a file must keep; anything beyond is refused before memory is set aside for it.
constexpr std::uint64_t kMaxHeadBytes = 256u << 20;
constexpr std::uint64_t kMaxAttributeBytes = 1u << 30;
constexpr std::uint32_t kMaxFrames = 1u << 20;
constexpr std::uint64_t kMaxPlaneBytes = std::uint64_t(1) << 36;

// The first read of a file takes this much, which usually holds head and attributes.
constexpr std::size_t kFirstReadBytes = 64 * 1024;

// Attribute kinds: text, or the element type of an array.
constexpr std::uint8_t kAttributeText = 0;

struct ScaleInfo {
    double factor = 1.0;
    double offset = 0.0;
    std::string unit;
    std::string description;
};

struct PlaneEntry {
    std::uint64_t offset = 0;
    std::uint64_t storedBytes = 0;
    std::uint8_t codec = 0; // PlaneCodec id
};

struct ComponentInfo {
    std::string name;
    E_DataType type = DATATYPE_UNKNOWN;
    bool hasScale = false;
    ScaleInfo scale;
    std::vector<PlaneEntry> planes; // one per depth
};

struct FrameInfo {
    E_FrameKind kind = E_FrameKind::Image;
    E_DataType type = DATATYPE_UNKNOWN;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t depth = 0;
    std::uint32_t gridSize = 0;
    std::string name;
    std::string settings;
    std::array<ScaleInfo, SCALE_TYPE_COUNT> scales;
    std::vector<ComponentInfo> components;

    std::uint64_t PlaneBytes(E_DataType componentType) const
    {
        return std::uint64_t(width) * height * GetDataTypeSize(componentType);
    }
};

struct Head {
    std::uint16_t major = kMajorVersion;
    std::uint16_t minor = kMinorVersion;
    std::uint32_t headBytes = 0;
    std::uint64_t attributesOffset = 0;
    std::uint64_t attributesBytes = 0;
    std::uint64_t fileBytes = 0;
    std::vector<FrameInfo> frames;

    // Where plane data may begin: behind head and attributes.
    std::uint64_t DataStart() const { return attributesOffset + attributesBytes; }
};

inline std::uint64_t AlignUp(std::uint64_t value, std::uint64_t alignment)
{
    return (value + alignment - 1) / alignment * alignment;
}

} // namespace BufferFile
} // namespace Private
} // namespace BufferApi
