#include "RecordArguments.h"

#include <RTE/Exception.h>

#include <cctype>

namespace SetApiTool {

namespace {

// Digits only, no sign and no blanks, at most MaxImageSide; false otherwise.
bool ParseSide(const std::string& text, unsigned& value)
{
    if (text.empty() || text.size() > 5)
        return false;
    unsigned long number = 0;
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
        number = number * 10 + unsigned(c - '0');
    }
    if (number == 0 || number > MaxImageSide)
        return false;
    value = unsigned(number);
    return true;
}

std::string Megabytes(std::size_t bytes)
{
    return std::to_string((bytes + 999999) / 1000000) + " MB";
}

} // namespace

void ParseImageSize(const std::string& text, unsigned& width, unsigned& height)
{
    const std::size_t x = text.find_first_of("xX");
    unsigned w = 0, h = 0;
    if (x == std::string::npos || !ParseSide(text.substr(0, x), w) || !ParseSide(text.substr(x + 1), h))
        RTE_THROW_MSG(RTE::Exception, "bad size '" << QString::fromStdString(text)
                                                   << "': expected WIDTHxHEIGHT with sides from 1 to " << MaxImageSide
                                                   << ", e.g. 1024x1024");
    width = w;
    height = h;
}

S_RecordSettings CheckRecordOptions(const S_RecordOptions& options)
{
    S_RecordSettings settings;
    if (options.cameras < 1 || options.cameras > MaxCameras)
        RTE_THROW_MSG(RTE::Exception, "--cameras must be from 1 to " << MaxCameras << ", not " << options.cameras);
    settings.shape.cameras = options.cameras;
    ParseImageSize(options.size, settings.shape.width, settings.shape.height);
    if (options.type == "word")
        settings.shape.type = BufferApi::DATATYPE_WORD;
    else if (options.type == "float")
        settings.shape.type = BufferApi::DATATYPE_FLOAT;
    else
        RTE_THROW_MSG(RTE::Exception, "--type must be word or float, not '" << QString::fromStdString(options.type)
                                                                           << "'");
    if (options.images < 1)
        RTE_THROW_MSG(RTE::Exception, "--images must be at least 1");
    settings.images = options.images;
    // A queue of 0 places would mean no limit for the stream set writer and a wait for ever for the
    // set writer; neither is a recording.
    if (options.queue < 1 || options.queue > MaxQueue)
        RTE_THROW_MSG(RTE::Exception, "--queue must be from 1 to " << MaxQueue << ", not " << options.queue);
    settings.queue = options.queue;
    if (options.pack > 2)
        RTE_THROW_MSG(RTE::Exception, "--pack must be 0 (none), 1 (fast) or 2 (zlib), not " << options.pack);
    settings.pack = BufferApi::BufferPackType_t(options.pack);
    settings.plain = options.plain;

    const std::size_t imageBytes = std::size_t(settings.shape.cameras) * settings.shape.width * settings.shape.height
                                   * BufferApi::GetDataTypeSize(settings.shape.type);
    if (imageBytes > MaxImageBytes)
        RTE_THROW_MSG(RTE::Exception, "an image of " << settings.shape.cameras << " cameras of "
                                                     << QString::fromStdString(options.size) << " would take "
                                                     << QString::fromStdString(Megabytes(imageBytes))
                                                     << "; at most " << QString::fromStdString(Megabytes(MaxImageBytes))
                                                     << " are allowed");
    // The queue, the image being written and the one being made.
    const std::size_t queueBytes = (std::size_t(settings.queue) + 2) * imageBytes;
    if (queueBytes > MaxQueueBytes)
        RTE_THROW_MSG(RTE::Exception, "a queue of " << settings.queue << " images of "
                                                    << QString::fromStdString(Megabytes(imageBytes))
                                                    << " would hold up to " << QString::fromStdString(Megabytes(queueBytes))
                                                    << "; at most " << QString::fromStdString(Megabytes(MaxQueueBytes))
                                                    << " are allowed: lower --queue or --size");
    return settings;
}

} // namespace SetApiTool
