// C_Set's buffer files: storing, loading, the head information, and the data traces.

#include <SetApi/set/C_Set.h>

#include <BufferApi/BufferFile.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/ImagePlaneAccess.h>
#include <DataObjects/BufferAttributes.h>
#include <DataObjects/BufferStructureInformation.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>
#include <RTE/Parameter/Factory.h>
#include <RTE/Parameter/Tree.h>

#include <QString>

namespace SetApi {

namespace {

// Windows' classic path limit: a longer path could not be opened there, so no set makes one.
const int MaximumPathLength = 259;

void LogFailure(const char* operation, unsigned index, const char* text)
{
    RTE::C_Logger("Set").error(std::string(operation) + " " + std::to_string(index) + ": " + text);
}

// Runs a load or store; a failure is logged with the operation and index and passed on.
template <typename Function>
auto LoggedBufferOperation(const char* operation, unsigned index, Function&& function) -> decltype(function())
{
    try {
        return function();
    } catch (const std::exception& e) {
        LogFailure(operation, index, e.what());
        throw;
    } catch (...) {
        RTE::C_Logger("Set").error(std::string(operation) + " " + std::to_string(index) + ": unknown exception");
        throw;
    }
}

std::unique_ptr<BufferApi::I_Scale> CopyOf(const BufferApi::I_Scale& scale) { return scale.Clone(); }

} // namespace

void C_Set::StoreBuffer(const BufferApi::I_Buffer* buffer, unsigned index)
{
    StoreBufferWithParametersThrows(buffer, index, std::string(), std::string());
}

void C_Set::StoreBufferWithParametersThrows(const BufferApi::I_Buffer* buffer, unsigned index,
                                            const std::string& parameters, const std::string& extension)
{
    if (!buffer) {
        RTE::C_Logger("Set").debug("Source buffer is empty.");
        RTE_THROW(RTE::Exception, QStringLiteral("Source buffer is empty."));
    }
    if (buffer->GetNumberOfFrames() == 0) {
        RTE::C_Logger("Set").debug("Source buffer has no frames.");
        RTE_THROW(RTE::Exception, QStringLiteral("Source buffer has no frames."));
    }
    UpdateFilenameMap(UPDATE_IF_STALE);
    std::string fileName = GetStorageName(buffer, index, parameters, extension);
    {
        // A buffer stored again keeps its file's name; the export below runs without the lock.
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        const auto existing = m_fileMap.find(index);
        if (existing != m_fileMap.end())
            fileName = existing->second;
    }
    const std::string path = RTE::FileSystem::FixPath(FolderFile(fileName));
    if (QString::fromStdString(path).size() > MaximumPathLength) {
        RTE::C_Logger("Set").debug("Can't store buffer, path too long: " + path);
        RTE_THROW(RTE::Exception, QStringLiteral("Can't store buffer: Total path and file name length must not "
                                                 "exceed 260 characters!"));
    }
    const bool word = buffer->GetFrame(0)->GetDataType() == BufferApi::DATATYPE_WORD;
    const int packType = word ? GetPackTypeWord() : GetPackTypeOther();
    const bool directIo = IsDirectIo();
    LoggedBufferOperation("StoreBuffer", index, [&] {
        auto options = RTE::Parameter::CreateTree();
        options->Add(RTE::Parameter::CreateInteger(QStringLiteral("PackType"), packType));
        if (directIo)
            options->Add(RTE::Parameter::CreateInteger(QStringLiteral("DirectIo"), 2));
        BufferApi::ExportBuffer(buffer, path, options);
    });
    Notify_StoreBuffer(index);
    AddFilenameToMap(index, fileName);
}

void C_Set::AppendBuffer(const BufferApi::I_Buffer* buffer)
{
    UpdateFilenameMap(UPDATE_IF_STALE);
    unsigned index = 0;
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (!m_fileMap.empty())
            index = m_indexMax + 1;
    }
    StoreBuffer(buffer, index);
}

std::unique_ptr<BufferApi::I_Buffer> C_Set::LoadBuffer(unsigned index) const
{
    m_lastError = 0;
    return LoggedBufferOperation("LoadBuffer", index, [&] {
        unsigned found = index;
        std::string path;
        const bool exists = GetNext(found, path, nullptr);
        if (exists && found != index)
            RTE_THROW(RTE::Exception,
                      QStringLiteral("Gap (=missing buffer) in the numbering of the set's buffer-files."));
        std::unique_ptr<BufferApi::I_Buffer> buffer;
        if (exists)
            buffer.reset(BufferApi::ImportBuffer(RTE::FileSystem::FixPath(path), RTE::Parameter::CreateTree()));
        if (!buffer)
            RTE_THROW(RTE::VerificationFailed, QStringLiteral("Unexpected error: Buffer is NULL."));
        return buffer;
    });
}

