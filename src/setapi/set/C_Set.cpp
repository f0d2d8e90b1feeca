#include <SetApi/set/C_Set.h>

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/SetTypeIdentifiers.h>

#include <RTE/DateTime.h>
#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>
#include <RTE/String.h>

#include <QRegularExpression>
#include <QStringList>

#include <boost/filesystem/path.hpp>

#include <cstdio>
#include <cstdlib>

namespace SetApi {

const char* const C_Set::TraceFileName = "AnalogData.im7";

namespace {

const int FileNumberWidth = 5;

// The registrations of the plain set, made when the library loads.
struct C_SetRegistration {
    C_SetRegistration()
    {
        C_SetFactory& factory = C_SetFactory::Instance();
        factory.Register(C_SetFactory::DefaultSetIdentifier, &C_Set::Open, &C_Set::Create);
        // Literal names: the identifier constants of another unit may not be built yet at load time.
        const std::pair<const char*, I_Set::E_SetType> typed[] = {
            {"SET_TYPE_ID_IMAGE", I_Set::SET_TYPE_IMAGE},
            {"SET_TYPE_ID_PLOT", I_Set::SET_TYPE_PROFILE},
            {"SET_TYPE_ID_VECTOR", I_Set::SET_TYPE_VECTOR},
            {"SET_TYPE_ID_SURFACE", I_Set::SET_TYPE_SURFACE},
        };
        for (const auto& entry : typed) {
            const I_Set::E_SetType type = entry.second;
            factory.Register(QString::fromLatin1(entry.first), [type](const QString& path) {
                return std::shared_ptr<I_Set>(new C_Set(path.toStdString(), type, true));
            });
        }
    }
} const registration;

std::string ToUpper(std::string text)
{
    RTE::String::ToUpper(text);
    return text;
}

} // namespace

C_Set* C_Set::Open(const std::string& name) { return new C_Set(name); }

C_Set* C_Set::Create(const std::string& name, E_SetType type, bool createFolder)
{
    return new C_Set(name, type, createFolder);
}

C_Set::C_Set(const std::string& name) : m_name(C_SetUtilities::PrepareSetName(name))
{
    RTE::C_Logger("Set").debug("open " + m_name);
    // A set file that does not exist gives an open set with default parameters.
    C_SetUtilities::ReadSetGroupVariables(GetFullName(), m_parameters);
    m_open = true;
}

C_Set::C_Set(const std::string& name, E_SetType type, bool createFolder)
    : m_name(C_SetUtilities::PrepareSetName(name))
{
    RTE::C_Logger("Set").debug("create " + m_name);
    if (RTE::FileSystem::Exists(m_name))
        C_SetUtilities::ClearSetDirectory(m_name);
    if (createFolder)
        RTE::FileSystem::CreateDirectory(m_name);
    // Dirty through construction: the setters below change the parameters, the final write saves them.
    m_dirty = true;
    SetType(type);
    SetTime(RTE::C_DateTime::Now()->ToString("ddd mmm dd HH:MM:SS yy"));
    WriteSetFile();
}

C_Set::~C_Set()
{
    try {
        WriteSetFile();
    } catch (...) {
        // A destructor reports nothing; the set file keeps its last written state.
    }
}

std::string C_Set::GetName() const { return m_name; }

std::string C_Set::GetFullName() const { return m_name + ".set"; }

bool C_Set::IsOpen() const { return m_open; }

QString C_Set::GetTypeIdentifier() const { return GetTypeIdentifierForSetType(GetSetType()); }

I_Set::E_SetType C_Set::GetSetType() const
{
    int type = 0;
    if (!m_parameters.GetValue("SetType", type))
        return SET_TYPE_UNKNOWN;
    return static_cast<E_SetType>(static_cast<unsigned>(type));
}

// ---- parameters ---------------------------------------------------------------------------------

void C_Set::MarkChangedAndWrite()
{
    if (!m_dirty) {
        m_dirty = true;
        WriteSetFile();
    }
}

bool C_Set::GetParameter(const std::string& name, int& value) const { return m_parameters.GetValue(name, value); }

bool C_Set::GetParameter(const std::string& name, std::string& value) const
{
    return m_parameters.GetValue(name, value);
}

bool C_Set::SetParameter(const std::string& name, int value)
{
    if (!m_parameters.SetValue(name, value))
        return false;
    MarkChangedAndWrite();
    return true;
}

bool C_Set::SetParameter(const std::string& name, std::string value)
{
    if (!m_parameters.SetValue(name, value))
        return false;
    MarkChangedAndWrite();
    return true;
}

void C_Set::AddParameter(const std::string& name, const std::string& value)
{
    m_parameters.Add(name, value);
    MarkChangedAndWrite();
}

void C_Set::SetType(E_SetType type) { SetParameter("SetType", static_cast<int>(type)); }

void C_Set::SetComment(const std::string& comment) { SetParameter("SetComments", comment); }

void C_Set::SetGroups(const std::string& groups) { SetParameter("SetGroups", groups); }

void C_Set::SetTime(const std::string& time) { SetParameter("SetTime", time); }

void C_Set::SetSourceName(const std::string& name) { SetParameter("SetSourceSet", name); }

std::string C_Set::GetTime() const
{
    std::string time;
    m_parameters.GetValue("SetTime", time);
    return time;
}

bool C_Set::WriteSetFile()
{
    if (!m_dirty)
        return true;
    // The result of the write is deliberately not looked at: a set file that cannot be written
    // leaves the set usable in memory.
    C_SetUtilities::WriteSettings(GetFullName(), m_parameters, std::string());
    m_open = true;
    m_dirty = false;
    return true;
}

void C_Set::Close() { WriteSetFile(); }

int C_Set::GetLastError() const { return m_lastError; }

void C_Set::SetSourceMapping(unsigned start, unsigned increment)
{
    // One-based on disk, so that a fresh set maps each index to itself.
    SetParameter("SetStart", static_cast<int>(start + 1));
    SetParameter("SetInc", static_cast<int>(increment));
}

unsigned C_Set::GetSourceIndex(unsigned index) const
{
    int start = 0;
    int increment = 0;
    m_parameters.GetValue("SetStart", start);
    m_parameters.GetValue("SetInc", increment);
    return static_cast<unsigned>(start - 1) + static_cast<unsigned>(increment) * index;
}

std::string C_Set::GetSourceSet() const
{
    std::string source;
    m_parameters.GetValue("SetSourceSet", source);
    if (!source.empty()) {
        source = C_SetUtilities::PrepareSetName(source);
        if (!RTE::FileSystem::Exists(source) && !RTE::FileSystem::Exists(source + ".set"))
            source.clear();
    }
    if (source.empty() || source == m_name)
        return boost::filesystem::path(m_name).parent_path().generic_string();
    return source;
}

bool C_Set::SetPackTypeWord(int packType)
{
    m_packTypeWord = packType;
    return true;
}

bool C_Set::SetPackTypeFloat(int packType)
{
    // Takes effect, yet answers false: callers have always been given exactly this.
    m_packTypeOther = packType;
    return false;
}

bool C_Set::HasFullDataTraces() const { return RTE::FileSystem::Exists(FolderFile(TraceFileName)); }

// ---- the file map -------------------------------------------------------------------------------

std::string C_Set::FolderFile(const std::string& fileName) const { return m_name + "/" + fileName; }

void C_Set::UpdateFilenameMap(E_UpdateMode mode) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (!m_stale && mode == UPDATE_IF_STALE)
        return;
    m_stale = false;
    m_indexMin = 0;
    m_indexMax = 0;
    m_fileMap.clear();
    try {
        for (const std::string& file : RTE::FileSystem::GetFiles(m_name, "B.*\\..*", false, false)) {
            if (ToUpper(RTE::FileSystem::ExtractExtension(file, false)) == ".SET")
                continue;
            const long number = std::atol(file.c_str() + 1);
            if (number > 0 && number <= static_cast<long>(UINT32_MAX))
                AddFilenameToMap(static_cast<unsigned>(number - 1), file);
        }
    } catch (const std::exception& e) {
        RTE::C_Logger("Set").error(std::string("update file list: ") + e.what());
    }
}

