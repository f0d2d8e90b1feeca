// A recording process killed with SIGKILL at many moments: before its set exists, while the
// configuration is being made, during the first image, after some images, at random times. What
// it leaves must open through the factory without a crash; every image the set offers must read
// back bit-exact; every image the writer had claimed complete must be offered; and cameras that
// got different numbers of images must show as damage. The killed program is
// setapi_recording_child (RecordingChild.cpp); its images are RecordingTesting's.

#include "RecordingImages.h"
#include "setapi/OperationDoubles.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/RepairCorruptStreamSet.h>
#include <SetApi/stream/StreamSet.h>

#include "support/TestSupport.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#ifndef SETAPI_RECORDING_CHILD
#error "SETAPI_RECORDING_CHILD must name the recording child program"
#endif

using RecordingTesting::CompareCameraFrame;
using SetApi::C_SetFactory;
using SetApi::I_Set;
using TestSupport::TempDir;

namespace {

struct Recording {
    const char* mode; // "direct" (BufferStreamWriter) or "queued" (StreamSetWriter)
    int compression;  // 0 raw, 1 "IMX"
    unsigned images;
    std::vector<std::pair<unsigned, unsigned>> cameras; // width, height
};

enum class Kill {
    AtStart,         // as soon as the process runs
    AtConfiguration, // as soon as "ReaderConfiguration.xml" exists
    AfterLines,      // after `lines` stored images were reported, and `delayMs` more
    AfterDelay,      // `delayMs` after the set was created
    Never            // the recording ends normally
};

struct Moment {
    Kill kill;
    unsigned lines = 0;
    unsigned delayMs = 0;
};

std::string Describe(const Recording& recording, const Moment& moment)
{
    std::ostringstream text;
    text << recording.mode << " compression " << recording.compression << ", " << recording.images << " images of";
    for (const auto& camera : recording.cameras)
        text << ' ' << camera.first << 'x' << camera.second;
    text << "; kill ";
    switch (moment.kill) {
    case Kill::AtStart: text << "at start"; break;
    case Kill::AtConfiguration: text << "when the configuration exists"; break;
    case Kill::AfterLines: text << "after " << moment.lines << " images reported + " << moment.delayMs << " ms"; break;
    case Kill::AfterDelay: text << moment.delayMs << " ms after creation"; break;
    case Kill::Never: text << "never"; break;
    }
    return text.str();
}

// What the child said on standard output.
struct Report {
    bool created = false;
    bool done = false;
    unsigned stored = 0; // "complete <i>" or "queued <i>" lines
};

void TakeLines(QProcess& child, Report& report)
{
    while (child.canReadLine()) {
        const QByteArray line = child.readLine().trimmed();
        if (line == "created")
            report.created = true;
        else if (line == "done")
            report.done = true;
        else if (line.startsWith("complete ") || line.startsWith("queued "))
            ++report.stored;
    }
}

// Reads lines until `enough` holds or the child has ended. The time limit only keeps a broken
// child from hanging the test.
template <class Predicate>
void ReadUntil(QProcess& child, Report& report, Predicate enough)
{
    for (;;) {
        TakeLines(child, report);
        if (enough(report))
            return;
        if (!child.waitForReadyRead(60000))
            return;
    }
}

// Runs one recording, kills it at the moment, and returns what it reported.
Report RunAndKill(const Recording& recording, const Moment& moment, const std::string& name, std::string& errors)
{
    QStringList arguments{QString::fromLatin1(recording.mode), QString::fromStdString(name),
                          QString::number(recording.compression), QString::number(recording.images)};
    for (const auto& camera : recording.cameras)
        arguments << QStringLiteral("%1x%2").arg(camera.first).arg(camera.second);
    QProcess child;
    child.setProgram(QStringLiteral(SETAPI_RECORDING_CHILD));
    child.setArguments(arguments);
    child.start(QIODevice::ReadOnly);
    Report report;
    if (!child.waitForStarted(60000)) {
        errors = "could not start " SETAPI_RECORDING_CHILD;
        return report;
    }
    const QString configuration = QString::fromStdString(name + "/ReaderConfiguration.xml");
    switch (moment.kill) {
    case Kill::AtStart: break;
    case Kill::AtConfiguration:
        while (!QFileInfo::exists(configuration) && !child.waitForFinished(0))
            std::this_thread::yield();
        break;
    case Kill::AfterLines:
        ReadUntil(child, report, [&](const Report& r) { return r.created && r.stored >= moment.lines; });
        std::this_thread::sleep_for(std::chrono::milliseconds(moment.delayMs));
        break;
    case Kill::AfterDelay:
        ReadUntil(child, report, [](const Report& r) { return r.created; });
        std::this_thread::sleep_for(std::chrono::milliseconds(moment.delayMs));
        break;
    case Kill::Never: ReadUntil(child, report, [](const Report& r) { return r.done; }); break;
    }
    if (moment.kill != Kill::Never)
        child.kill(); // SIGKILL: no destructor, no flush, no close runs in the child
    child.waitForFinished(60000);
    // Lines written before the kill are still in the pipe.
    TakeLines(child, report);
    const QByteArray rest = child.readAllStandardOutput();
    if (!rest.isEmpty())
        errors += "unterminated output: " + rest.toStdString() + "\n";
    const QByteArray standardError = child.readAllStandardError();
    if (!standardError.isEmpty())
        errors += "child: " + standardError.toStdString();
    if (moment.kill == Kill::Never && (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0))
        errors += "child failed with exit code " + std::to_string(child.exitCode()) + "\n";
    return report;
}

void CheckRemains(const Recording& recording, const Moment& moment, const std::string& name, const Report& report)
{
    // Opening must survive whatever the kill left; the factory answers with a set or a null set.
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
    ASSERT_NE(set, nullptr);
    const bool direct = std::string(recording.mode) == "direct";
    if (!set->IsOpen()) {
        // Only a recording killed before its configuration was complete may fail to open, and then
        // no image was claimed complete.
        EXPECT_FALSE(direct && report.stored > 0) << report.stored << " images were reported complete";
        EXPECT_NE(moment.kill, Kill::Never);
        return;
    }
    const std::shared_ptr<SetApi::Private::StreamSet> streamSet = SetApi::Private::CastToStreamSet(set);
    ASSERT_NE(streamSet, nullptr);
    const auto& states = streamSet->GetCorruptionStates();
    const unsigned offered = set->GetSize();
    EXPECT_EQ(offered, states.minImageCount);
    EXPECT_LE(offered, recording.images);
    ASSERT_EQ(states.imageCounts.size(), recording.cameras.size());
    const auto [fewest, most] = std::minmax_element(states.imageCounts.begin(), states.imageCounts.end());
    EXPECT_EQ(*most, states.maxImageCount);
    if (*fewest != *most) {
        EXPECT_TRUE(streamSet->IsCorrupt()) << "cameras hold " << *fewest << " and " << *most << " images";
    }
    if (direct) {
        // Store returning is the claim that the image is whole; the image in flight may be whole
        // too, if the kill came between its Store and the report.
        EXPECT_GE(offered, report.stored);
        EXPECT_LE(offered, report.stored + 1);
        // An image is complete when its attribute records are, which are written last. When no
        // frame stream holds more than the images claimed complete, no stream may be short. (A
        // recording without images counts as damaged: its attribute streams open with the first.)
        if (report.stored > 0 && states.maxImageCount <= report.stored) {
            EXPECT_FALSE(streamSet->IsCorrupt())
                << "attribute streams short: global " << states.globalAttributesCorrupt << ", frames "
                << states.corruptAttributeFrames.size() << "; scales " << states.scalesCorrupt;
        }
    }
    if (moment.kill == Kill::Never) {
        EXPECT_TRUE(report.done);
        EXPECT_EQ(offered, recording.images);
        EXPECT_FALSE(streamSet->IsCorrupt());
    }
    for (unsigned i = 0; i < offered; ++i) {
        std::unique_ptr<BufferApi::I_Buffer> buffer;
        try {
            buffer = set->LoadBuffer(i);
        } catch (const std::exception& e) {
            ADD_FAILURE() << "image " << i << " of " << offered << " offered does not load: " << e.what();
            continue;
        }
        for (unsigned c = 0; c < recording.cameras.size(); ++c)
            EXPECT_EQ(CompareCameraFrame(*buffer, c, recording.cameras[c].first, recording.cameras[c].second, i), "");
    }
}

// The files of the folder with their sizes.
std::vector<std::pair<std::string, qint64>> Listing(const std::string& folder)
{
    std::vector<std::pair<std::string, qint64>> files;
    for (const QFileInfo& file : QDir(QString::fromStdString(folder)).entryInfoList(QDir::Files, QDir::Name))
        files.emplace_back(file.fileName().toStdString(), file.size());
    return files;
}

// A repair that is told yes makes what a kill left consistent: no stream is reported damaged any
// more, only images that not every camera completed may be missing; every image all cameras
// completed still reads back bit-exact; and a second repair changes no stream.
void CheckRepair(const Recording& recording, const std::string& name)
{
    if (!C_SetFactory::Instance().Open(name)->IsOpen())
        return;
    OperationTesting::YesDialog dialog;
    const SetApi::RepairCorruptStreamSetState state = SetApi::RepairCorruptStreamSet(C_SetFactory::Instance().Open(name), dialog);
    ASSERT_NE(state, SetApi::RepairCorruptStreamSetState::RepairFailed) << dialog.failure;
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(name);
    ASSERT_TRUE(set->IsOpen());
    const std::shared_ptr<SetApi::Private::StreamSet> streamSet = SetApi::Private::CastToStreamSet(set);
    const auto& states = streamSet->GetCorruptionStates();
    EXPECT_EQ(streamSet->IsCorrupt(), states.minImageCount != states.maxImageCount);
    EXPECT_EQ(streamSet->HasBeenRepaired(), state == SetApi::RepairCorruptStreamSetState::Repaired);
    for (unsigned i = 0; i < set->GetSize(); ++i) {
        const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(i);
        for (unsigned c = 0; c < recording.cameras.size(); ++c)
            EXPECT_EQ(CompareCameraFrame(*buffer, c, recording.cameras[c].first, recording.cameras[c].second, i), "");
    }
    const auto before = Listing(name);
    const unsigned size = set->GetSize();
    OperationTesting::YesDialog again;
    SetApi::RepairCorruptStreamSet(C_SetFactory::Instance().Open(name), again);
    auto after = Listing(name);
    // The configuration is written anew when images are missing; the streams stay as they were.
    const auto withoutConfiguration = [](std::vector<std::pair<std::string, qint64>> files) {
        files.erase(std::remove_if(files.begin(), files.end(),
                                   [](const auto& file) { return file.first == "ReaderConfiguration.xml"; }),
                    files.end());
        return files;
    };
    EXPECT_EQ(withoutConfiguration(after), withoutConfiguration(before));
    EXPECT_EQ(C_SetFactory::Instance().Open(name)->GetSize(), size);
}

} // namespace

