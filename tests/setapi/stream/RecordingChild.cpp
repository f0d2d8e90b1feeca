// A recording process for the crash test, which kills it with SIGKILL at chosen moments and then
// checks what a reader makes of the remains. Built as its own program (setapi_recording_child);
// inside the test program this file compiles to nothing.
//
//   setapi_recording_child direct|queued <set name> <compression> <images> <width>x<height>...
//
// One <width>x<height> per camera; image i of camera c is RecordingTesting::MakeCameraImage's.
// "direct" stores through a BufferStreamWriter and prints "complete <i>" once Store of image i
// has returned, which is the writer's claim that the image is whole in the streams. "queued"
// stores through a StreamSetWriter and prints "queued <i>" once Store has returned (the image may
// still be in the queue), and "closed" after Close. Both print "created" once the set exists and
// "done" at a normal end. Lines are flushed at once, so the parent sees each before the next step.

#ifdef SETAPI_RECORDING_CHILD_MAIN

#include "RecordingImages.h"

#include <SetApi/set/I_Set.h>
#include <SetApi/stream/BufferStreamWriter.h>
#include <SetApi/stream/StreamSetWriter.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <QString>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace {

void Say(const std::string& line)
{
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

int Usage()
{
    std::fputs("usage: setapi_recording_child direct|queued <set name> <compression> <images> <width>x<height>...\n",
               stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 6)
        return Usage();
    const std::string mode = argv[1];
    const QString name = QString::fromLocal8Bit(argv[2]);
    const auto compression = static_cast<BufferApi::BufferPackType_t>(std::atoi(argv[3]));
    const unsigned images = static_cast<unsigned>(std::atoi(argv[4]));
    std::vector<unsigned> widths, heights;
    for (int a = 5; a < argc; ++a) {
        unsigned w = 0, h = 0;
        if (std::sscanf(argv[a], "%ux%u", &w, &h) != 2 || w == 0 || h == 0)
            return Usage();
        widths.push_back(w);
        heights.push_back(h);
    }
    if (mode != "direct" && mode != "queued")
        return Usage();
    // The parent reads standard output only; keep the log quiet.
    RTE::Logging::SetLevel(RTE::LogLevel::Error);
    const auto cameras = static_cast<unsigned>(widths.size());

    try {
        if (mode == "direct") {
            SetApi::BufferStreamWriter writer(
                name,
                static_cast<SetApi::I_Set::E_SetType>(SetApi::I_Set::SET_TYPE_RECORDING | SetApi::I_Set::SET_TYPE_IMAGE),
                compression);
            Say("created");
            for (unsigned i = 0; i < images; ++i) {
                const auto buffer = RecordingTesting::MakeCameraImage(cameras, widths.data(), heights.data(), i);
                writer.Store(buffer.get());
                Say("complete " + std::to_string(i));
            }
        } else {
            SetApi::StreamSetWriter writer(4);
            writer.Create(name, compression);
            Say("created");
            for (unsigned i = 0; i < images; ++i) {
                std::shared_ptr<const BufferApi::I_Buffer> buffer =
                    RecordingTesting::MakeCameraImage(cameras, widths.data(), heights.data(), i);
                writer.Store(buffer, i);
                Say("queued " + std::to_string(i));
            }
            writer.Close();
            if (writer.IsError()) {
                std::fputs(("error " + writer.GetErrorText() + "\n").c_str(), stderr);
                return 1;
            }
            Say("closed");
        }
    } catch (const std::exception& e) {
        std::fputs((std::string("error ") + e.what() + "\n").c_str(), stderr);
        return 1;
    }
    Say("done");
    return 0;
}

#endif
