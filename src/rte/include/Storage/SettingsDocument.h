#pragma once
// Storage::SettingsDocument: a settings object bound to a settings document file (layout in
// docs/formats/settings-document.md). Making a document touches no file; Load reads it and Save
// writes it atomically. What the mode adds is told in Storage/AutoSyncMode.h.
//
// Thread-safety: a document is not shared between threads; documents on different files may be
// loaded and saved from different threads at once.

#include <RTE/Export.h>
#include <Storage/AutoSyncMode.h>
#include <Storage/SettingsNode.h>

#include <QString>

#include <memory>

namespace Storage {

class RTE_API SettingsDocument : public SettingsNode {
public:
    // An out-of-range mode raises RTE::VerificationFailed.
    SettingsDocument(const QString& path, AutoSyncMode mode);
    // In mode WriteBackOnDestruction saves changed content; never throws.
    ~SettingsDocument() override;
    SettingsDocument(const SettingsDocument&) = delete;
    SettingsDocument& operator=(const SettingsDocument&) = delete;

    // Replaces the content by the file's. Raises RTE::FileError if the file is missing or cannot
    // be read, and RTE::Exception if it is not a settings document this version can read
    // (malformed XML, wrong root element, newer format version, bad number syntax, nesting deeper
    // than 256, ...). Every message names the file. On failure the content is left unchanged.
    void Load();
    // Writes the content to the file atomically. Raises RTE::VerificationFailed in mode ReadOnly
    // and RTE::FileWriteError if the file cannot be written.
    void Save();

    const QString& GetPath() const;
    AutoSyncMode GetMode() const;

private:
    QString m_path;
    AutoSyncMode m_mode;
    // The content as last loaded or saved; kept in mode WriteBackOnDestruction only.
    std::unique_ptr<SettingsNode> m_synced;
};

} // namespace Storage