void C_Set::AddFilenameToMap(unsigned index, const std::string& fileName) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (m_fileMap.empty()) {
        m_indexMin = index;
        m_indexMax = index;
    } else {
        m_indexMin = std::min(m_indexMin, index);
        m_indexMax = std::max(m_indexMax, index);
    }
    m_fileMap[index] = fileName;
}

void C_Set::GetFileList() { UpdateFilenameMap(UPDATE_FORCED); }

unsigned C_Set::GetSize() const
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return static_cast<unsigned>(m_fileMap.size());
}

unsigned C_Set::GetNumBuffers() const { return GetSize(); }

unsigned C_Set::GetIndexMin() const
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return m_indexMin;
}

unsigned C_Set::GetIndexMax() const
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return m_indexMax;
}

void C_Set::GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex) const
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    count = static_cast<unsigned>(m_fileMap.size());
    minimumIndex = m_indexMin;
    maximumIndex = m_indexMax;
}

void C_Set::GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex, bool) const
{
    GetInfo(count, minimumIndex, maximumIndex);
}

bool C_Set::GetNext(unsigned& index, std::string& path, const std::string* extension) const
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    std::string fileName;
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        // The next index with a file, at or behind the one asked for, up to the highest index.
        const auto next = m_fileMap.lower_bound(index);
        if (next == m_fileMap.end() || next->first > m_indexMax) {
            if (!m_fileMap.empty() && index <= m_indexMax)
                index = m_indexMax + 1;
            return false;
        }
        index = next->first;
        fileName = next->second;
    }
    if (extension) {
        // Compares the last four characters, dot included; the index stays at the file.
        const std::string wanted = ToUpper(*extension);
        const std::string tail = fileName.size() >= 4 ? fileName.substr(fileName.size() - 4) : fileName;
        if (ToUpper(tail) != wanted)
            return false;
    }
    path = FolderFile(fileName);
    return true;
}

