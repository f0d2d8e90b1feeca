#include <StreamIO/ReaderConfiguration.h>

#include <RTE/Exception.h>

namespace SetApi {
namespace Private {

C_ReaderInfo::C_ReaderInfo(const QString& name, const QString& type, const QString& filePrefix,
                           const QString& formatDescription, const C_ContentPurpose& purpose)
    : Name(name), Type(type), FilePrefix(filePrefix), FormatDescription(formatDescription), ContentPurpose(purpose)
{
}

bool C_ReaderInfo::operator==(const C_ReaderInfo& other) const
{
    return Name == other.Name && Type == other.Type && FilePrefix == other.FilePrefix
           && FormatDescription == other.FormatDescription && ContentPurpose == other.ContentPurpose;
}

void C_ReaderConfiguration::AddReader(const C_ReaderInfo& info) { m_readers.push_back(info); }

const C_ReaderInfo& C_ReaderConfiguration::GetReader(unsigned index) const
{
    if (index >= m_readers.size())
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Reader index " << index << " is out of range; the configuration holds " << m_readers.size()
                                      << " readers.");
    return m_readers[index];
}

unsigned C_ReaderConfiguration::GetReaderCount() const { return static_cast<unsigned>(m_readers.size()); }

void C_ReaderConfiguration::RemoveReader(unsigned index)
{
    if (index >= m_readers.size())
        RTE_THROW_MSG(RTE::VerificationFailed,
                      "Reader index " << index << " is out of range; the configuration holds " << m_readers.size()
                                      << " readers.");
    m_readers.erase(m_readers.begin() + index);
}

void C_ReaderConfiguration::MarkAsRepaired(const QString& details)
{
    m_repaired = true;
    m_repairDetails = details;
}

} // namespace Private
} // namespace SetApi
