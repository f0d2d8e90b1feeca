#pragma once
// The one interface through which every stored data set is used: numbered buffers, named
// parameters, settings documents, analogue traces, a source reference and observers.
// Sets are handed out by the set factory as std::shared_ptr<I_Set>. What a set loads belongs to
// the caller (LoadBuffer, LoadFullDataTraces, ReadSettings); what a caller stores stays its own.

#include <SetApi/Export.h>

#include <BufferApi/I_Buffer.h>
#include <DataObjects/BufferStructureInformation.h>
#include <DataObjects/GlobalAndFrameAttributes.h>

#include <QString>

#include <boost/shared_ptr.hpp>
#include <boost/signals2/signal.hpp>

#include <memory>
#include <string>

namespace RTE::Parameter {
class C_Tree;
}
namespace Storage {
class Settings;
}

namespace SetApi {

class I_SetObserver;

class SETAPI_API I_Set {
public:
    // Kinds of set, as single bits; stored as a decimal number under the key "SetType".
    enum E_SetType : unsigned {
        SET_TYPE_UNKNOWN = 0x0,
        SET_TYPE_GEOMETRY = 0x1,
        SET_TYPE_IMAGE = 0x100,
        SET_TYPE_VECTOR = 0x200,
        SET_TYPE_PROFILE = 0x400,
        SET_TYPE_SCALAR = 0x800,
        SET_TYPE_RECORDING = 0x1000,
        SET_TYPE_PROPERTIES = 0x2000,
        SET_TYPE_FOLDER = 0x4000,
        SET_TYPE_HIDDEN = 0x8000,
        SET_TYPE_SURFACE = 0x10000,
        SET_TYPE_CALIBRATION = 0x20000,
        SET_TYPE_INTENSITY_CALIBRATION = 0x40000,
        SET_TYPE_INTENSITY_CALIBRATION_HISTORY = 0x80000,
        SET_TYPE_CALIBRATION_DATA = 0x100000,
        SET_TYPE_ACTIVE_INTENSITY_CALIBRATION = 0x200000,
        SET_TYPE_RECORDING_LOOP = 0x400000,
        SET_TYPE_HYPERSAMPLED_RECORDING = 0x800000,
        SET_TYPE_PARTICLE_FIELD = 0x1000000
    };

    // The settings documents a set may hold, one per kind and context.
    enum E_SettingsType { SETTINGS_ACQUISITION = 0, SETTINGS_PROCESSING_HISTORY = 1, SETTINGS_APPLICATION = 2 };

    virtual ~I_Set();

    virtual QString GetTypeIdentifier() const = 0;
    virtual QString GetTitle() const = 0;
    virtual std::string GetName() const = 0;
    virtual bool IsOpen() const = 0;
    virtual void StoreBuffer(const BufferApi::I_Buffer* buffer, unsigned index) = 0;
    virtual std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const = 0;
    virtual DataObjects::BufferStructureInformation GetBufferStructureInformation(unsigned index) const = 0;
    virtual DataObjects::GlobalAndFrameAttributes GetAttributes(unsigned index) const = 0;
    virtual void AppendBuffer(const BufferApi::I_Buffer* buffer) = 0;
    virtual unsigned GetSize() const = 0;
    virtual void GetInfo(unsigned& count, unsigned& minimumIndex, unsigned& maximumIndex) const = 0;
    virtual void SetSourceMapping(unsigned start, unsigned increment) = 0;
    virtual void SetSourceName(const std::string& name) = 0;
    virtual std::string GetSourceSet() const = 0;
    virtual unsigned GetSourceIndex(unsigned index) const = 0;
    virtual E_SetType GetSetType() const = 0;
    virtual void AttachObserver(I_SetObserver* observer) = 0;
    virtual void RemoveObserver(I_SetObserver* observer) = 0;
    virtual void GetFileList() = 0;
    virtual bool WriteSetFile() = 0;
    virtual bool IsVirtualDataSet() const = 0;
    virtual bool SetPackTypeWord(int packType) = 0;
    virtual bool SetPackTypeFloat(int packType) = 0;
    virtual void RemoveBuffer(unsigned index) = 0;
    virtual void RemoveBufferRange(unsigned start, unsigned end) = 0;
    virtual boost::shared_ptr<RTE::Parameter::C_Tree> GetParameterTree() = 0;
    virtual bool HasFullDataTraces() const = 0;
    virtual std::unique_ptr<BufferApi::I_Buffer> LoadFullDataTraces() const = 0;
    virtual void StoreFullDataTraces(BufferApi::I_Buffer* traces) = 0;
    virtual void WriteSettings(E_SettingsType type, const Storage::Settings& settings, const QString& context) = 0;
    virtual std::unique_ptr<Storage::Settings> ReadSettings(E_SettingsType type, const QString& context) const = 0;
    virtual bool HasSettings(E_SettingsType type, const QString& context) const = 0;

    // Lives and dies with the set. Who connects and who fires it is up to the set classes and their
    // users; the set classes of the core only create and destroy it.
    boost::signals2::signal<void(I_Set*)> m_signal;
};

} // namespace SetApi