std::unique_ptr<BufferApi::I_Buffer> C_Set::ReadHead(unsigned index, bool withAttributes) const
{
    // Takes the next existing buffer quietly: the head answers layout questions, gaps do not matter.
    std::string path;
    if (!GetNext(index, path, nullptr))
        RTE_THROW(RTE::Exception, QStringLiteral("No buffer found in the set."));
    unsigned frames = 0, width = 0, height = 0, depth = 0;
    return std::unique_ptr<BufferApi::I_Buffer>(BufferApi::GetImportInformation(
        RTE::FileSystem::FixPath(path), frames, width, height, depth, withAttributes));
}

DataObjects::BufferStructureInformation C_Set::GetBufferStructureInformation(unsigned index) const
{
    return DataObjects::GetBufferStructureInformationForBuffer(*ReadHead(index, false));
}

DataObjects::GlobalAndFrameAttributes C_Set::GetAttributes(unsigned index) const
{
    return DataObjects::GetBufferAttributes(*ReadHead(index, true));
}

// ---- data traces --------------------------------------------------------------------------------

void C_Set::StoreFullDataTraces(BufferApi::I_Buffer* traces)
{
    BufferApi::ExportBuffer(traces, FolderFile(TraceFileName), RTE::Parameter::CreateTree());
}

std::unique_ptr<BufferApi::I_Buffer> C_Set::LoadFullDataTraces() const
{
    std::unique_ptr<BufferApi::I_Buffer> old(
        BufferApi::ImportBuffer(FolderFile(TraceFileName), RTE::Parameter::CreateTree()));
    if (!old)
        RTE_THROW_MSG(RTE::Exception, "Set has no analog data trace: " << FolderFile(TraceFileName));
    if (DataObjects::IsXYPlotBuffer(*old))
        return old;

    // An old trace: two frames of one row of samples each, the value scale first, the position
    // scale second. The x-y form has per frame a row of values and a row of positions.
    if (old->GetNumberOfFrames() != 2)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("DataTrace buffer has wrong number of frames"));
    const BufferApi::I_Frame& first = *old->GetFrame(0);
    const BufferApi::I_Frame& second = *old->GetFrame(1);
    if (first.GetWidth() != second.GetWidth())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("DataTrace buffer has different weight"));
    if (first.GetHeight() != 1 || second.GetHeight() != 1)
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("DataTrace buffer has wrong height"));

    std::unique_ptr<BufferApi::I_Buffer> result(BufferApi::CreateBuffer());
    result->GetAttributeStore() = old->GetAttributeStore();
    const unsigned width = first.GetWidth();
    const BufferApi::I_Scale& positionScale = first.GetScale(BufferApi::SCALE_X);
    for (unsigned f = 0; f < 2; ++f) {
        const BufferApi::I_Frame& source = *old->GetFrame(f);
        std::unique_ptr<BufferApi::I_FrameImage> frame(
            BufferApi::CreateImageFrame(BufferApi::DATATYPE_FLOAT, width, 2, 1));
        frame->SetName(source.GetName());
        frame->GetAttributeStore() = source.GetAttributeStore();
        frame->SetScale(BufferApi::SCALE_I, CopyOf(source.GetScale(BufferApi::SCALE_I)));
        frame->SetScale(BufferApi::SCALE_X, CopyOf(source.GetScale(BufferApi::SCALE_X)));
        const BufferApi::C_ImagePlaneAccess samples(&source, 0);
        const BufferApi::I_Scale& valueScale = source.GetScale(BufferApi::SCALE_I);
        auto* target = static_cast<float*>(frame->GetPixelPlane(0)->GetData());
        for (unsigned x = 0; x < width; ++x) {
            target[x] = static_cast<float>(valueScale.Apply(samples.GetValue(x, 0)));
            target[width + x] = static_cast<float>(positionScale.Apply(static_cast<double>(x)));
        }
        result->AddFrame(std::move(frame));
    }
    return result;
}

} // namespace SetApi
