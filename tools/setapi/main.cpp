// setapi: the command-line face of the library. Sub-commands: demo, info, export.

#include "Commands.h"

#include <RTE/Logger.h>

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <map>

int main(int argc, char** argv)
{
    CLI::App app{"setapi: create, inspect and handle data sets"};
    app.require_subcommand(1);

    std::string logLevel = "off";
    app.add_option("--log", logLevel, "Library log messages on standard error: off, error, info or debug")
        ->check(CLI::IsMember({"off", "error", "info", "debug"}));

    std::string demoFolder = "setapi-demo";
    CLI::App* demo = app.add_subcommand("demo", "Create a small project of sets with synthetic images, reopen, verify and print it");
    demo->add_option("folder", demoFolder, "Folder to create the project in (default: setapi-demo)");

    std::string infoPath;
    CLI::App* info = app.add_subcommand("info", "Print name, type, size, parameters and buffer structure of a set");
    info->add_option("set", infoPath, "The set (its name, or its .set file)")->required();

    std::string exportSet, exportPicture;
    unsigned exportIndex = 0, exportFrame = 0;
    CLI::App* exportCommand = app.add_subcommand("export", "Write one frame of a buffer as a PNG or TIFF picture");
    exportCommand->footer(
        "PNG: 8-bit grey, windowed linearly from the frame's smallest to its largest valid value; masked-out\n"
        "and NaN pixels take no part and are black; a constant frame is mid-grey.\n"
        "TIFF: the frame's own element type (8/16/32-bit integers, 32/64-bit floats).\n"
        "Colour frames become 8-bit RGB in both. Only plane 0 of a frame of depth > 1 is written; a vector\n"
        "frame gives its first component. The file appears complete or not at all.");
    exportCommand->add_option("set", exportSet, "The set (its name, or its .set file)")->required();
    exportCommand->add_option("index", exportIndex, "Index of the buffer")->required();
    exportCommand->add_option("picture", exportPicture, "The file to write: *.png, *.tif or *.tiff")->required();
    exportCommand->add_option("--frame", exportFrame, "Frame of the buffer (default 0)");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    }

    static const std::map<std::string, RTE::LogLevel> levels = {{"off", RTE::LogLevel::Off},
                                                                {"error", RTE::LogLevel::Error},
                                                                {"info", RTE::LogLevel::Info},
                                                                {"debug", RTE::LogLevel::Debug}};
    RTE::Logging::SetLevel(levels.at(logLevel));

    try {
        if (*demo)
            return SetApiTool::RunDemo(demoFolder);
        if (*info)
            return SetApiTool::RunInfo(infoPath);
        if (*exportCommand)
            return SetApiTool::RunExport(exportSet, exportIndex, exportPicture, exportFrame);
    } catch (const std::exception& e) {
        std::cerr << "setapi: " << e.what() << '\n';
        return 1;
    } catch (...) {
        std::cerr << "setapi: unknown error\n";
        return 1;
    }
    return 1;
}
