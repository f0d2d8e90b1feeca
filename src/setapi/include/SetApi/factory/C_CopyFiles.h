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
// writable whatever the source's permissions (where the file system allows it; a failure to
// change the permissions is not a failure of the copy).
//
// A failure of a file operation ends the run with result false, the system's text in GetError()
// and a line on the logger "Set" that begins "Error during file move source: '". A pattern that
// is no valid regular expression (such as "*.im7") is a caller's mistake: the run ends with
// result false and the regular-expression error in GetError(), the end of the run is signalled
// so that WaitUntilFinished returns, and then the exception is passed on to the thread's
// exception handler (the runtime's default one, which logs it on the logger "Thread").
//
// WaitUntilFinished on an object that has not been started since its last SetParameters returns
// the last result at once instead of waiting for a run that will never come. The destructor
// waits for a running copy to end; call Abort first to cut it short.

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
    // Records the outcome of a run and signals its end.
    void Finish(bool result, const std::string& error);

    std::string m_source;
    std::string m_pattern;
    std::string m_target;
    bool m_recursive = false;
    bool m_withProgress = false;
    std::atomic<bool> m_result{true};
    std::atomic<bool> m_abort{false};
    std::atomic<bool> m_started{false}; // Start was called since the last SetParameters
    std::string m_error;                // guarded by m_progressMutex
    RTE::Condition m_finished;
    std::atomic<int> m_totalFiles{0};
    std::atomic<unsigned long long> m_totalBytes{0};
    std::atomic<unsigned long long> m_copiedBytes{0};
    int m_copiedFiles = 0;
    std::string m_currentFile;
    mutable std::mutex m_progressMutex;
};

} // namespace SetApi
