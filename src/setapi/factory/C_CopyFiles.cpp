// Copying the files of a folder on a thread of its own. The walk uses boost::filesystem; every
// operation that changes the file system (remove, copy, create a folder) goes through
// RTE::FileSystem, so that its failures can be provoked in tests.

#include <SetApi/factory/C_CopyFiles.h>

#include <RTE/Exception.h>
#include <RTE/BoostPath.h>
#include <RTE/FileSystem.h>
#include <RTE/Logger.h>

#include <QString>

#include <boost/filesystem.hpp>
#include <boost/regex.hpp>

#include <exception>

namespace SetApi {
namespace {

namespace fs = boost::filesystem;
using RTE::FromBoostPath;
using RTE::ToBoostPath;

boost::regex CompilePattern(const std::string& pattern)
{
    return boost::regex(pattern, boost::regex::perl | boost::regex::icase);
}

// A copy of a read-only file would be read-only too; the copy is the caller's to change. Where
// the file system keeps no such permission the call changes nothing, and its failure is ignored.
void MakeOwnerWritable(const std::string& path)
{
    boost::system::error_code ignored;
    fs::permissions(ToBoostPath(path), fs::add_perms | fs::owner_write, ignored);
}

void LogCopyFailure(const std::string& source, const std::string& target, const std::string& reason)
{
    RTE::C_Logger("Set").error("Error during file move source: '" + source + "' dest:'" + target + "'" + reason);
}

} // namespace

C_CopyFiles::C_CopyFiles() : RTE::Thread(RTE::CreateDefaultThreadExeptionHandler()) {}

C_CopyFiles::~C_CopyFiles()
{
    // The run uses this object's members, which go before the base class joins.
    Join();
}

void C_CopyFiles::SetParameters(const std::string& source, const std::string& pattern, const std::string& target,
                                bool recursive, bool withProgress)
{
    m_source = source;
    m_pattern = pattern;
    m_target = target;
    m_recursive = recursive;
    m_withProgress = withProgress;
    m_finished.Reset();
    m_result = true;
    m_started = false;
}

void C_CopyFiles::Start()
{
    m_started = true;
    try {
        Create(nullptr);
    } catch (...) {
        m_started = false;
        throw;
    }
}

void C_CopyFiles::Abort() { m_abort = true; }

bool C_CopyFiles::WaitUntilFinished()
{
    if (m_started)
        m_finished.Wait();
    return m_result;
}

bool C_CopyFiles::GetProgress(int& totalFiles, int& copiedFiles, unsigned long long& totalBytes,
                              unsigned long long& copiedBytes, std::string& currentFile)
{
    std::lock_guard<std::mutex> lock(m_progressMutex);
    // Asked first: once the end is signalled, the figures read below are the final ones.
    const bool finished = m_finished.IsSignaled();
    totalFiles = m_totalFiles;
    copiedFiles = m_copiedFiles;
    totalBytes = m_totalBytes;
    copiedBytes = m_copiedBytes;
    currentFile = m_currentFile;
    return finished;
}

std::string C_CopyFiles::GetError() const
{
    std::lock_guard<std::mutex> lock(m_progressMutex);
    return m_error;
}

void C_CopyFiles::Finish(bool result, const std::string& error)
{
    {
        std::lock_guard<std::mutex> lock(m_progressMutex);
        m_error = error;
    }
    m_result = result;
    m_finished.Signal();
}

void C_CopyFiles::ThreadFunction(void* /*argument*/)
{
    {
        std::lock_guard<std::mutex> lock(m_progressMutex);
        m_copiedFiles = 0;
        m_currentFile.clear();
        m_error.clear();
    }
    m_totalFiles = 0;
    m_totalBytes = 0;
    m_copiedBytes = 0;
    m_abort = false;

    bool result = false;
    std::string error;
    try {
        if (m_withProgress)
            UpdateNumberOfFiles(m_source, m_target, m_recursive);
        result = CopyFiles(m_source, m_target, m_recursive, error);
    } catch (const std::exception& e) {
        // Only a pattern that does not compile gets here. The waiter must not wait for ever; the
        // thread's exception handler still hears of it.
        Finish(false, e.what());
        throw;
    } catch (...) {
        Finish(false, "unknown exception");
        throw;
    }
    Finish(result, error);
}

bool C_CopyFiles::CopyFiles(const std::string& source, const std::string& target, bool recursive,
                            std::string& error)
{
    // Outside the handling below on purpose: a bad pattern is no file failure (see the header).
    const boost::regex pattern = CompilePattern(m_pattern);
    try {
        for (fs::directory_iterator entry(ToBoostPath(source)), end; entry != end; ++entry) {
            if (m_abort)
                return false;
            const std::string name = FromBoostPath(entry->path().filename());
            const std::string sourceEntry = source + "/" + name;
            const std::string targetEntry = target + "/" + name;
            if (!fs::is_regular_file(entry->status())) {
                if (!recursive)
                    continue;
                RTE::FileSystem::CreateDirectory(targetEntry);
                if (!CopyFiles(sourceEntry, targetEntry, recursive, error))
                    return false;
                continue;
            }
            if (!boost::regex_match(name, pattern))
                continue;
            if (m_withProgress) {
                std::lock_guard<std::mutex> lock(m_progressMutex);
                ++m_copiedFiles;
                m_currentFile = sourceEntry;
            }
            if (RTE::FileSystem::Exists(targetEntry))
                RTE::FileSystem::RemoveFile(targetEntry);
            RTE::FileSystem::CopyFile(sourceEntry, targetEntry, false);
            MakeOwnerWritable(targetEntry);
            if (m_withProgress)
                m_copiedBytes += fs::file_size(ToBoostPath(sourceEntry));
        }
        return true;
    } catch (const fs::filesystem_error& e) {
        LogCopyFailure(source, target, std::string(": ") + e.what());
        error = e.what();
    } catch (const RTE::FileError& e) {
        LogCopyFailure(source, target, std::string(": ") + e.what());
        error = e.what();
    } catch (...) {
        LogCopyFailure(source, target, "");
        error = "Error during file move source: '" + source + "' dest:'" + target + "'";
    }
    return false;
}

bool C_CopyFiles::UpdateNumberOfFiles(const std::string& source, const std::string& target, bool recursive)
{
    try {
        const boost::regex pattern = CompilePattern(m_pattern);
        for (fs::directory_iterator entry(ToBoostPath(source)), end; entry != end; ++entry) {
            const std::string name = FromBoostPath(entry->path().filename());
            if (!fs::is_regular_file(entry->status())) {
                if (recursive && !UpdateNumberOfFiles(source + "/" + name, target + "/" + name, recursive))
                    return false;
                continue;
            }
            if (!boost::regex_match(name, pattern))
                continue;
            ++m_totalFiles;
            m_totalBytes += fs::file_size(entry->path());
        }
        return true;
    } catch (const std::exception& e) {
        RTE::C_Logger("Set").error("UpdateNumberOfFiles " + source + " --> " + target + ": " + e.what());
    } catch (...) {
        RTE::C_Logger("Set").error("UpdateNumberOfFiles " + source + " --> " + target + ": unknown exception");
    }
    return false;
}

} // namespace SetApi
