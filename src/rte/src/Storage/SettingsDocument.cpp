#include <Storage/SettingsDocument.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>
#include <Storage/SettingsSerializer.h>

#include "SettingsReader.h"

#include <exception>

namespace Storage {

SettingsDocument::SettingsDocument(const QString& path, AutoSyncMode mode) : m_path(path), m_mode(mode)
{
    const int value = static_cast<int>(mode);
    if (value < static_cast<int>(AutoSyncMode::Manual) || value > static_cast<int>(AutoSyncMode::WriteBackOnDestruction))
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Invalid synchronisation mode " << value << " for settings document '" << path << "'");
    if (m_mode == AutoSyncMode::WriteBackOnDestruction)
        m_synced = std::make_unique<SettingsNode>();
}

SettingsDocument::~SettingsDocument()
{
    if (m_mode != AutoSyncMode::WriteBackOnDestruction || !m_synced || AreEqual(*this, *m_synced))
        return;
    try {
        Save();
    } catch (const std::exception& e) {
        RTE::C_Logger("Storage").error("Settings document '" + m_path.toStdString() +
                                       "' was changed but could not be written back: " + e.what());
    } catch (...) {
        RTE::C_Logger("Storage").error("Settings document '" + m_path.toStdString() +
                                       "' was changed but could not be written back: unknown exception");
    }
}

void SettingsDocument::Load()
{
    SettingsNode loaded;
    Private::ReadSettingsDocument(m_path, loaded);
    SwapContent(loaded);
    if (m_mode == AutoSyncMode::WriteBackOnDestruction)
        m_synced = std::make_unique<SettingsNode>(static_cast<const Settings&>(*this));
}

void SettingsDocument::Save()
{
    if (m_mode == AutoSyncMode::ReadOnly)
        RTE_THROW_MSG(RTE::VerificationFailed, "Settings document '" << m_path << "' is opened read only and cannot be saved");
    Private::SettingsSerializer(*this).SaveAs(m_path);
    if (m_mode == AutoSyncMode::WriteBackOnDestruction)
        m_synced = std::make_unique<SettingsNode>(static_cast<const Settings&>(*this));
}

const QString& SettingsDocument::GetPath() const { return m_path; }

AutoSyncMode SettingsDocument::GetMode() const { return m_mode; }

} // namespace Storage
