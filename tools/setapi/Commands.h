#pragma once
// The sub-commands of the setapi tool. Each returns the process exit code and reports failures by
// throwing; main turns an exception into one line on standard error and exit code 1.

#include "RecordArguments.h"

#include <RTE/Scale.h>

#include <atomic>
#include <functional>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

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

// The exit code of a command that the user declined, or that could not ask and was not told yes.
constexpr int DeclinedExitCode = 2;

// How `repair` gets its answer: `yes` answers yes at once; otherwise it asks on `in` when `ask`
// (standard input is a terminal), and declines when it cannot ask.
struct S_RepairAnswer {
    bool yes = false;
    bool ask = false;
};

// Repairs a damaged recording: prints each damage and each consequence of the repair, asks, and
// repairs. An intact recording is left alone ("intact: nothing to repair"). Declined: exit code
// DeclinedExitCode and nothing changed. A set that is no recording, or a failed repair, raises.
int RunRepair(const std::string& path, const S_RepairAnswer& answer, std::istream& in, std::ostream& out);
// The same on the terminal: asks when standard input is one.
int RunRepair(const std::string& path, bool yes);

// Loads every buffer of a set of any kind, prints each failure with its reason ("buffer <i>:
// <text naming file, image and plane>"), for a recording its state, and "verified <n> buffers, <m>
// damaged". Exit code 1 when a buffer failed or a recording's streams are damaged. A recording
// that ended before its first image verifies as 0 buffers.
int RunVerify(const std::string& path, std::ostream& out);

// What a conversion looks at while it runs: `interrupted` is polled before every buffer and stops
// the conversion, which then leaves the recording as it was. `progress`, if set, gets a progress
// line; `onProgress` sees every percentage (a test raises the flag from it).
struct ConvertWatch {
    const std::atomic<bool>& interrupted;
    std::ostream* progress = nullptr;
    std::function<void(double percent)> onProgress;
};
// "40%, 812.3 MB/s, 0:02 left" ("--" while nothing is done).
std::string FormatConvertProgress(double percent, double totalBytes, double seconds);
// Replaces a recording by a plain set of the same name, with its child sets and the user's files
// ("converted '<name>' to a plain set of <n> buffers"). An interrupt cancels: the recording stays
// as it was, "setapi: conversion canceled" goes to `err`, exit code InterruptedExitCode. A set
// that is no recording, or a failed conversion, raises.
int RunConvert(const std::string& path, const ConvertWatch& watch, std::ostream& out, std::ostream& err);
// The same, with Ctrl-C routed to the interrupt flag and a progress line on a terminal.
int RunConvert(const std::string& path);

// New scales for one frame of a recording.
struct S_FrameScales {
    unsigned frame = 0;
    RTE::S_Scale x, y, intensity;
};
// "FACTOR,OFFSET[,UNIT]" as a scale; anything else raises with a message that shows the form.
RTE::S_Scale ParseScale(const std::string& text);
// The records of the command line: each of --x, --y, --i is given once per --frame, in the same
// order, or not at all (identity). Raises before anything is touched when that does not hold.
std::vector<S_FrameScales> CollectFrameScales(const std::vector<unsigned>& frames, const std::vector<std::string>& x,
                                              const std::vector<std::string>& y, const std::vector<std::string>& i);
// Replaces every scale of the recording by the records (a frame without one reads factor 1,
// offset 0) and prints them. A frame the recording does not have, or a set that is no recording,
// raises before anything is touched.
int RunRescale(const std::string& path, const std::vector<S_FrameScales>& records, std::ostream& out);

} // namespace SetApiTool