QFileInfo C_Set::GetFileInfoForIndex(unsigned index) const
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    const auto entry = m_fileMap.find(index);
    if (entry == m_fileMap.end())
        RTE_THROW_MSG(RTE::VerificationFailed, "Filename for index " << index << " not available.");
    return QFileInfo(QString::fromStdString(FolderFile(entry->second)));
}

QString C_Set::GetBufferTitle(unsigned index) const
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (index >= GetSize())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Index out of range."));
    const auto entry = m_fileMap.find(index);
    if (entry == m_fileMap.end())
        return QString();
    const QStringList parts = QString::fromStdString(entry->second).split(QLatin1Char('_'));
    if (parts.size() != 2)
        return QString();
    return parts[1].section(QLatin1Char('.'), 0, 0);
}

// ---- removal and renumbering --------------------------------------------------------------------

void C_Set::RemoveBuffer(unsigned index)
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    if (index >= GetSize())
        RTE_THROW_MSG(RTE::Exception, "C_Set::RemoveBuffer: Can't remove buffer with index " << index);
    // The last buffer goes, whichever index was named; the argument only guards the call.
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    RTE::FileSystem::RemoveFile(FolderFile(m_fileMap[m_indexMax]));
    m_fileMap.erase(m_indexMax);
    --m_indexMax;
}

void C_Set::RemoveBufferRange(unsigned start, unsigned end)
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    if (start > end)
        RTE_THROW(RTE::VerificationFailed,
                  QStringLiteral("C_Set::RemoveBufferRange: Start index must not be smaller than end index."));
    if (start < m_indexMin)
        RTE_THROW(RTE::VerificationFailed,
                  QStringLiteral("C_Set::RemoveBufferRange: Start index must not be smaller than minimum index."));
    if (end > m_indexMax)
        RTE_THROW(RTE::VerificationFailed,
                  QStringLiteral("C_Set::RemoveBufferRange: End index must not be higher than maximum index."));
    const bool wholeSet = start == m_indexMin && end == m_indexMax;
    const bool toTheEnd = end == m_indexMax;
    for (unsigned index = start;; ++index) {
        // A gap inside the range gets an empty entry, and its removal names the folder itself.
        RTE::FileSystem::RemoveFile(FolderFile(m_fileMap[index]));
        if (index == end)
            break;
    }
    if (wholeSet) {
        SetType(SET_TYPE_FOLDER);
        UpdateFilenameMap(UPDATE_FORCED);
    } else if (toTheEnd) {
        UpdateFilenameMap(UPDATE_FORCED);
    } else {
        ReorganizeBufferFileNames();
    }
}

void C_Set::ReorganizeBufferFileNames()
{
    UpdateFilenameMap(UPDATE_FORCED);
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        // Names only move to lower free numbers, so no rename meets an existing file.
        unsigned counter = 0;
        for (const auto& entry : m_fileMap) {
            if (entry.first != counter) {
                const std::string text = GetParameterStrFromFileName(entry.second);
                const std::string extension = RTE::FileSystem::ExtractExtension(entry.second, false);
                const std::string newName = GetStorageName(nullptr, counter, text, extension);
                RTE::FileSystem::Rename(FolderFile(entry.second), FolderFile(newName));
            }
            ++counter;
        }
    }
    UpdateFilenameMap(UPDATE_FORCED);
}

// ---- file names ---------------------------------------------------------------------------------

