#pragma once
// Storage::Private::SettingsSerializer writes a settings object as a settings document
// (docs/formats/settings-document.md). The write is atomic: a temporary file in the target's
// folder is written and flushed to disk, then renamed over the target, so the target holds either
// its old content or the complete new document. A serializer keeps only a reference to the
// settings, which must outlive it; serializers on different files may run in different threads.

#include <RTE/Export.h>

#include <QString>

namespace Storage {

class Settings;

namespace Private {

class RTE_API SettingsSerializer {
public:
    explicit SettingsSerializer(const Settings& settings);

    // Raises RTE::FileWriteError naming the path if the document cannot be written (missing or
    // read-only folder, full disk, settings nested deeper than 256); no temporary file remains.
    void SaveAs(const QString& path) const;

private:
    const Settings& m_settings;
};

} // namespace Private
} // namespace Storage
