#pragma once
// The command line of `setapi record` as given, and its check: what is recorded, how much, and
// through which writer. Every value is checked before anything is made on disk, and a bad one is
// refused with a message that names the option.

#include "SyntheticCamera.h"

#include <BufferApi/PackType.h>

#include <cstddef>
#include <string>

namespace SetApiTool {

struct S_RecordOptions {
    unsigned cameras = 2;
    std::string size = "1024x1024"; // WIDTHxHEIGHT
    std::string type = "word";      // word or float
    unsigned images = 100;
    unsigned queue = 16;            // queue places of the writer
    unsigned pack = 0;              // 0 none, 1 the fast lossless pack, 2 zlib
    bool plain = false;             // a plain set through the set writer with two threads
};

struct S_RecordSettings {
    S_SyntheticShape shape;
    unsigned images = 0;
    unsigned queue = 0;
    BufferApi::BufferPackType_t pack = BufferApi::BUFFER_PACK_NONE;
    bool plain = false;
};

constexpr unsigned MaxCameras = 64;
constexpr unsigned MaxImageSide = 65535;
constexpr unsigned MaxQueue = 100000;
// One image, all cameras, is at most 1 GiB, and the writer's queue with the images in the making
// at most 4 GiB: the queue is the memory budget of a recording, and a typo must not exhaust it.
constexpr std::size_t MaxImageBytes = std::size_t(1) << 30;
constexpr std::size_t MaxQueueBytes = std::size_t(4) << 30;

// "1024x768" (also with 'X') gives 1024 and 768. Anything else - a missing or empty side, a sign,
// blanks, a zero side or a side above MaxImageSide - raises RTE::Exception naming the text.
void ParseImageSize(const std::string& text, unsigned& width, unsigned& height);

// The checked settings, or RTE::Exception saying which option is wrong and why.
S_RecordSettings CheckRecordOptions(const S_RecordOptions& options);

} // namespace SetApiTool
