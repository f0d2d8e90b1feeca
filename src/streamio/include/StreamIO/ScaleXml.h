#pragma once
// A scale as one XML element, for the XML heads of streams (the scalar field head file) and other
// XML documents:
//
//   <Name factor="0.5" offset="-0" unit="mm" description="x position"/>
//
// factor and offset are written in the shortest decimal form that reads back bit for bit, "inf",
// "-inf", "nan", or "nan:0x<16 hex digits>" for a NaN with other bits; unit and description are
// texts (absent reads as empty).

#include <StreamIO/Export.h>

#include <RTE/Scale.h>

#include <QString>

class QXmlStreamReader;
class QXmlStreamWriter;

namespace SetApi {
namespace Private {

// Reads the element the reader is positioned on (at its start) and consumes it, children
// included: the reader is left on the element's end. RTE::VerificationFailed when the reader is
// not on a start element, when factor or offset is missing or not a number, or when the XML
// breaks off inside the element; the text names element, attribute and line.
STREAMIO_API RTE::S_Scale ReadScale(QXmlStreamReader& reader);

// Writes the scale as an element of that name at the writer's position.
STREAMIO_API void WriteScale(QXmlStreamWriter& writer, const QString& elementName, const RTE::S_Scale& scale);

} // namespace Private
} // namespace SetApi
