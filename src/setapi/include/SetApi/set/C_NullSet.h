#pragma once
// The placeholder the factory hands out when it has nothing better for a name: a valid set that
// has a name and is empty. Stores are dropped without an error on purpose; callers ask IsOpen()
// or GetSize().

#include <SetApi/set/C_SetBase.h>

namespace SetApi {

class SETAPI_API C_NullSet : public C_SetBase {
public:
    C_NullSet();
    explicit C_NullSet(const std::string& name);
    ~C_NullSet() override;

    std::string GetName() const override;
    bool IsOpen() const override;
    void StoreBuffer(const BufferApi::I_Buffer* buffer, unsigned index) override;
    std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const override;
    DataObjects::BufferStructureInformation GetBufferStructureInformation(unsigned index) const override;
    DataObjects::GlobalAndFrameAttributes GetAttributes(unsigned index) const override;
    void AppendBuffer(const BufferApi::I_Buffer* buffer) override;
    unsigned GetSize() const override;
    void GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex) const override;
    void SetSourceMapping(unsigned start, unsigned increment) override;
    void SetSourceName(const std::string& name) override;
    std::string GetSourceSet() const override;
    // 1 for every index (the base answers 0).
    unsigned GetSourceIndex(unsigned index) const override;
    E_SetType GetSetType() const override;
    void GetFileList() override;
    bool WriteSetFile() override;
    bool IsVirtualDataSet() const override;
    bool SetPackTypeWord(int packType) override;
    bool SetPackTypeFloat(int packType) override;
    void RemoveBuffer(unsigned index) override;
    // Raises "The method is not implemented."
    void RemoveBufferRange(unsigned start, unsigned end) override;
    boost::shared_ptr<RTE::Parameter::C_Tree> GetParameterTree() override;
    bool HasFullDataTraces() const override;
    bool GetParameter(const std::string& name, int& value) const override;
    bool GetParameter(const std::string& name, std::string& value) const override;
    bool SetParameter(const std::string& name, int value) override;
    bool SetParameter(const std::string& name, std::string value) override;

    virtual void ViewCallback_Set(const std::string& callback);
    virtual void LoadCallback_Set(const std::string& callback);

private:
    std::string m_name;
};

} // namespace SetApi
