#pragma once
// The names an image stream is known by: its files behind the destination, and the reader
// plug-in that the stream set's configuration names for it.

#include <QString>

#include <string>

namespace SetApi {
namespace Private {
namespace ImageStream {

constexpr const char* kReaderKey = "Core.Set.Recording.FrameReader";
constexpr const char* kReaderName = "ImageStreamV1";
constexpr const char* kFormatDescription = "Qualmora image stream format";

// "<destination>.ims": the stream header and the records.
inline std::string DataPath(const QString& destination) { return destination.toStdString() + ".ims"; }
// "<destination>.index.ims": where each record of a compressed stream lies.
inline std::string IndexPath(const QString& destination) { return destination.toStdString() + ".index.ims"; }

} // namespace ImageStream
} // namespace Private
} // namespace SetApi
