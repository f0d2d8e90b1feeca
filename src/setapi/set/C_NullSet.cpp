#include <SetApi/set/C_NullSet.h>

#include <RTE/Exception.h>

namespace SetApi {

C_NullSet::C_NullSet() = default;

C_NullSet::C_NullSet(const std::string& name) : m_name(name) {}

C_NullSet::~C_NullSet() = default;

std::string C_NullSet::GetName() const { return m_name; }

bool C_NullSet::IsOpen() const { return false; }

void C_NullSet::StoreBuffer(const BufferApi::I_Buffer*, unsigned) {}

std::unique_ptr<BufferApi::I_Buffer> C_NullSet::LoadBuffer(unsigned) const { return {}; }

DataObjects::BufferStructureInformation C_NullSet::GetBufferStructureInformation(unsigned) const
{
    RTE_THROW(RTE::Exception, QStringLiteral("No buffer found in the set."));
}

DataObjects::GlobalAndFrameAttributes C_NullSet::GetAttributes(unsigned) const
{
    RTE_THROW(RTE::Exception, QStringLiteral("No buffer found in the set."));
}

void C_NullSet::AppendBuffer(const BufferApi::I_Buffer*) {}

unsigned C_NullSet::GetSize() const { return 0; }

void C_NullSet::GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex) const
{
    count = 0;
    minimumIndex = 0;
    maximumIndex = 0;
}

void C_NullSet::SetSourceMapping(unsigned, unsigned) {}

void C_NullSet::SetSourceName(const std::string&) {}

std::string C_NullSet::GetSourceSet() const { return std::string(); }

unsigned C_NullSet::GetSourceIndex(unsigned) const { return 1; }

I_Set::E_SetType C_NullSet::GetSetType() const { return SET_TYPE_UNKNOWN; }

void C_NullSet::GetFileList() {}

bool C_NullSet::WriteSetFile() { return false; }

bool C_NullSet::IsVirtualDataSet() const { return false; }

bool C_NullSet::SetPackTypeWord(int) { return false; }

bool C_NullSet::SetPackTypeFloat(int) { return false; }

void C_NullSet::RemoveBuffer(unsigned) {}

void C_NullSet::RemoveBufferRange(unsigned, unsigned)
{
    RTE_THROW(RTE::Exception, QStringLiteral("The method is not implemented."));
}

boost::shared_ptr<RTE::Parameter::C_Tree> C_NullSet::GetParameterTree() { return {}; }

bool C_NullSet::HasFullDataTraces() const { return false; }

bool C_NullSet::GetParameter(const std::string&, int&) const { return false; }

bool C_NullSet::GetParameter(const std::string&, std::string&) const { return false; }

bool C_NullSet::SetParameter(const std::string&, int) { return false; }

bool C_NullSet::SetParameter(const std::string&, std::string) { return false; }

void C_NullSet::ViewCallback_Set(const std::string&) {}

void C_NullSet::LoadCallback_Set(const std::string&) {}

} // namespace SetApi
