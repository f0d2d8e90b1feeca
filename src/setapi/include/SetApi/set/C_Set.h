#pragma once
// The ordinary set: a folder of numbered buffer files and a set file of parameters.
//
// File names number from 1 ("B00001.im7"), indices in memory from 0. The folder is listed once,
// at first use; after that the file map is kept in step by this class's own operations, so files
// that others add to the folder show only after GetFileList(). Every parameter change is on disk
// when the call returns.
//
// Buffer files are written and read by the buffer library (BufferApi::ExportBuffer/ImportBuffer);
// this class decides what they are called, where they lie and how the numbering is kept. The
// lock guards the file map only: a buffer export runs without it. StoreBuffer may be called from
// several threads at once for different indices (a background writer with several workers).

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetBase.h>
#include <SetApi/set/I_FileBasedSet.h>

#include <atomic>
#include <map>
#include <mutex>

namespace SetApi {

class SETAPI_API C_Set : public C_SetBase, public I_FileBasedSet {
public:
    enum E_UpdateMode { UPDATE_IF_STALE = 0, UPDATE_FORCED = 1 };

    // Opens the set of that name; a missing set file gives an open set with default parameters.
    static C_Set* Open(const std::string& name);
    // Creates the set: empties an existing folder of everything but set files, creates the folder
    // if asked, and writes the set file with type and creation time.
    static C_Set* Create(const std::string& name, E_SetType type, bool createFolder);

    explicit C_Set(const std::string& name);
    C_Set(const std::string& name, E_SetType type, bool createFolder);
    // Writes the set file if a change is pending.
    ~C_Set() override;

    // I_Set
    QString GetTypeIdentifier() const override;
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
    unsigned GetSourceIndex(unsigned index) const override;
    E_SetType GetSetType() const override;
    void GetFileList() override;
    bool WriteSetFile() override;
    bool SetPackTypeWord(int packType) override;
    bool SetPackTypeFloat(int packType) override;
    void RemoveBuffer(unsigned index) override;
    void RemoveBufferRange(unsigned start, unsigned end) override;
    bool HasFullDataTraces() const override;
    // Old two-frame traces (one row of samples per frame) are converted to the x-y plot form.
    std::unique_ptr<BufferApi::I_Buffer> LoadFullDataTraces() const override;
    void StoreFullDataTraces(BufferApi::I_Buffer* traces) override;

    // C_SetBase
    bool GetParameter(const std::string& name, int& value) const override;
    bool GetParameter(const std::string& name, std::string& value) const override;
    bool SetParameter(const std::string& name, int value) override;
    bool SetParameter(const std::string& name, std::string value) override;
    QString GetBufferTitle(unsigned index) const override;

    // I_FileBasedSet
    QFileInfo GetFileInfoForIndex(unsigned index) const override;
    void CopyBufferFromSet(const I_FileBasedSet& source, unsigned sourceIndex, unsigned targetIndex,
                           CopyParameterValueSpec spec) override;

    std::string GetFullName() const;
    bool GetNext(unsigned& index, std::string& path, const std::string* extension) const;
    unsigned GetIndexMin() const;
    unsigned GetIndexMax() const;
    unsigned GetNumBuffers() const;
    void GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex, bool unused) const;
    // The file name a buffer gets under the index: "B" + number of at least five digits, then "_" and
    // the file-name-safe parameter text when there is one, then "." and the extension ("im7", or an
    // extension given, without its dot).
    std::string GetStorageName(const BufferApi::I_Buffer* buffer, unsigned index, const std::string& parameters,
                               const std::string& extension) const;
    // Stores the buffer under the index. A buffer stored again under an index that has a file keeps
    // that file's name: the new parameter text and extension are dropped.
    void StoreBufferWithParametersThrows(const BufferApi::I_Buffer* buffer, unsigned index,
                                         const std::string& parameters, const std::string& extension);
    void AddParameter(const std::string& name, const std::string& value);
    void SetType(E_SetType type);
    void SetComment(const std::string& comment);
    void SetGroups(const std::string& groups);
    void SetTime(const std::string& time);
    std::string GetTime() const;
    void Close();
    int GetLastError() const;
    // Whether buffer files are written with direct I/O, around the page cache (off by default).
    // For recordings: the files so written are made durable all at once, names included, by
    // RTE::FileSystem::SyncFolder of the set folder (SetWriter::Close does it), not one by one.
    // The files are the same either way. May be changed at any time; a store under way keeps the
    // mode it started with.
    void SetDirectIo(bool direct) { m_directIo = direct; }
    bool IsDirectIo() const { return m_directIo; }
    const C_DataSetParameter& GetParameters() const { return m_parameters; }

    // Renames buffer files down to a gapless numbering from 1, keeping parameter texts and extensions.
    void ReorganizeBufferFileNames();

    // File name helpers.
    static std::string MakeFileNameSafe(const std::string& text);
    static QFileInfo BuildFileNameForBufferIndex(const std::string& setName, unsigned index, const QString& suffix,
                                                 const QString& name, const QString& value);
    static std::string GetParameterStrFromFileName(const std::string& fileName);
    static QString ExtractParameterNameFromFilename(const QString& fileName);
    static QString ExtractParameterValueFromFilename(const QString& fileName, const QString& name);

    // The trace file in the set folder.
    static const char* const TraceFileName; // "AnalogData.im7"

protected:
    void UpdateFilenameMap(E_UpdateMode mode) const;
    void AddFilenameToMap(unsigned index, const std::string& fileName) const;
    int GetPackTypeWord() const { return m_packTypeWord; }
    int GetPackTypeOther() const { return m_packTypeOther; }

private:
    void MarkChangedAndWrite();
    // The head buffer of the next buffer file at or behind the index ("No buffer found in the set.").
    std::unique_ptr<BufferApi::I_Buffer> ReadHead(unsigned index, bool withAttributes) const;
    std::string FolderFile(const std::string& fileName) const;

    std::string m_name;
    bool m_dirty = false;
    mutable unsigned m_indexMin = 0;
    mutable unsigned m_indexMax = 0;
    mutable std::map<unsigned, std::string> m_fileMap;
    mutable bool m_stale = true;
    // Atomic: loads and stores run on several threads at once, outside the lock.
    mutable std::atomic<int> m_lastError{0};
    mutable std::recursive_mutex m_mutex;
    bool m_open = false;
    C_DataSetParameter m_parameters;
    // Read by every store, outside the lock; may be set while stores run.
    std::atomic<int> m_packTypeWord{1};
    std::atomic<int> m_packTypeOther{0};
    std::atomic<bool> m_directIo{false};
};

} // namespace SetApi
