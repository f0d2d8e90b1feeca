#pragma once
// The frame shared by the attribute and trace streams: a data file of one self-describing record
// per image behind a head block, and an index file of fixed-size entries, one per image, that
// finds a record without scanning. docs/formats/attribute-stream.md has the byte tables.
//
//   data file   "<destination>.<suffix>":        preamble, head block, record 0, record 1, ...
//   index file  "<destination>.index.<suffix>":  preamble, entry 0, entry 1, ...
//
//   record      u32 record bytes (all of it), u32 image index, payload, u32 CRC-32 of what precedes
//   entry       u64 record offset, u32 record bytes, u32 image index, u32 record CRC, u32 entry CRC
//   head block  u32 block bytes (all of it), payload, u32 CRC-32 of what precedes

#include "records/Preamble.h"

#include <QString>

#include <cstdint>

namespace SetApi {
namespace Private {
namespace Records {

struct StreamFormat {
    Magic dataMagic;
    Magic indexMagic;
    QString suffix;     // "attr": files "<destination>.attr" and "<destination>.index.attr"
    QString kind;       // "Attribute stream", the start of every message
    QString formatName; // "attribute stream", in version messages
};

constexpr std::uint32_t kIndexEntryBytes = 24;
// Record bytes besides the payload: record bytes, image index, CRC.
constexpr std::uint32_t kRecordFrameBytes = 12;
// Head block bytes besides the payload: block bytes, CRC.
constexpr std::uint32_t kHeadFrameBytes = 8;
// Limits a reader applies before it reads what a file claims; writers refuse to go beyond them.
constexpr std::uint64_t kMaxRecordBytes = std::uint64_t(1) << 30;
constexpr std::uint64_t kMaxHeadBytes = std::uint64_t(64) << 20;

struct IndexEntry {
    std::uint64_t recordOffset = 0;
    std::uint32_t recordBytes = 0;
    std::uint32_t image = 0;
    std::uint32_t recordCrc = 0;
};

} // namespace Records
} // namespace Private
} // namespace SetApi
