#pragma once
// Copies the files of one folder into another on a thread of its own: a regular-expression filter
// on file names, optional recursion into sub-folders, optional progress figures that any thread
// may poll, and an abort that the worker honours between two files.
//
//   C_CopyFiles copier;
//   copier.SetParameters(from, ".*", to, true, true);
//   copier.Start();
//   ... copier.GetProgress(...) / copier.Abort() ...
//   bool ok = copier.WaitUntilFinished();   // false after an abort, with GetError() empty
//
// Files already copied stay where they are when a run fails or is aborted. A target file that
// exists is removed first, so a read-only target does not stop the copy, and the copy is made
// writable whatever the source's permissions.

#include <SetApi/Export.h>

#include <RTE/Condition.h>
#include <RTE/Thread.h>

#include <atomic>
#include <mutex>
#include <string>

namespace SetApi {

class SETAPI_API C_CopyFiles : public RTE::Thread {
public:
    C_CopyFiles();
    ~C_CopyFiles() override;

    // Stores the five parameters for the next run, re-arms the end-of-run signal and sets the
    // result to true. `pattern` is a Perl regular expression matched case-insensitively against
    // the whole file name; it is not applied to folders. Must not be called while a run is on.
    void SetParameters(const std::string& source, const std::string& pattern, const std::string& target,
                       bool recursive, bool withProgress);
    // Starts a run on a new thread.
    void Start();
    // Asks the running copy to stop before its next file; does not wait. An abort given before
    // the thread has come up is lost, since each run starts by clearing the flag.
    void Abort();
    // Waits for the end of the run and returns its result.
    bool WaitUntilFinished();
    // The figures of the running or last run; returns whether that run has ended. The totals are
    // counted before the copy starts (with progress on only) and are advisory.
    bool GetProgress(int& totalFiles, int& copiedFiles, unsigned long long& totalBytes,
                     unsigned long long& copiedBytes, std::string& currentFile);
    // The text of the last failure; empty after success or an abort.
    std::string GetError() const;

protected:
    void ThreadFunction(void* argument) override;

private:
    bool CopyFiles(const std::string& source, const std::string& target, bool recursive, std::string& error);
    bool UpdateNumberOfFiles(const std::string& source, const std::string& target, bool recursive);

    std::string m_source;
    std::string m_pattern;
    std::string m_target;
    bool m_recursive = false;
    bool m_withProgress = false;
    std::atomic<bool> m_result{true};
    std::atomic<bool> m_abort{false};
    std::string m_error;
    RTE::Condition m_finished;
    std::atomic<int> m_totalFiles{0};
    std::atomic<unsigned long long> m_totalBytes{0};
    std::atomic<unsigned long long> m_copiedBytes{0};
    int m_copiedFiles = 0;
    std::string m_currentFile;
    mutable std::mutex m_progressMutex;
};

} // namespace SetApi
