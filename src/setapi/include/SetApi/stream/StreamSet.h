#pragma once
// The read side of a recording as a set. To its callers a finished recording is a set of numbered
// buffers like any other; behind it the buffers are assembled from the streams of the folder by a
// StreamSetReader, which lives and dies with the set.
//
// Images are read-only: storing, appending and removing buffers are refused with an
// RTE::Exception whose text is the operation's name, since a stream is extended only by its
// writers. The parameters of the set file stay changeable, and each change is on disk when the
// call returns. The factory opens the class under the set identifier "StreamSet"; a stream set is
// never made through the factory's create path.

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetBase.h>
#include <SetApi/stream/StreamSetReader.h>

#include <memory>
#include <string>

namespace SetApi {
namespace Private {

class SETAPI_API StreamSet : public C_SetBase {
public:
    // Opens the recording of that name (with or without ".set"). A configuration that cannot be
    // used raises the reader's failure; a damaged recording opens, and IsCorrupt tells.
    static StreamSet* Open(const std::string& name);
    static StreamSet* Open(const std::string& name, const StreamSetReader::Options& options);

    // Writes the set file if a change is pending.
    ~StreamSet() override;

    // I_Set
    // "SET_TYPE_ID_RECORDING" for every stream set, whatever "SetType" holds.
    QString GetTypeIdentifier() const override;
    std::string GetName() const override;
    bool IsOpen() const override;
    void StoreBuffer(const BufferApi::I_Buffer* buffer, unsigned index) override;
    // The reader's buffer, with the attributes the set's path carries, and "_Date" and "_Time"
    // set to "---": the images of a recording carry no storing time of their own.
    std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const override;
    DataObjects::BufferStructureInformation GetBufferStructureInformation(unsigned index) const override;
    DataObjects::GlobalAndFrameAttributes GetAttributes(unsigned index) const override;
    void AppendBuffer(const BufferApi::I_Buffer* buffer) override;
    unsigned GetSize() const override;
    void GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex) const override;
    void SetSourceMapping(unsigned start, unsigned increment) override;
    void SetSourceName(const std::string& name) override;
    // "SetSourceSet", or the set's parent folder when that is empty or names the set itself.
    std::string GetSourceSet() const override;
    // (index - 1) * "SetInc" + "SetStart": callers pass the one-based number of the source image.
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
    std::unique_ptr<BufferApi::I_Buffer> LoadFullDataTraces() const override;

    // C_SetBase
    bool GetParameter(const std::string& name, int& value) const override;
    bool GetParameter(const std::string& name, std::string& value) const override;
    bool SetParameter(const std::string& name, int value) override;
    bool SetParameter(const std::string& name, std::string value) override;

    // The state of the recording, from its reader.
    bool IsCorrupt() const;
    const StreamSetReader::CorruptionStates& GetCorruptionStates() const;
    bool HasBeenRepaired() const;
    QString GetDetailsOfRepair() const;
    void Repair();

protected:
    StreamSet(const std::string& name, const StreamSetReader::Options& options);

private:
    std::string GetFullName() const;
    std::string GetTime() const;
    void SetTime(const std::string& time);
    void SetComment(const std::string& comment);
    void SetGroups(const std::string& groups);
    void MarkChangedAndWrite();

    std::string m_name;
    C_DataSetParameter m_parameters;
    bool m_dirty = false;
    StreamSetReader m_reader;
};

// The set as a stream set, or an empty pointer for any other set.
SETAPI_API std::shared_ptr<StreamSet> CastToStreamSet(std::shared_ptr<I_Set> set);

} // namespace Private
} // namespace SetApi
