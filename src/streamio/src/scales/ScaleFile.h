#pragma once
// The scale file "<destination>.scales": a preamble, then records of
//   u32 record bytes (all of it), u32 first image, u32 last image (0xFFFFFFFF: no end),
//   scale x, scale y, scale intensity (records/ScaleCoding.h), u32 CRC-32 of what precedes.
// docs/formats/scale-stream.md.

#include "records/Preamble.h"
#include "records/ScaleCoding.h"

#include <RTE/Scale.h>

#include <cstdint>
#include <vector>

namespace SetApi {
namespace Private {
namespace Scales {

constexpr Records::Magic kMagic = Records::MakeMagic('S', 'C');
constexpr std::uint32_t kMinRecordBytes = 12 + 3 * Records::kMinScaleBytes + 4;
// Limits a reader applies before it reads; the writer refuses records beyond.
constexpr std::uint32_t kMaxRecordBytes = 16u << 20;
constexpr std::uint64_t kMaxFileBytes = std::uint64_t(256) << 20;

extern const char* const FormatDescription;
extern const char* const Kind;       // "Scale file"
extern const char* const FormatName; // "scale file"

struct Record {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    RTE::S_Scale x;
    RTE::S_Scale y;
    RTE::S_Scale intensity;
};

// Appends the bytes of one record.
void EncodeRecord(const Record& record, std::vector<std::uint8_t>& bytes);

} // namespace Scales
} // namespace Private
} // namespace SetApi
