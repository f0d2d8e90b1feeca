// The stream set: opening, registration with the factory, and reading through the reader.

#include <SetApi/stream/StreamSet.h>

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>

#include <BufferApi/Attributes.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <string>

namespace SetApi {
namespace Private {

namespace {

// The registration of the stream set, made when the library loads. A stream set comes into being
// through its writers, never through the factory's create path.
struct StreamSetRegistration {
    StreamSetRegistration()
    {
        C_SetFactory::Instance().Register(
            "StreamSet", [](const std::string& path) -> I_Set* { return StreamSet::Open(path); },
            [](const std::string&, I_Set::E_SetType, bool) -> I_Set* {
                RTE_THROW(RTE::Exception, QStringLiteral("Not possible to create recording set."));
            });
    }
} const registration;

} // namespace

StreamSet* StreamSet::Open(const std::string& name) { return new StreamSet(name, StreamSetReader::Options()); }

StreamSet* StreamSet::Open(const std::string& name, const StreamSetReader::Options& options)
{
    return new StreamSet(name, options);
}

StreamSet::StreamSet(const std::string& name, const StreamSetReader::Options& options)
    : m_name(C_SetUtilities::PrepareSetName(name)),
      m_reader(QString::fromStdString(GetStreamSetConfigurationName(m_name)), options)
{
    RTE::C_Logger("Set").debug("open " + m_name);
    C_SetUtilities::ReadSetGroupVariables(GetFullName(), m_parameters);
}

StreamSet::~StreamSet()
{
    try {
        WriteSetFile();
    } catch (...) {
        // A destructor reports nothing; the set file keeps its last written state.
    }
}

QString StreamSet::GetTypeIdentifier() const { return QStringLiteral("SET_TYPE_ID_RECORDING"); }

std::string StreamSet::GetName() const { return m_name; }

std::string StreamSet::GetFullName() const { return m_name + ".set"; }

bool StreamSet::IsOpen() const { return true; }

std::unique_ptr<BufferApi::I_Buffer> StreamSet::LoadBuffer(unsigned index) const
{
    std::unique_ptr<BufferApi::I_Buffer> buffer;
    // A failed load is logged with the operation and the index, and passed on.
    try {
        buffer = m_reader.LoadBuffer(index);
    } catch (const std::exception& e) {
        RTE::C_Logger("Set").error("LoadBuffer " + std::to_string(index) + ": " + e.what());
        throw;
    } catch (...) {
        RTE::C_Logger("Set").error("LoadBuffer " + std::to_string(index) + ": unknown exception");
        throw;
    }
    BufferApi::CreateAttributesFromPathValues(buffer.get(), GetName());
    BufferApi::C_BufferAttributes attributes(buffer.get());
    attributes.SetString("_Date", "---");
    attributes.SetString("_Time", "---");
    return buffer;
}

DataObjects::BufferStructureInformation StreamSet::GetBufferStructureInformation(unsigned index) const
{
    return m_reader.GetBufferStructureInformation(index);
}

DataObjects::GlobalAndFrameAttributes StreamSet::GetAttributes(unsigned index) const
{
    return m_reader.GetAttributes(index);
}

unsigned StreamSet::GetSize() const
{
    unsigned count = 0, minimumIndex = 0, maximumIndex = 0;
    GetInfo(count, minimumIndex, maximumIndex);
    return count;
}

void StreamSet::GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex) const
{
    count = m_reader.GetImageCount();
    minimumIndex = 0;
    maximumIndex = count == 0 ? 0 : count - 1;
}

void StreamSet::GetFileList() {}

bool StreamSet::IsVirtualDataSet() const { return false; }

bool StreamSet::HasFullDataTraces() const { return m_reader.HasFullTraces(); }

std::unique_ptr<BufferApi::I_Buffer> StreamSet::LoadFullDataTraces() const { return m_reader.LoadFullTracesBuffer(); }

bool StreamSet::IsCorrupt() const { return m_reader.IsCorrupt(); }

const StreamSetReader::CorruptionStates& StreamSet::GetCorruptionStates() const
{
    return m_reader.GetCorruptionStates();
}

bool StreamSet::HasBeenRepaired() const { return m_reader.HasBeenRepaired(); }

QString StreamSet::GetDetailsOfRepair() const { return m_reader.GetDetailsOfRepair(); }

void StreamSet::Repair() { m_reader.Repair(); }

std::shared_ptr<StreamSet> CastToStreamSet(std::shared_ptr<I_Set> set)
{
    return std::dynamic_pointer_cast<StreamSet>(set);
}

} // namespace Private
} // namespace SetApi
