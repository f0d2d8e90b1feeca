#include <SetApi/set/C_SetBase.h>

#include <SetApi/set/I_SetObserver.h>

#include <RTE/Exception.h>
#include <Storage/Settings.h>
#include <Storage/SettingsDocument.h>
#include <Storage/SettingsSerializer.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace SetApi {

I_Set::~I_Set() = default;
I_SetObserver::~I_SetObserver() = default;

C_SetBase::C_SetBase() = default;

C_SetBase::~C_SetBase() = default;

QString C_SetBase::GetTypeIdentifier() const { return QString(); }

QString C_SetBase::GetTitle() const { return QFileInfo(QString::fromStdString(GetName())).fileName(); }

void C_SetBase::StoreBuffer(const BufferApi::I_Buffer*, unsigned) { RTE_THROW(RTE::Exception, QString()); }

std::unique_ptr<BufferApi::I_Buffer> C_SetBase::LoadBuffer(unsigned) const
{
    RTE_THROW(RTE::Exception, QString());
}

DataObjects::BufferStructureInformation C_SetBase::GetBufferStructureInformation(unsigned) const
{
    RTE_THROW(RTE::Exception, QString());
}

DataObjects::GlobalAndFrameAttributes C_SetBase::GetAttributes(unsigned) const
{
    RTE_THROW(RTE::Exception, QString());
}

void C_SetBase::AppendBuffer(const BufferApi::I_Buffer*) { RTE_THROW(RTE::Exception, QString()); }

unsigned C_SetBase::GetSize() const { return 0; }

void C_SetBase::GetInfo(unsigned&, unsigned&, unsigned&) const {}

void C_SetBase::SetSourceMapping(unsigned, unsigned) {}

void C_SetBase::SetSourceName(const std::string&) {}

std::string C_SetBase::GetSourceSet() const { return std::string(); }

unsigned C_SetBase::GetSourceIndex(unsigned) const { return 0; }

I_Set::E_SetType C_SetBase::GetSetType() const { return SET_TYPE_UNKNOWN; }

void C_SetBase::AttachObserver(I_SetObserver* observer)
{
    std::lock_guard<std::mutex> lock(m_observerMutex);
    m_observers.push_back(observer);
}

void C_SetBase::RemoveObserver(I_SetObserver* observer)
{
    std::lock_guard<std::mutex> lock(m_observerMutex);
    m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), observer), m_observers.end());
}

void C_SetBase::Notify_StoreBuffer(unsigned index)
{
    std::lock_guard<std::mutex> lock(m_observerMutex);
    for (I_SetObserver* observer : m_observers)
        observer->OnBufferStored(index);
}

void C_SetBase::GetFileList() {}

bool C_SetBase::WriteSetFile() { return false; }

bool C_SetBase::IsVirtualDataSet() const { return false; }

bool C_SetBase::SetPackTypeWord(int) { return false; }

bool C_SetBase::SetPackTypeFloat(int) { return false; }

void C_SetBase::RemoveBuffer(unsigned) {}

void C_SetBase::RemoveBufferRange(unsigned, unsigned) {}

boost::shared_ptr<RTE::Parameter::C_Tree> C_SetBase::GetParameterTree() { return {}; }

bool C_SetBase::HasFullDataTraces() const { return false; }

std::unique_ptr<BufferApi::I_Buffer> C_SetBase::LoadFullDataTraces() const
{
    RTE_THROW(RTE::Exception, QStringLiteral("Set has no analog data trace."));
}

void C_SetBase::StoreFullDataTraces(BufferApi::I_Buffer*)
{
    RTE_THROW(RTE::Exception, QStringLiteral("It is not possible to store the traces to the set."));
}

bool C_SetBase::GetParameter(const std::string&, int&) const { return false; }

bool C_SetBase::GetParameter(const std::string&, std::string&) const { return false; }

bool C_SetBase::SetParameter(const std::string&, int) { return false; }

bool C_SetBase::SetParameter(const std::string&, std::string) { return false; }

QString C_SetBase::GetBufferTitle(unsigned index) const
{
    if (index < GetSize())
        return QString();
    RTE_THROW(RTE::VerificationFailed, QStringLiteral("Index out of range."));
}

QString C_SetBase::GetFileNameFromSettingsType(E_SettingsType type, const QString& context) const
{
    // Built once, thread-safely, at first use.
    static const QRegularExpression validContext(QStringLiteral("^[a-zA-Z0-9\\.\\_\\-\\{\\}]*$"));
    if (!validContext.match(context).hasMatch())
        RTE_THROW(RTE::Exception, QStringLiteral("Invalid context '%1'").arg(context));

    QString file = QString::fromStdString(GetName()) + QLatin1Char('/');
    switch (type) {
    case SETTINGS_ACQUISITION: file += QStringLiteral("Settings_Acquisition"); break;
    case SETTINGS_PROCESSING_HISTORY: file += QStringLiteral("Settings_ProcessingHistory"); break;
    case SETTINGS_APPLICATION: file += QStringLiteral("Settings_Application"); break;
    default: RTE_THROW(RTE::Exception, QStringLiteral("unknown settings type"));
    }
    if (!context.isEmpty())
        file += QLatin1Char('_') + context;
    return file + QStringLiteral(".xml");
}

bool C_SetBase::HasSettings(E_SettingsType type, const QString& context) const
{
    return QFile::exists(GetFileNameFromSettingsType(type, context));
}

// Both tests below look at the document without context, also when a context is given: a document
// with a context is readable only where the plain one exists and writable only where it does not.
// Settings of a set are thus written once.

std::unique_ptr<Storage::Settings> C_SetBase::ReadSettings(E_SettingsType type, const QString& context) const
{
    if (!HasSettings(type, QString()))
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Settings not available"));
    auto document = std::make_unique<Storage::SettingsDocument>(GetFileNameFromSettingsType(type, context),
                                                                Storage::AutoSyncMode(1));
    document->Load();
    return document;
}

void C_SetBase::WriteSettings(E_SettingsType type, const Storage::Settings& settings, const QString& context)
{
    if (HasSettings(type, QString()))
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("It is not possible to overwrite settings"));
    Storage::Private::SettingsSerializer(settings).SaveAs(GetFileNameFromSettingsType(type, context));
}

} // namespace SetApi
