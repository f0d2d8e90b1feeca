#include <RTE/AtomicFileWrite.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <QRandomGenerator>
#include <QString>

#include <exception>

namespace RTE {

namespace {

// A hidden name beside the target that no other writer picks at the same time.
std::string TemporaryNameBeside(const std::string& target)
{
    const std::size_t separator = target.find_last_of('/');
    const std::size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
    const QString suffix = QString::number(QRandomGenerator::global()->generate(), 16);
    return target.substr(0, nameStart) + '.' + target.substr(nameStart) + '.' + suffix.toStdString() + ".part";
}

void RemoveQuietly(const std::string& path)
{
    try {
        if (FileSystem::Exists(path))
            FileSystem::RemoveFile(path);
    } catch (const std::exception&) {
        // A hidden leftover is all that can remain.
    }
}

} // namespace

void WriteFileAtomically(const std::string& path, const void* data, std::size_t size)
{
    const std::string target = FileSystem::FixPath(path);
    const std::string temporary = TemporaryNameBeside(target);
    try {
        // A direct file is durable on disk when Close returns: the new name never points at
        // bytes that a crash could still take away.
        std::unique_ptr<I_WritableFile> file = FileSystem::OpenForWriting(temporary, WriteMode::Direct);
        file->Append(data, size);
        file->Close();
        FileSystem::ReplaceFile(temporary, target);
    } catch (const std::exception& e) {
        RemoveQuietly(temporary);
        RTE_THROW_MSG(FileWriteError, "Writing '" << QString::fromStdString(target)
                                                  << "' failed, the file is left as it was: " << e.what());
    }
}

} // namespace RTE
