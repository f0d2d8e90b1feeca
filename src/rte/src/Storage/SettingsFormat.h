#pragma once
// The vocabulary of the settings document format (docs/formats/settings-document.md), shared by
// its writer and its reader.

#include <QString>

class QXmlStreamAttributes;
class QXmlStreamWriter;

namespace Storage {
namespace Private {
namespace SettingsFormat {

// The format version this code writes; it reads every version with the same major number.
constexpr int kMajorVersion = 1;
constexpr int kMinorVersion = 0;
// Settings elements nest at most this deep; the top node is level 1.
constexpr int kMaxDepth = 256;

extern const QString kRootElement;      // "SettingsDocument"
extern const QString kFormatAttribute;  // "formatVersion"
extern const QString kSettingsElement;  // "Settings"
extern const QString kValueElement;     // "Value"
extern const QString kNameAttribute;    // "name"
extern const QString kClassAttribute;   // "class"
extern const QString kVersionAttribute; // "version"
extern const QString kValueAttribute;   // "value"

// Whether XML 1.0 can carry the text as it stands.
bool IsXmlSafe(const QString& text);

// Writes the text as attribute `name`, or as `name` + "Base64" if XML cannot carry it.
void WriteStringAttribute(QXmlStreamWriter& writer, const QString& name, const QString& text);

enum class AttributeStatus { Ok, BothForms, BadBase64 };
// Reads the text of attribute `name` in either form; absent gives the empty string.
AttributeStatus ReadStringAttribute(const QXmlStreamAttributes& attributes, const QString& name, QString& text);

} // namespace SettingsFormat
} // namespace Private
} // namespace Storage