std::string C_Set::GetStorageName(const BufferApi::I_Buffer* buffer, unsigned index,
                                  const std::string& parameters, const std::string& extension) const
{
    std::string suffix = buffer && buffer->IsVectorBuffer() ? "vc7" : "im7";
    if (!extension.empty())
        suffix = extension[0] == '.' ? extension.substr(1) : extension;

    char name[256];
    if (parameters.empty()) {
        std::snprintf(name, sizeof name, "B%0*u.%s", FileNumberWidth, index + 1, suffix.c_str());
    } else {
        std::string text = parameters[0] == '_' ? parameters : "_" + parameters;
        text = MakeFileNameSafe(text);
        std::snprintf(name, sizeof name, "B%0*u%s.%s", FileNumberWidth, index + 1, text.c_str(), suffix.c_str());
    }
    return name;
}

std::string C_Set::MakeFileNameSafe(const std::string& text)
{
    std::string safe = text;
    for (char& c : safe) {
        switch (c) {
        case '\t': case '\n': case '\r': case '"': case '*': case '/': case ':': case '<': case '>':
        case '?': case '\\': case '|':
            c = '_';
            break;
        default:
            break;
        }
    }
    const std::size_t first = safe.find_first_not_of(' ');
    if (first == std::string::npos)
        return safe; // blanks only stay as they are
    const std::size_t last = safe.find_last_not_of(' ');
    return safe.substr(first, last - first + 1);
}

QFileInfo C_Set::BuildFileNameForBufferIndex(const std::string& setName, unsigned index, const QString& suffix,
                                             const QString& name, const QString& value)
{
    QString fileName = QStringLiteral("B%1").arg(index + 1, FileNumberWidth, 10, QLatin1Char('0'));
    if (!name.isEmpty()) {
        fileName += QLatin1Char('_') + name;
        if (!value.isEmpty())
            fileName += QLatin1Char('=') + value;
    }
    fileName += QLatin1Char('.') + suffix;
    return QFileInfo(QString::fromStdString(setName) + QLatin1Char('/') + fileName);
}

std::string C_Set::GetParameterStrFromFileName(const std::string& fileName)
{
    const std::size_t underscore = fileName.find('_');
    if (underscore == std::string::npos)
        return std::string();
    const std::size_t dot = fileName.rfind('.');
    if (dot == std::string::npos || dot < underscore)
        return fileName.substr(underscore + 1);
    return fileName.substr(underscore + 1, dot - underscore - 1);
}

QString C_Set::ExtractParameterNameFromFilename(const QString& fileName)
{
    const int underscore = fileName.indexOf(QLatin1Char('_'));
    if (underscore < 0)
        return QString();
    const int equals = fileName.indexOf(QLatin1Char('='), underscore + 1);
    if (equals < 0)
        return fileName.mid(underscore + 1);
    return fileName.mid(underscore + 1, equals - underscore - 1);
}

QString C_Set::ExtractParameterValueFromFilename(const QString& fileName, const QString& name)
{
    // The name is part of the expression as it stands.
    const QRegularExpression expression(QStringLiteral("[/_]") + name + QStringLiteral("="));
    const QRegularExpressionMatch match = expression.match(fileName);
    if (!expression.isValid() || !match.hasMatch())
        return QString();
    const int start = match.capturedStart() + static_cast<int>(name.size()) + 2;
    static const QRegularExpression separator(QStringLiteral("[/_]"));
    const int end = static_cast<int>(fileName.indexOf(separator, start));
    return end < 0 ? fileName.mid(start) : fileName.mid(start, end - start);
}

void C_Set::CopyBufferFromSet(const I_FileBasedSet& source, unsigned sourceIndex, unsigned targetIndex,
                              CopyParameterValueSpec spec)
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    const QFileInfo sourceFile = source.GetFileInfoForIndex(sourceIndex);
    QString name;
    QString value;
    switch (spec.GetCopyMode()) {
    case CopyParameterValueSpec::SpecifiedParameterValue:
        name = spec.GetSpecifiedParameterName();
        value = ExtractParameterValueFromFilename(sourceFile.absoluteFilePath(), name);
        if (value.isEmpty())
            name.clear();
        break;
    case CopyParameterValueSpec::ParameterValueFromFilename:
        name = ExtractParameterNameFromFilename(sourceFile.completeBaseName());
        value = ExtractParameterValueFromFilename(sourceFile.completeBaseName(), name);
        break;
    default:
        break;
    }
    const QFileInfo target = BuildFileNameForBufferIndex(m_name, targetIndex, sourceFile.suffix(), name, value);
    RTE::FileSystem::CopyFile(sourceFile.filePath().toStdString(), target.filePath().toStdString(), true);
    AddFilenameToMap(targetIndex, target.fileName().toStdString());
}

} // namespace SetApi
