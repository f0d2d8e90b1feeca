#pragma once
// Reading and writing a stream set's table of contents, "<set>/ReaderConfiguration.xml":
//
//   <ReaderCfg>
//     <ReaderInfo Name=".." Type=".." FilePrefix=".." FormatDescription="..">
//       <ContentPurpose IsAssociatedToFrames="true" IsAssociatedToEntireImage="false"
//                       IsAssociatedToAllImages="true" StartFrame="0" EndFrame="0"/>
//     </ReaderInfo>
//     ...
//     <CorruptionRepaired Details=".."/>      (only when the set has been repaired)
//   </ReaderCfg>
//
// StartFrame and EndFrame are written only for entries associated to frames and read as 0 when
// missing. A flag is true only when its text is exactly "true". Readers are lenient: the root's
// name is not checked and unknown elements are passed over, so a newer writer's additions stay
// readable.

#include <SetApi/Export.h>

#include <StreamIO/ContentPurpose.h>
#include <StreamIO/ReaderConfiguration.h>

#include <QString>

#include <string>

class QIODevice;
class QXmlStreamReader;

namespace SetApi {

// The path of the reader configuration of the stream set `setName` (its folder):
// setName + "/ReaderConfiguration.xml". Every user of the file takes the path from here.
SETAPI_API QString GetStreamSetConfigurationName(const QString& setName);
SETAPI_API std::string GetStreamSetConfigurationName(const std::string& setName);

namespace Private {

// Reads the file. RTE::Exception "Could not open file: <path>" when it cannot be opened; the
// failures of ReadReaderConfiguration otherwise.
SETAPI_API C_ReaderConfiguration LoadReaderConfiguration(const QString& path);

// Reads a configuration from an open device, to the end of the document. Raises
// RTE::VerificationFailed for an unreadable device ("Device is not readable."), a ReaderInfo not
// followed by a ContentPurpose element ("Detected unexpected/invalid XML-content.") and for
// malformed XML ("Reading reader-configuration from XML-content failed:\nXML-error is:\n..."). A
// document without entries is no failure.
SETAPI_API C_ReaderConfiguration ReadReaderConfiguration(QIODevice& device);

// Parses the ContentPurpose element the reader stands on, leaving the reader there. Raises
// RTE::VerificationFailed "Current XML-element is no 'ContentPurpose'-node." on any other token.
SETAPI_API C_ContentPurpose ReadContentPurpose(const QXmlStreamReader& xml);

// Writes the file so that it is never seen half-written: the document goes to a temporary file
// beside it, which then replaces the file in one step. RTE::FileWriteError with the path as its
// text when the file cannot be written; the file is then unchanged.
SETAPI_API void SaveReaderConfiguration(const C_ReaderConfiguration& configuration, const QString& path);

// Writes the document (UTF-8, indented) to an open device. RTE::FileWriteError when the device
// is not writable ("Device is not writable.") or a write fails.
SETAPI_API void WriteReaderConfiguration(const C_ReaderConfiguration& configuration, QIODevice& device);

} // namespace Private
} // namespace SetApi
