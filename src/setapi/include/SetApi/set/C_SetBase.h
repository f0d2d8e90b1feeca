#pragma once
// The common base of the set classes: title, settings documents, observers, and default answers
// for every operation a set class does not offer. It holds no set data of its own; what it does it
// does through the virtual GetName and GetSize.

#include <SetApi/set/I_Set.h>

#include <mutex>
#include <vector>

namespace SetApi {

class SETAPI_API C_SetBase : public I_Set {
public:
    C_SetBase();
    ~C_SetBase() override;
    C_SetBase(const C_SetBase&) = delete;
    C_SetBase& operator=(const C_SetBase&) = delete;

    QString GetTypeIdentifier() const override;
    QString GetTitle() const override;
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
    unsigned GetSourceIndex(unsigned index) const override;
    E_SetType GetSetType() const override;
    void AttachObserver(I_SetObserver* observer) override;
    void RemoveObserver(I_SetObserver* observer) override;
    void GetFileList() override;
    bool WriteSetFile() override;
    bool IsVirtualDataSet() const override;
    bool SetPackTypeWord(int packType) override;
    bool SetPackTypeFloat(int packType) override;
    void RemoveBuffer(unsigned index) override;
    void RemoveBufferRange(unsigned start, unsigned end) override;
    boost::shared_ptr<RTE::Parameter::C_Tree> GetParameterTree() override;
    bool HasFullDataTraces() const override;
    std::unique_ptr<BufferApi::I_Buffer> LoadFullDataTraces() const override;
    void StoreFullDataTraces(BufferApi::I_Buffer* traces) override;
    void WriteSettings(E_SettingsType type, const Storage::Settings& settings, const QString& context) override;
    std::unique_ptr<Storage::Settings> ReadSettings(E_SettingsType type, const QString& context) const override;
    bool HasSettings(E_SettingsType type, const QString& context) const override;

    virtual bool GetParameter(const std::string& name, int& value) const;
    virtual bool GetParameter(const std::string& name, std::string& value) const;
    virtual bool SetParameter(const std::string& name, int value);
    virtual bool SetParameter(const std::string& name, std::string value);
    // Empty for every index below GetSize(); RTE::VerificationFailed "Index out of range." otherwise.
    virtual QString GetBufferTitle(unsigned index) const;

protected:
    // Tells the observers, in order of attachment, that a buffer was stored under the index. Runs
    // under the observer mutex, on the calling thread.
    void Notify_StoreBuffer(unsigned index);

private:
    // GetName(), '/', the document name of the type, '_' and the context when there is one, ".xml".
    // A context that is not made of letters, digits and ". _ - { }" raises "Invalid context '...'".
    QString GetFileNameFromSettingsType(E_SettingsType type, const QString& context) const;

    std::vector<I_SetObserver*> m_observers;
    mutable std::mutex m_observerMutex;
};

} // namespace SetApi
