#include <SetApi/stream/ImageBufferStreamWriterSet.h>

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/BufferStreamWriter.h>

#include <BufferApi/I_Buffer.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <exception>

namespace SetApi {

ImageBufferStreamWriterSet::ImageBufferStreamWriterSet(const std::string& name, I_Set::E_SetType type)
    : m_name(C_SetUtilities::PrepareSetName(name)),
      m_writer(std::make_unique<BufferStreamWriter>(QString::fromStdString(m_name), type, BufferApi::BUFFER_PACK_NONE)),
      m_type(type)
{
}

ImageBufferStreamWriterSet::~ImageBufferStreamWriterSet()
{
    // The streams are closed first, so that observers find a complete set.
    m_writer.reset();
    try {
        C_SetFactory::Instance().NotifyOnCreate(m_name);
    } catch (const std::exception& e) {
        RTE::C_Logger("Set").error(std::string("ImageBufferStreamWriterSet: notifying the creation of ") + m_name
                                   + ": " + e.what());
    }
}

QString ImageBufferStreamWriterSet::GetTypeIdentifier() const { return QStringLiteral("StreamSet"); }

std::string ImageBufferStreamWriterSet::GetName() const { return m_name; }

bool ImageBufferStreamWriterSet::IsOpen() const { return true; }

void ImageBufferStreamWriterSet::StoreBuffer(const BufferApi::I_Buffer* buffer, unsigned index)
{
    if (index != m_stored)
        RTE_THROW(RTE::VerificationFailed);
    m_writer->Store(buffer);
    ++m_stored;
}

std::unique_ptr<BufferApi::I_Buffer> ImageBufferStreamWriterSet::LoadBuffer(unsigned) const
{
    RTE_THROW(RTE::LogicError);
}

void ImageBufferStreamWriterSet::AppendBuffer(const BufferApi::I_Buffer* buffer)
{
    m_writer->Store(buffer);
    ++m_stored;
}

unsigned ImageBufferStreamWriterSet::GetSize() const { return m_stored; }

void ImageBufferStreamWriterSet::GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex) const
{
    count = m_stored;
    minimumIndex = 0;
    maximumIndex = m_stored - 1u;
}

void ImageBufferStreamWriterSet::SetSourceMapping(unsigned, unsigned) {}

void ImageBufferStreamWriterSet::SetSourceName(const std::string&) {}

unsigned ImageBufferStreamWriterSet::GetSourceIndex(unsigned) const { return 0; }

I_Set::E_SetType ImageBufferStreamWriterSet::GetSetType() const { return m_type; }

void ImageBufferStreamWriterSet::GetFileList() {}

bool ImageBufferStreamWriterSet::WriteSetFile() { return false; }

bool ImageBufferStreamWriterSet::IsVirtualDataSet() const { return false; }

bool ImageBufferStreamWriterSet::SetPackTypeWord(int) { return false; }

bool ImageBufferStreamWriterSet::SetPackTypeFloat(int) { return false; }

void ImageBufferStreamWriterSet::RemoveBuffer(unsigned) {}

void ImageBufferStreamWriterSet::RemoveBufferRange(unsigned, unsigned) {}

bool ImageBufferStreamWriterSet::HasFullDataTraces() const { return false; }

bool ImageBufferStreamWriterSet::GetParameter(const std::string&, int&) const { return false; }

bool ImageBufferStreamWriterSet::SetParameter(const std::string&, int) { return false; }

} // namespace SetApi
