#pragma once
// The trace stream on the record-stream frame (records/RecordStream.h):
//   head payload    u32 trace count, per trace: name (text), x scale, y scale
//   record payload  u32 trace count, per trace: u32 sample count, samples as f64 x, f64 y
// docs/formats/trace-stream.md.

#include "records/ByteCoding.h"
#include "records/RecordStream.h"

#include <RTE/Scale.h>

#include <QString>

#include <cstdint>
#include <utility>
#include <vector>

namespace SetApi {
namespace Private {
namespace Traces {

const Records::StreamFormat& StreamFormat();
extern const char* const FormatDescription;

struct TraceInfo {
    QString name;
    RTE::S_Scale x;
    RTE::S_Scale y;
};

using Samples = std::vector<std::pair<double, double>>;

std::vector<std::uint8_t> EncodeHead(const std::vector<TraceInfo>& traces);
// Raises RTE::Exception naming the stream when the head does not hold what it claims.
std::vector<TraceInfo> DecodeHead(const std::vector<std::uint8_t>& head, const Records::StreamLabel& label);

void EncodeRecord(const std::vector<Samples>& samplesPerTrace, std::vector<std::uint8_t>& payload);
// The samples of every trace; RTE::Exception when the record does not hold `traces` lists.
std::vector<Samples> DecodeRecord(const std::uint8_t* payload, std::size_t bytes, std::size_t traces,
                                  const Records::StreamLabel& label, std::uint32_t image);

} // namespace Traces
} // namespace Private
} // namespace SetApi
