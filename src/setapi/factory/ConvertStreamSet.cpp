#include <SetApi/factory/ConvertStreamSet.h>

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/C_SetFileSystemHierarchy.h>
#include <SetApi/factory/Tools.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/stream/StreamSet.h>

#include <BufferApi/I_Buffer.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <exception>
#include <memory>
#include <stdexcept>

namespace SetApi {

namespace {

const char* const ParkedName = "old_StreamSet";

// Moves the child sets of `from` into the folder of `to`, as the hierarchy rooted at `root` sees
// them. Either set may be missing (a null or closed set): then nothing moves.
void MoveChildren(const QString& root, std::shared_ptr<I_Set> from, std::shared_ptr<I_Set> to)
{
    if (!from || !from->IsOpen() || !to || !to->IsOpen())
        return;
    C_SetFileSystemHierarchy hierarchy(root);
    if (!hierarchy.HasSetChildren(from))
        return;
    for (const std::shared_ptr<I_Set>& child : hierarchy.GetChildrenOfSet(from))
        hierarchy.MoveSet(child, to);
}

// Whether a file of the parked recording's folder is recording material, which stays and goes
// with the folder, rather than a file of the user's that must follow the converted set.
bool IsRecordingMaterial(const QFileInfo& file)
{
    const QString suffix = file.suffix().toLower();
    if (suffix == QLatin1String("set") || suffix == QLatin1String("trc") || suffix == QLatin1String("cine")
        || suffix == QLatin1String("attr") || suffix == QLatin1String("ims") || suffix == QLatin1String("scales"))
        return true;
    if (suffix != QLatin1String("xml"))
        return false;
    static const QRegularExpression patterns[] = {QRegularExpression(QStringLiteral("ADC.*-meta\\.xml")),
                                                  QRegularExpression(QStringLiteral("Camera.*.xml")),
                                                  QRegularExpression(QStringLiteral("ReaderConfiguration.xml"))};
    const QString name = file.fileName();
    for (const QRegularExpression& pattern : patterns)
        if (pattern.match(name).hasMatch())
            return true;
    return false;
}

// Moves the user's files of the parked folder into the new set's folder. A failed move is passed
// over: the file stays in the parked folder.
void MoveForeignFiles(const QString& parkedFolder, const QString& newFolder)
{
    const QFileInfoList files = QDir(parkedFolder).entryInfoList(QDir::Files | QDir::Hidden, QDir::Unsorted);
    for (const QFileInfo& file : files) {
        if (IsRecordingMaterial(file))
            continue;
        try {
            RTE::FileSystem::Rename(file.absoluteFilePath().toStdString(),
                                    (newFolder + QLatin1Char('/') + file.fileName()).toStdString());
        } catch (const std::exception&) {
        }
    }
}

} // namespace

void ConvertStreamSetToNativeSet(const std::string& setPath, RTE::I_ActivityControl& control,
                                 RTE::I_ActivityFeedback& feedback)
{
    C_SetFactory& factory = C_SetFactory::Instance();
    std::shared_ptr<Private::StreamSet> source = Private::CastToStreamSet(factory.Open(setPath));
    RTE_VERIFY(source != nullptr, "No stream set given.");

    const std::string sourceFile =
        setPath.size() >= 4 && setPath.compare(setPath.size() - 4, 4, ".set") == 0 ? setPath : setPath + ".set";
    const QFileInfo sourceInfo(QString::fromStdString(sourceFile));
    const QString base = sourceInfo.completeBaseName();
    const QString dir = sourceInfo.absolutePath();
    const std::string sourceName = C_SetUtilities::PrepareSetName(setPath);
    const std::string workName = (dir + QLatin1Char('/') + base + QStringLiteral("_temp_Conversion")).toStdString();
    const std::string parkedName = (dir + QLatin1Char('/') + QLatin1String(ParkedName)).toStdString();

    if (!CopySetFileWithoutSetIdentifier(sourceInfo, QFileInfo(QString::fromStdString(workName + ".set"))))
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Can not copy stream set parameter"));
    QDir().mkpath(QString::fromStdString(workName));
    C_Set* workSet = C_Set::Open(workName);
    // Buffer files go around the page cache: the conversion reads each byte once and writes it once.
    workSet->SetDirectIo(true);
    std::shared_ptr<I_Set> work(workSet);

    std::string error = "Remove error";
    try {
        for (unsigned index = 0; index < source->GetSize(); ++index) {
            if (control.IsCancelled())
                break;
            const std::unique_ptr<BufferApi::I_Buffer> buffer = source->LoadBuffer(index);
            work->StoreBuffer(buffer.get(), index);
            const int percent = int(double(index + 1) / double(source->GetSize()) * 100.0);
            feedback.SetProgress(percent);
            feedback.SetStatusText(QStringLiteral("Converting '%1': %2% finished")
                                       .arg(source->GetTitle(), QString::number(double(percent), 'g'))
                                       .toStdString());
        }
        if (source->HasFullDataTraces()) {
            const std::unique_ptr<BufferApi::I_Buffer> traces = source->LoadFullDataTraces();
            work->StoreFullDataTraces(traces.get());
        }
        // The converted buffers, their names included, are on the disk before the recording is
        // parked and removed: a power cut afterwards cannot take both.
        if (!control.IsCancelled())
            RTE::FileSystem::SyncFolder(workName);
    } catch (const std::exception& e) {
        const std::string text = e.what();
        work.reset();
        factory.Remove(workName, error);
        feedback.SetStatusText("Error during conversion");
        throw std::runtime_error(text);
    }

    if (control.IsCancelled()) {
        feedback.SetStatusText("Conversion canceled");
        work.reset();
        factory.Remove(workName, error);
        return;
    }

    feedback.SetStatusText("Tidying up the set directory");
    MoveChildren(dir, source, work);
    source.reset();
    work.reset();

    error.clear();
    // Moving the children back is best effort; what stays in the work set keeps it from removal.
    const auto moveChildrenBack = [&] {
        try {
            MoveChildren(dir, factory.Open(workName), factory.Open(setPath));
        } catch (const std::exception&) {
        }
    };
    if (!factory.Rename(setPath, ParkedName)) {
        // The factory leaves a folder renamed when the set file then could not be: the source's
        // folder is put back beside its set file, so that the recording opens as before.
        if (!RTE::FileSystem::Exists(sourceName) && RTE::FileSystem::Exists(parkedName)
            && RTE::FileSystem::Exists(sourceName + ".set") && !RTE::FileSystem::Exists(parkedName + ".set")) {
            try {
                RTE::FileSystem::Rename(parkedName, sourceName);
            } catch (const std::exception&) {
            }
        }
        moveChildrenBack();
        error = "Can not rename source set";
    } else if (!factory.Rename(workName, base.toStdString())) {
        // Meant to bring the parked source back; it names the parked set by its bare name, which
        // the factory does not find, so the source stays parked under "old_StreamSet".
        factory.Rename(ParkedName, setPath);
        moveChildrenBack();
        error = "Can not rename converted set.";
    } else {
        MoveForeignFiles(QString::fromStdString(parkedName), QString::fromStdString(sourceName));
        if (factory.Remove(parkedName, error)) {
            factory.NotifyOnDataChanged(setPath);
            feedback.SetStatusText("Conversion finished");
            return;
        }
    }

    // The work set goes, unless child sets are still in it (they could not be moved back): those
    // are the user's data, and a work set left behind only makes the next run stop at its start.
    bool holdsChildren = false;
    try {
        const std::shared_ptr<I_Set> left = factory.Open(workName);
        holdsChildren = left->IsOpen() && C_SetFileSystemHierarchy(QString::fromStdString(workName)).HasSetChildren(left);
    } catch (const std::exception&) {
        holdsChildren = true;
    }
    if (!holdsChildren) {
        std::string ignored;
        factory.Remove(workName, ignored);
    }
    RTE_THROW(RTE::Exception, QString::fromStdString(error));
}

} // namespace SetApi
