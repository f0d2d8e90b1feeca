#pragma once
// A set that keeps its buffers in memory, for tests of the typed set views. It records which
// buffers were loaded and removed.

#include <SetApi/set/C_SetBase.h>

#include <DataObjects/BufferStructureInformation.h>
#include <DataObjects/GlobalAndFrameAttributes.h>
#include <BufferApi/I_Buffer.h>
#include <RTE/Exception.h>

#include <memory>
#include <optional>
#include <vector>

namespace TestSupport {

class MemorySet : public SetApi::C_SetBase {
public:
    explicit MemorySet(E_SetType type = SET_TYPE_IMAGE) : m_type(type) {}

    std::string GetName() const override { return "memory"; }
    bool IsOpen() const override { return true; }
    E_SetType GetSetType() const override { return m_type; }
    unsigned GetSize() const override { return static_cast<unsigned>(m_buffers.size()); }
    void AppendBuffer(const BufferApi::I_Buffer* buffer) override { m_buffers.push_back(buffer->Clone()); }
    std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const override
    {
        RTE_VERIFY(index < m_buffers.size(), "Index out of range.");
        loaded.push_back(index);
        return m_buffers[index]->Clone();
    }
    DataObjects::BufferStructureInformation GetBufferStructureInformation(unsigned index) const override
    {
        RTE_VERIFY(index < m_buffers.size(), "Index out of range.");
        DataObjects::BufferStructureInformation info =
            DataObjects::GetBufferStructureInformationForBuffer(*m_buffers[index]);
        if (dataTypeOverride)
            info.dataType = *dataTypeOverride;
        return info;
    }
    DataObjects::GlobalAndFrameAttributes GetAttributes(unsigned index) const override
    {
        RTE_VERIFY(index < m_buffers.size(), "Index out of range.");
        return DataObjects::GetBufferAttributes(*m_buffers[index]);
    }
    void RemoveBuffer(unsigned index) override
    {
        removed.push_back(index);
        m_buffers.erase(m_buffers.begin() + index);
    }

    const BufferApi::I_Buffer& Buffer(unsigned index) const { return *m_buffers.at(index); }

    mutable std::vector<unsigned> loaded;
    std::vector<unsigned> removed;
    // Reported as the element type of every buffer, to try codes no buffer can have.
    std::optional<BufferApi::E_DataType> dataTypeOverride;

private:
    E_SetType m_type;
    std::vector<std::unique_ptr<BufferApi::I_Buffer>> m_buffers;
};

} // namespace TestSupport