TEST(RecordingCrash, WhatAKilledRecordingLeavesOpensAndReadsBackBitExact)
{
    const std::vector<Recording> recordings = {
        {"direct", 0, 40, {{256, 200}, {256, 200}}},
        {"direct", 1, 12, {{256, 200}, {1024, 1024}, {320, 240}}},
        {"direct", 0, 6, {{1024, 1024}, {1024, 1024}, {1024, 1024}, {1024, 1024}}},
        {"queued", 1, 10, {{1024, 1024}, {256, 200}}},
        {"queued", 0, 30, {{256, 200}, {256, 200}, {256, 200}}},
    };
    // A fixed seed: the kill times differ from run to run only by the machine's timing.
    std::mt19937 random(20240611u);
    unsigned runs = 0;
    for (const Recording& recording : recordings) {
        std::vector<Moment> moments = {
            {Kill::AtStart},       {Kill::AtConfiguration}, {Kill::AfterLines, 0, 0}, {Kill::AfterLines, 1, 0},
            {Kill::AfterLines, 3, 0}, {Kill::AfterLines, 2, 2}, {Kill::Never},
        };
        for (int k = 0; k < 2; ++k)
            moments.push_back({Kill::AfterDelay, 0, std::uniform_int_distribution<unsigned>(0, 120)(random)});
        for (const Moment& moment : moments) {
            SCOPED_TRACE(Describe(recording, moment));
            TempDir dir;
            const std::string name = dir / "Killed";
            std::string errors;
            const Report report = RunAndKill(recording, moment, name, errors);
            EXPECT_EQ(errors, "");
            CheckRemains(recording, moment, name, report);
            CheckRepair(recording, name);
            ++runs;
        }
    }
    EXPECT_GE(runs, 30u);
}
