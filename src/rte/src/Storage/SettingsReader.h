#pragma once
// Reads a settings document file (docs/formats/settings-document.md) into a settings object.

#include <QString>

namespace Storage {

class Settings;

namespace Private {

// Fills target, which must be empty, with the document's top node. Raises RTE::FileError for a
// missing or unreadable file and RTE::Exception for content that is not a readable document;
// every message names the file. On failure target holds a partial tree and is to be discarded.
void ReadSettingsDocument(const QString& path, Settings& target);

} // namespace Private
} // namespace Storage
