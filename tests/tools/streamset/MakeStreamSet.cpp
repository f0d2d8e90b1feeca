// Writes a small recording for the tool tests: setapi_make_stream_set <set name> intact|damaged.
// The intact one has two cameras of 12 images with masks, a scalar field, scales, attributes and
// traces; the damaged one has cameras of 12 and 10 images and its mask stream is gone.

#include "setapi/stream/StreamSetBuilder.h"

#include <RTE/Logger.h>

#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

int main(int argc, char** argv)
{
    if (argc != 3 || (std::string(argv[2]) != "intact" && std::string(argv[2]) != "damaged")) {
        std::cerr << "usage: setapi_make_stream_set <set name> intact|damaged\n";
        return 2;
    }
    RTE::Logging::SetLevel(RTE::LogLevel::Off);
    const std::string name = argv[1];
    const bool damaged = std::string(argv[2]) == "damaged";
    try {
        std::filesystem::remove_all(name);
        std::filesystem::remove(name + ".set");
        StreamSetTesting::StreamSetBuilder builder(name);
        builder.AddCamera(64, 48, 12);
        builder.AddCamera(32, 24, damaged ? 10 : 12);
        const QString mask = builder.AddMask(0, 64, 48, 12);
        builder.AddScalarField(1, QStringLiteral("Temperature"), SetApi::C_ImageWriter::Float,
                               RTE::S_Scale(0.5, 0.0, QStringLiteral("K"), QStringLiteral("Temperature")), 32, 24, 12);
        builder.AddScales(0, RTE::S_Scale(0.1, 0.0, QStringLiteral("mm"), QStringLiteral("X")),
                          RTE::S_Scale(0.1, 0.0, QStringLiteral("mm"), QStringLiteral("Y")), RTE::S_Scale());
        builder.AddFrameAttributes(0, 12);
        builder.AddGlobalAttributes(12);
        builder.AddTraces(2, 12, 8);
        builder.Finish();
        if (damaged)
            builder.RemoveStream(mask);
    } catch (const std::exception& e) {
        std::cerr << "setapi_make_stream_set: " << e.what() << '\n';
        return 1;
    }
    return 0;
}
