// The settings document reader: SettingsDocument::Load on any file. A document that loads must
// save and load back to equal content: the format keeps every text code unit for code unit.

#include "FuzzTargets.h"

#include <Storage/Settings.h>
#include <Storage/SettingsDocument.h>
#include <Storage/SettingsSerializer.h>

#include <limits>

namespace SetApiFuzz {

using Storage::AutoSyncMode;
using Storage::SettingsDocument;

void RunSettingsDocument(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const QString path = QString::fromStdString(scratch.Write("Settings_Input.xml", data, size));
    SettingsDocument document(path, AutoSyncMode::ReadOnly);
    bool loaded = false;
    Guarded([&] {
        document.Load();
        loaded = true;
    });
    if (!loaded)
        return;
    const QString copyPath = QString::fromStdString(scratch.Path("Settings_Copy.xml"));
    SettingsDocument copy(copyPath, AutoSyncMode::ReadOnly);
    try {
        Storage::Private::SettingsSerializer(document).SaveAs(copyPath);
        copy.Load();
    } catch (const RTE::Exception& failure) {
        Fail("a settings document that loaded does not save and load back", failure);
    }
    if (!Storage::AreEqual(document, copy))
        Fail("a settings document changed on its way through save and load");
}

std::vector<Bytes> SeedsSettingsDocument()
{
    Scratch scratch;
    const QString path = QString::fromStdString(scratch.Path("Settings_Seed.xml"));
    SettingsDocument document(path, AutoSyncMode::Manual);
    document.SetName(QStringLiteral("Acquisition"));
    document.SetClass(QStringLiteral("Camera"));
    document.SetVersion(3);
    document.SetValue(QStringLiteral("Model"), QStringLiteral("Zarvo <X> & \"1\""));
    document.SetInt(QStringLiteral("Width"), 640);
    document.SetDouble(QStringLiteral("Rate"), std::numeric_limits<double>::quiet_NaN());
    document.SetBool(QStringLiteral("Enabled"), true);
    document.SetStringList(QStringLiteral("Lenses"), {QStringLiteral("50mm"), QString(), QStringLiteral("a,b")});
    Storage::Settings& child = document.AddChild(QStringLiteral("Channel"));
    child.SetValue(QStringLiteral("Control\x01"), QString(QChar(0xD800)));
    child.AddChild(QString());
    document.Save();
    return {ReadFile(path.toStdString())};
}

} // namespace SetApiFuzz
