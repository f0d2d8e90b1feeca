// setapi convert: a recording replaced by a plain set, with a progress line and Ctrl-C.

#include "Commands.h"
#include "Interrupt.h"
#include "ProgressLine.h"
#include "SetArguments.h"
#include "Terminal.h"

#include <SetApi/factory/ConvertStreamSet.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/StreamSet.h>

#include <DataObjects/BufferStructureInformation.h>

#include <RTE/Exception.h>

#include <chrono>
#include <cstdio>
#include <iostream>

namespace SetApiTool {

namespace {

using Clock = std::chrono::steady_clock;

struct Control : RTE::I_ActivityControl {
    explicit Control(const std::atomic<bool>& flag) : interrupted(flag) {}
    bool IsCancelled() const override { return interrupted.load(); }
    const std::atomic<bool>& interrupted;
};

// Turns the conversion's percentages into a line with the rate and the time left.
struct Feedback : RTE::I_ActivityFeedback {
    Feedback(const ConvertWatch& watch, double totalBytes) : watch(watch), totalBytes(totalBytes)
    {
        if (watch.progress)
            line = std::make_unique<ProgressLine>(*watch.progress);
    }
    void SetProgress(double value) override
    {
        percent = value;
        if (watch.onProgress)
            watch.onProgress(value);
        if (line)
            line->Show(FormatConvertProgress(value, totalBytes, Seconds()));
    }
    void SetStatusText(const std::string& text) override { status = text; }
    double Seconds() const { return std::chrono::duration<double>(Clock::now() - start).count(); }

    const ConvertWatch& watch;
    double totalBytes;
    double percent = 0;
    std::string status;
    std::unique_ptr<ProgressLine> line;
    Clock::time_point start = Clock::now();
};

} // namespace

std::string FormatConvertProgress(double percent, double totalBytes, double seconds)
{
    const double done = totalBytes * percent / 100.0;
    char text[128];
    if (done <= 0 || seconds <= 0) {
        std::snprintf(text, sizeof text, "%.0f%%, -- MB/s, -- left", percent);
    } else {
        const double rate = done / seconds;
        const long left = long((totalBytes - done) / rate + 0.5);
        std::snprintf(text, sizeof text, "%.0f%%, %.1f MB/s, %ld:%02ld left", percent, rate / 1e6, left / 60, left % 60);
    }
    return text;
}

int RunConvert(const std::string& path, const ConvertWatch& watch, std::ostream& out, std::ostream& err)
{
    double totalBytes = 0;
    unsigned images = 0;
    {
        const std::shared_ptr<SetApi::I_Set> set = OpenExistingSet(path);
        if (!SetApi::Private::CastToStreamSet(set))
            RTE_THROW_MSG(RTE::Exception, "'" << path << "' is no recording (stream set): there is nothing to convert");
        images = set->GetSize();
        if (images > 0) {
            const DataObjects::BufferStructureInformation info = set->GetBufferStructureInformation(0);
            totalBytes = double(images) * info.frameCount * info.width * info.height * info.depth * 2.0;
        }
    }
    const std::string name = SetNameOf(path);
    Control control(watch.interrupted);
    Feedback feedback(watch, totalBytes);
    SetApi::ConvertStreamSetToNativeSet(name, control, feedback);
    if (feedback.line)
        feedback.line->Finish();
    if (feedback.status == "Conversion canceled") {
        err << "setapi: conversion canceled; '" << name << "' is the recording it was" << std::endl;
        return InterruptedExitCode;
    }
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.2f", feedback.Seconds());
    out << "converted '" << name << "' to a plain set of " << images << " buffers in " << seconds << " s" << std::endl;
    return 0;
}

int RunConvert(const std::string& path)
{
    ScopedInterruptHandler handler;
    ConvertWatch watch{InterruptFlag(), StandardErrorIsTerminal() ? &std::cerr : nullptr, {}};
    return RunConvert(path, watch, std::cout, std::cerr);
}

} // namespace SetApiTool
