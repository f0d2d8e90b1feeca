#pragma once
// Storage::SettingsNode: the in-memory settings object that callers build settings with. Value
// lookup is by hash, so neither many values nor many children make an object slow to fill.

#include <RTE/Export.h>
#include <Storage/Settings.h>

#include <QHash>
#include <QString>

#include <memory>
#include <utility>
#include <vector>

namespace Storage {

class RTE_API SettingsNode : public Settings {
public:
    explicit SettingsNode(const QString& name = QString());
    // A deep copy of any settings object's content.
    explicit SettingsNode(const Settings& source);
    SettingsNode(const SettingsNode& other);
    SettingsNode& operator=(const SettingsNode& other);
    ~SettingsNode() override;

    QString GetName() const override;
    void SetName(const QString& name) override;
    QString GetClass() const override;
    void SetClass(const QString& className) override;
    int GetVersion() const override;
    void SetVersion(int version) override;

    QStringList GetValueNames() const override;
    bool HasValue(const QString& name) const override;
    QString GetValue(const QString& name, const QString& defaultValue = QString()) const override;
    void SetValue(const QString& name, const QString& value) override;
    bool RemoveValue(const QString& name) override;

    int GetChildCount() const override;
    const Settings& GetChild(int index) const override;
    Settings& GetChild(int index) override;
    const Settings* FindChild(const QString& name) const override;
    Settings* FindChild(const QString& name) override;
    Settings& AddChild(const QString& name) override;
    void RemoveChild(int index) override;

    std::unique_ptr<Settings> Clone() const override;

protected:
    // Exchanges the whole content with another node, without copying.
    void SwapContent(SettingsNode& other) noexcept;

private:
    void CheckChildIndex(int index) const;

    QString m_name;
    QString m_class;
    int m_version = 0;
    std::vector<std::pair<QString, QString>> m_values;
    QHash<QString, int> m_valueIndex;
    std::vector<std::unique_ptr<SettingsNode>> m_children;
};

} // namespace Storage
