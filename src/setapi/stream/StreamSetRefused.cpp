// What a stream set refuses: its images are extended only by the stream writers. Each refusal is
// an RTE::Exception whose whole text is the operation's name, and leaves the set untouched.

#include <SetApi/stream/StreamSet.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

namespace SetApi {
namespace Private {

void StreamSet::StoreBuffer(const BufferApi::I_Buffer*, unsigned)
{
    RTE::C_Logger("Set").debug("StoreBuffer");
    RTE_THROW(RTE::Exception, QStringLiteral("StoreBuffer"));
}

void StreamSet::AppendBuffer(const BufferApi::I_Buffer*) { RTE_THROW(RTE::Exception, QStringLiteral("AppendBuffer")); }

void StreamSet::RemoveBuffer(unsigned) { RTE_THROW(RTE::Exception, QStringLiteral("RemoveBuffer")); }

void StreamSet::RemoveBufferRange(unsigned, unsigned)
{
    RTE_THROW(RTE::Exception, QStringLiteral("RemoveBufferRange"));
}

bool StreamSet::SetPackTypeWord(int) { RTE_THROW(RTE::Exception, QStringLiteral("SetPackTypeWord")); }

bool StreamSet::SetPackTypeFloat(int) { RTE_THROW(RTE::Exception, QStringLiteral("SetPackTypeFloat")); }

} // namespace Private
} // namespace SetApi
