// setapi: the command-line face of the library. Sub-commands: demo, info.

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
    CLI::App* demo = app.add_subcommand("demo", "Create a small project of sets, reopen it and print it");
    demo->add_option("folder", demoFolder, "Folder to create the project in (default: setapi-demo)");

    std::string infoPath;
    CLI::App* info = app.add_subcommand("info", "Print name, type, size and parameters of a set");
    info->add_option("set", infoPath, "The set (its name, or its .set file)")->required();

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
    } catch (const std::exception& e) {
        std::cerr << "setapi: " << e.what() << '\n';
        return 1;
    } catch (...) {
        std::cerr << "setapi: unknown error\n";
        return 1;
    }
    return 1;
}
