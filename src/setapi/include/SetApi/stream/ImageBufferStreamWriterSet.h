#pragma once
// A write-only set in front of a buffer stream writer: code that knows only I_Set stores its
// results into a stream set without knowing it. Storing is synchronous and in order; reading back
// goes through the set that the factory opens afterwards. The factory's observers are told of the
// new set only when this object is destroyed, after the streams are closed, so that they see it
// complete.

#include <SetApi/Export.h>
#include <SetApi/set/C_SetBase.h>

#include <cstdint>
#include <memory>
#include <string>

namespace SetApi {

class BufferStreamWriter;

class SETAPI_API ImageBufferStreamWriterSet : public C_SetBase {
public:
    // Prepares the name and makes the buffer stream writer (no compression).
    ImageBufferStreamWriterSet(const std::string& name, I_Set::E_SetType type);
    // Closes the streams, then tells the factory's observers of the new set.
    ~ImageBufferStreamWriterSet() override;

    // "StreamSet".
    QString GetTypeIdentifier() const override;
    std::string GetName() const override;
    bool IsOpen() const override;
    // Only the next index is taken (the number stored so far); any other raises
    // RTE::VerificationFailed with no text and stores nothing. A failed store keeps the count.
    void StoreBuffer(const BufferApi::I_Buffer* buffer, unsigned index) override;
    // Always RTE::LogicError: the set is write-only.
    std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const override;
    void AppendBuffer(const BufferApi::I_Buffer* buffer) override;
    unsigned GetSize() const override;
    // Count, 0 and count - 1 as unsigned arithmetic: the largest unsigned value with no image.
    void GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex) const override;
    void SetSourceMapping(unsigned start, unsigned increment) override;
    void SetSourceName(const std::string& name) override;
    unsigned GetSourceIndex(unsigned index) const override;
    E_SetType GetSetType() const override;
    void GetFileList() override;
    bool WriteSetFile() override;
    bool IsVirtualDataSet() const override;
    bool SetPackTypeWord(int packType) override;
    bool SetPackTypeFloat(int packType) override;
    void RemoveBuffer(unsigned index) override;
    void RemoveBufferRange(unsigned start, unsigned end) override;
    bool HasFullDataTraces() const override;

    bool GetParameter(const std::string& name, int& value) const override;
    using C_SetBase::GetParameter;
    bool SetParameter(const std::string& name, int value) override;
    using C_SetBase::SetParameter;

private:
    std::string m_name;
    std::unique_ptr<BufferStreamWriter> m_writer;
    I_Set::E_SetType m_type;
    std::uint32_t m_stored = 0;
};

} // namespace SetApi
