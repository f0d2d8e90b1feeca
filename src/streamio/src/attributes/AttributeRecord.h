#pragma once
// The payload of an attribute record: a u32 attribute count, then per attribute a u8 kind, the
// name (u32 byte count + UTF-8), and a text (u32 byte count + UTF-8) or an array (u32 element
// count + elements, little-endian). docs/formats/attribute-stream.md.

#include "records/RecordStream.h"

#include <RTE/AttributesSink.h>

#include <cstddef>
#include <cstdint>

namespace SetApi {
namespace Private {
namespace Attributes {

enum Kind : std::uint8_t { Text = 0, Double = 3, Float = 4, Int32 = 5, Word = 7 };

// The attribute stream's files, magics and message texts.
const Records::StreamFormat& StreamFormat();
// The description that writer and reader give of the format.
extern const char* const FormatDescription;

// Checks the whole payload, then hands its attributes to the sink in order. A payload that does
// not hold what it claims raises RTE::Exception naming the stream and the image, and the sink
// then has seen nothing.
void DecodeAttributes(const std::uint8_t* payload, std::size_t bytes, const Records::StreamLabel& label,
                      std::uint32_t image, RTE::I_AttributesSink& sink);

} // namespace Attributes
} // namespace Private
} // namespace SetApi
