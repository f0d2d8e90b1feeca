#include "Commands.h"
#include "Interrupt.h"
#include "ProgressLine.h"
#include "SetArguments.h"
#include "Terminal.h"

#include <SetApi/factory/C_CopyFiles.h>
#include <SetApi/factory/C_SetFactory.h>

#include <RTE/Exception.h>

#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>
#include <thread>

namespace SetApiTool {

namespace {

using Clock = std::chrono::steady_clock;

// How often the copier is asked for its figures and the interrupt flag is looked at, and how often
// the progress line is rewritten.
constexpr std::chrono::milliseconds PollPeriod(20);
constexpr std::chrono::milliseconds RefreshPeriod(200);

S_CopyProgress ProgressOf(SetApi::C_CopyFiles& copier, Clock::time_point start, bool& finished)
{
    S_CopyProgress progress;
    std::string currentFile;
    finished = copier.GetProgress(progress.totalFiles, progress.copiedFiles, progress.totalBytes,
                                  progress.copiedBytes, currentFile);
    progress.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return progress;
}

// Runs on the calling thread while the copier works: polls, shows the line, and on an interrupt
// stops the copier. The abort is repeated until the copier has ended, since an abort given before
// the copier's thread has come up is lost.
void Watch(SetApi::C_CopyFiles& copier, const CopyWatch& watch, bool& aborted, S_CopyProgress& last)
{
    const Clock::time_point start = Clock::now();
    std::unique_ptr<ProgressLine> line;
    if (watch.progress)
        line = std::make_unique<ProgressLine>(*watch.progress);
    // The first line waits a moment, until the copier has counted what it is to copy; a copy
    // done by then shows its final line only.
    Clock::time_point nextRefresh = start + RefreshPeriod;
    bool finished = false;
    for (;;) {
        last = ProgressOf(copier, start, finished);
        if (watch.onPoll)
            watch.onPoll(last);
        if (watch.interrupted.load()) {
            aborted = true;
            break;
        }
        if (line && (finished || Clock::now() >= nextRefresh)) {
            line->Show(FormatCopyProgress(last));
            nextRefresh = Clock::now() + RefreshPeriod;
        }
        if (finished)
            return;
        std::this_thread::sleep_for(PollPeriod);
    }
    for (;;) {
        copier.Abort();
        last = ProgressOf(copier, start, finished);
        if (finished)
            break;
        std::this_thread::sleep_for(PollPeriod);
    }
    if (line)
        line->Show(FormatCopyProgress(last));
}

std::string Megabytes(unsigned long long bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f MB", double(bytes) / 1e6);
    return text;
}

} // namespace

int RunCopy(const std::string& from, const std::string& to, const S_CopyOptions& options, const CopyWatch& watch)
{
    SetApi::C_SetFactory& factory = SetApi::C_SetFactory::Instance();
    const std::string source = SetNameOf(from);
    const std::string target = SetNameOf(to);
    RequireSet(from, source);
    RequireDistinctSets("copy", from, source, to, target);
    RequireParentFolder(to, target);

    const bool targetExisted = factory.Exists(target);
    bool aborted = false;
    S_CopyProgress last;
    const bool copied = factory.Copy(source, target, options.recursive, options.keepExisting,
                                     [&](SetApi::C_CopyFiles& copier) { Watch(copier, watch, aborted, last); });

    // An interrupt before or after the copier ran counts as well: the user asked to stop.
    aborted = aborted || watch.interrupted.load();
    if (aborted || !copied) {
        // A set this command began is taken away again; a set that was there before is left alone.
        std::string error;
        const bool leftBehind = !targetExisted && factory.Exists(target) && !factory.Remove(target, error);
        if (!aborted)
            RTE_THROW_MSG(RTE::Exception, "could not copy '" << from << "' to '" << to << "'");
        std::cerr << "setapi: copy aborted";
        if (leftBehind)
            std::cerr << "; the partial copy '" << to << "' could not be removed: " << error;
        std::cerr << '\n';
        return InterruptedExitCode;
    }
    std::cout << "copied " << from << " to " << to << " (" << last.copiedFiles
              << (last.copiedFiles == 1 ? " file, " : " files, ") << Megabytes(last.copiedBytes) << ")\n";
    return 0;
}

int RunCopy(const std::string& from, const std::string& to, const S_CopyOptions& options)
{
    ScopedInterruptHandler handler;
    CopyWatch watch{InterruptFlag(), nullptr, {}};
    if (StandardErrorIsTerminal())
        watch.progress = &std::cerr;
    return RunCopy(from, to, options, watch);
}

} // namespace SetApiTool
