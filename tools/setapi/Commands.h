#pragma once
// The sub-commands of the setapi tool. Each returns the process exit code and reports failures by
// throwing; main turns an exception into one line on standard error and exit code 1.

#include "RecordArguments.h"

#include <atomic>
#include <functional>
#include <ostream>
#include <string>

namespace SetApiTool {

// Creates a small project of sets under the folder through the factory, stores synthetic camera
// buffers into one of its image sets, reads them back through a freshly opened set and checks them
// bit for bit (a difference raises), then reopens the project and prints it.
int RunDemo(const std::string& folder);
// Prints what the set at the path is: name, title, type, size and its set file's parameters, then
// the buffer count, index range and the structure of the first buffer.
int RunInfo(const std::string& path);
// Writes plane 0 of frame `frame` of buffer `index` as a picture, PNG or TIFF by the extension of
// `picturePath` (see WritePicture). No set, no such buffer or frame, an unknown extension or an
// unwritable file raise, and leave no file behind.
int RunExport(const std::string& setPath, unsigned index, const std::string& picturePath, unsigned frame);

// Lists the sets of a folder, sorted by name, one per line: name, type, buffer count; a set file
// that does not open is marked "(does not open)". With `recursive` the child sets follow their
// parent, indented by two blanks per level. A missing folder raises.
int RunList(const std::string& folder, bool recursive, std::ostream& out);

// The exit code of a command stopped by Ctrl-C, as a shell reports a process ended by SIGINT.
constexpr int InterruptedExitCode = 130;

struct S_CopyOptions {
    bool recursive = true;     // copy the folders of child sets too
    bool keepExisting = false; // merge into an existing target instead of replacing it
};

struct S_CopyProgress;

// What a copy looks at while it runs. `interrupted` is polled every few milliseconds; once raised,
// the copy is stopped. `progress`, if set, receives the progress line. `onPoll` sees the figures at
// each poll, on the calling thread (a test raises the flag from it).
struct CopyWatch {
    const std::atomic<bool>& interrupted;
    std::ostream* progress = nullptr;
    std::function<void(const S_CopyProgress&)> onPoll;
};

// Copies a set through the factory and prints "copied <from> to <to> (<n> files, <m> MB)". An
// interrupt stops the copier, removes the target if this command began it, writes "setapi: copy
// aborted" to standard error and returns InterruptedExitCode. A failed copy also removes a target
// that this command began, then raises. The source is never changed; a source and a target that are
// the same set or lie inside each other are refused before anything is touched.
int RunCopy(const std::string& from, const std::string& to, const S_CopyOptions& options, const CopyWatch& watch);
// The same, with Ctrl-C routed to the interrupt flag, and a progress line on standard error when
// that is a terminal.
int RunCopy(const std::string& from, const std::string& to, const S_CopyOptions& options);

// What a recording looks at while it runs. `interrupted` is looked at before each image is handed
// to the writer (and between the images of the check); once raised, the recording is aborted.
// `progress`, if set, receives a live progress line. `onStored` is called on the recording thread
// after each image was handed over, with the number handed over so far (a test raises the flag
// from it).
struct RecordWatch {
    const std::atomic<bool>& interrupted;
    std::ostream* progress = nullptr;
    std::function<void(unsigned stored)> onStored;
};

// Records synthetic camera images (SyntheticRecording) into a new set at `set` (a path without
// ".set"): a stream set through the queued stream set writer, or with `plain` a plain set through
// the set writer with two threads. Then reopens the set through the factory, checks every image
// bit for bit against the images made again, writes the first image of camera 1 as PNG beside the
// set ("<set>-camera1.png") and prints what was recorded: images and bytes, time and throughput,
// the queue's high-water mark, whether the producer waited, the writer's errors, and "verified <n>
// images bit-exact". A bad option or an existing set raise before anything is made; a difference
// on reading back or an error of the writer raise after the report. An interrupt aborts the
// writer, keeps the partial recording on disk, says so on `err` and returns InterruptedExitCode.
int RunRecord(const std::string& set, const S_RecordOptions& options, const RecordWatch& watch, std::ostream& out,
              std::ostream& err);
// The same, with Ctrl-C routed to the interrupt flag, a progress line on standard error when that
// is a terminal, and the report on standard output.
int RunRecord(const std::string& set, const S_RecordOptions& options);

// Moves a set to a new path (another folder, another name). Refuses a target that exists.
int RunMove(const std::string& from, const std::string& to);
// Removes a set, set file and folder with all it holds.
int RunRemove(const std::string& path);
// Renames a set within its folder; `newName` is a bare name, without '/' or '\'.
int RunRename(const std::string& path, const std::string& newName);

} // namespace SetApiTool
