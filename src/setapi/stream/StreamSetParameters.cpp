// The parameters of a stream set: its set file, kept on disk after every change, and the source
// mapping read from it.

#include <SetApi/stream/StreamSet.h>

#include <SetApi/set/C_SetUtilities.h>

#include <boost/filesystem/path.hpp>

namespace SetApi {
namespace Private {

bool StreamSet::GetParameter(const std::string& name, int& value) const { return m_parameters.GetValue(name, value); }

bool StreamSet::GetParameter(const std::string& name, std::string& value) const
{
    return m_parameters.GetValue(name, value);
}

bool StreamSet::SetParameter(const std::string& name, int value)
{
    if (!m_parameters.SetValue(name, value))
        return false;
    MarkChangedAndWrite();
    return true;
}

bool StreamSet::SetParameter(const std::string& name, std::string value)
{
    if (!m_parameters.SetValue(name, value))
        return false;
    MarkChangedAndWrite();
    return true;
}

// The file follows each change at once; the dirty flag stays set only when a write did not happen.
void StreamSet::MarkChangedAndWrite()
{
    if (!m_dirty) {
        m_dirty = true;
        WriteSetFile();
    }
}

bool StreamSet::WriteSetFile()
{
    if (!m_dirty)
        return true;
    // The result of the write is not looked at: a set file that cannot be written leaves the set
    // usable in memory.
    C_SetUtilities::WriteSettings(GetFullName(), m_parameters, std::string());
    m_dirty = false;
    return true;
}

I_Set::E_SetType StreamSet::GetSetType() const
{
    int type = 0;
    if (!m_parameters.GetValue("SetType", type))
        return SET_TYPE_UNKNOWN;
    return static_cast<E_SetType>(static_cast<unsigned>(type));
}

void StreamSet::SetSourceMapping(unsigned start, unsigned increment)
{
    SetParameter("SetStart", static_cast<int>(start));
    SetParameter("SetInc", static_cast<int>(increment));
}

void StreamSet::SetSourceName(const std::string& name) { SetParameter("SetSourceSet", name); }

std::string StreamSet::GetSourceSet() const
{
    std::string source;
    m_parameters.GetValue("SetSourceSet", source);
    if (source.empty() || C_SetUtilities::PrepareSetName(source) == m_name)
        return boost::filesystem::path(m_name).parent_path().generic_string();
    return source;
}

unsigned StreamSet::GetSourceIndex(unsigned index) const
{
    int start = 0;
    int increment = 0;
    m_parameters.GetValue("SetStart", start);
    m_parameters.GetValue("SetInc", increment);
    // Deliberately one-based: the caller passes the number of the source image, not this set's
    // zero-based index. Unsigned arithmetic, so index 0 wraps as it always has.
    return (index - 1u) * static_cast<unsigned>(increment) + static_cast<unsigned>(start);
}

std::string StreamSet::GetTime() const
{
    std::string time;
    m_parameters.GetValue("SetTime", time);
    return time;
}

void StreamSet::SetTime(const std::string& time) { SetParameter("SetTime", time); }

void StreamSet::SetComment(const std::string& comment) { SetParameter("SetComments", comment); }

void StreamSet::SetGroups(const std::string& groups) { SetParameter("SetGroups", groups); }

} // namespace Private
} // namespace SetApi
