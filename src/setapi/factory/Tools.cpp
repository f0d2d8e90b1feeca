// Copying one buffer between sets and a set file without its type line.

#include <SetApi/factory/Tools.h>

#include <SetApi/set/I_FileBasedSet.h>
#include <SetApi/set/I_Set.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include <QFile>
#include <QStringConverter>
#include <QTextStream>

#include <exception>
#include <memory>

namespace SetApi {

void CopyBuffer(I_Set& source, unsigned sourceIndex, I_Set& target, unsigned targetIndex,
                CopyParameterValueSpec spec)
{
    RTE_VERIFY(source.IsOpen(), "Source set not valid");
    RTE_VERIFY(target.IsOpen(), "Destination set not valid");
    const auto* fileSource = dynamic_cast<const I_FileBasedSet*>(&source);
    auto* fileTarget = dynamic_cast<I_FileBasedSet*>(&target);
    if (fileSource && fileTarget) {
        fileTarget->CopyBufferFromSet(*fileSource, sourceIndex, targetIndex, spec);
        return;
    }
    const std::unique_ptr<BufferApi::I_Buffer> buffer = source.LoadBuffer(sourceIndex);
    target.StoreBuffer(buffer.get(), targetIndex);
}

bool CopySetFileWithoutSetIdentifier(const QFileInfo& source, const QFileInfo& target)
{
    RTE_VERIFY(source.absoluteFilePath() != target.absoluteFilePath(),
               "Source and target set file must not be the same!");
    RTE_VERIFY(source.exists(), "Source set file does not exists");
    RTE_VERIFY(source.isFile(), "sourceSetFile is not a file. Make sure you have created the QFileInfo object from "
                                "the set file path with the extension!");
    RTE_VERIFY(!target.exists(), "Target set file already exists");

    QFile in(source.absoluteFilePath());
    if (!in.open(QIODevice::ReadOnly))
        return false;
    QFile out(target.absoluteFilePath());
    if (!out.open(QIODevice::ReadWrite)) {
        in.close();
        return false;
    }

    // Latin-1 both ways: every byte of the source comes through unchanged, whatever the encoding.
    QTextStream lines(&in);
    lines.setEncoding(QStringConverter::Latin1);
    bool written = true;
    while (written && !lines.atEnd()) {
        const QString line = lines.readLine() + QLatin1Char('\n');
        if (line.trimmed().startsWith(QLatin1String("SetIdentifier")))
            continue;
        const QByteArray bytes = line.toLatin1();
        written = out.write(bytes) == bytes.size();
    }
    written = written && out.flush();
    out.close();
    if (!written || out.error() != QFileDevice::NoError) {
        try {
            RTE::FileSystem::RemoveFile(target.absoluteFilePath().toStdString());
        } catch (const std::exception&) {
            // Nothing more can be done; the caller learns of the failure from the result.
        }
        return false;
    }
    return true;
}

} // namespace SetApi
