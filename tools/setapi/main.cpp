// setapi: the command-line face of the library. Sub-commands: demo, record, info, export, ls, cp,
// mv, rm, rename, repair, verify, convert, rescale.

#include "Commands.h"

#include <RTE/Logger.h>

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <map>
#include <vector>

int main(int argc, char** argv)
{
    CLI::App app{"setapi: create, inspect and handle data sets"};
    app.require_subcommand(1);
    // A command line that is not understood is one line on standard error, in the form of every
    // other failure of the tool. Set before the sub-commands are added, which take it over.
    app.failure_message([](const CLI::App*, const CLI::Error& e) {
        return std::string("setapi: ") + e.what() + " (see --help)\n";
    });

    std::string logLevel = "off";
    app.add_option("--log", logLevel, "Library log messages on standard error: off, error, info or debug")
        ->check(CLI::IsMember({"off", "error", "info", "debug"}));

    std::string demoFolder = "setapi-demo";
    CLI::App* demo = app.add_subcommand("demo", "Create a small project of sets with synthetic images, reopen, verify and print it");
    demo->add_option("folder", demoFolder, "Folder to create the project in (default: setapi-demo)");

    std::string recordSet;
    SetApiTool::S_RecordOptions recordOptions;
    CLI::App* record = app.add_subcommand("record", "Record synthetic camera images into a new set, read them back and verify them");
    record->footer(
        "Each image holds one frame per camera: moving particle images on a noisy background, with\n"
        "scales and attributes. They go through the queued stream set writer into a stream set (with\n"
        "--plain through the set writer with two threads into a plain set). Afterwards the set is reopened\n"
        "through the factory and every image is checked bit for bit; the first image of camera 1 is\n"
        "written as <set>-camera1.png. On a terminal a progress line is shown. Ctrl-C aborts the\n"
        "recording: what was written stays on disk, and the exit code is 130. An existing set is refused.");
    record->add_option("set", recordSet, "The new set: its path without .set")->required();
    record->add_option("--cameras", recordOptions.cameras, "Frames per image, one per camera (default 2)");
    record->add_option("--size", recordOptions.size, "Camera image size WIDTHxHEIGHT (default 1024x1024)");
    record->add_option("--type", recordOptions.type, "Pixel type: word (12-bit values) or float (default word)");
    record->add_option("--images", recordOptions.images, "Number of images (default 100)");
    record->add_option("--queue", recordOptions.queue, "Queue places of the writer (default 16)");
    record->add_option("--pack", recordOptions.pack, "Packing: 0 none, 1 fast lossless, 2 zlib (default 0)");
    record->add_flag("--plain", recordOptions.plain, "A plain set of buffer files, through the set writer");

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

    std::string listFolder;
    bool listRecursive = false;
    CLI::App* list = app.add_subcommand("ls", "List the sets of a folder: name, type and number of buffers");
    list->footer("A set file that does not open is listed as \"(does not open)\".");
    list->add_option("folder", listFolder, "The folder")->required();
    list->add_flag("-r,--recursive", listRecursive, "Also list the child sets of each set, indented under it");

    std::string copyFrom, copyTo;
    SetApiTool::S_CopyOptions copyOptions;
    CLI::App* copy = app.add_subcommand("cp", "Copy a set: its set file and its folder");
    copy->footer(
        "By default the folders of child sets are copied too (--no-recursive copies only the set's own\n"
        "files), and a set that exists at the target is removed first (--keep-existing instead keeps\n"
        "its set files and replaces its other files). On a terminal a progress line is shown.\n"
        "Ctrl-C stops the copy: a target that did not exist before is removed again, and the exit code\n"
        "is 130. A failed copy removes such a target as well. The source is never changed.");
    copy->add_option("from", copyFrom, "The set to copy")->required();
    copy->add_option("to", copyTo, "The new set (its folder must exist)")->required();
    copy->add_flag("-r,--recursive,!--no-recursive", copyOptions.recursive,
                   "Copy the folders of child sets too (default); --no-recursive: only the set's own files");
    copy->add_flag("--keep-existing", copyOptions.keepExisting,
                   "Copy into an existing target set, keeping its set files (default: replace it)");

    std::string moveFrom, moveTo;
    CLI::App* move = app.add_subcommand("mv", "Move a set to another folder or name");
    move->footer("A set that exists at the target is not replaced: the move fails.");
    move->add_option("from", moveFrom, "The set to move")->required();
    move->add_option("to", moveTo, "Its new path (the folder must exist)")->required();

    std::string removePath;
    CLI::App* remove = app.add_subcommand("rm", "Remove a set: its set file and its folder with all it holds");
    remove->add_option("set", removePath, "The set")->required();

    std::string renamePath, renameNew;
    CLI::App* rename = app.add_subcommand("rename", "Rename a set within its folder");
    rename->add_option("set", renamePath, "The set")->required();
    rename->add_option("name", renameNew, "The new name, without a folder")->required();

    std::string repairPath;
    bool repairYes = false;
    CLI::App* repair = app.add_subcommand("repair", "Repair a damaged recording: drop the streams that cannot be read");
    repair->footer(
        "Prints what is damaged and what a repair does about it, then asks \"Repair? [y/N]\" on a terminal.\n"
        "Image streams always stay; images that not every camera recorded cannot come back. Without a\n"
        "terminal and without --yes nothing is changed and the exit code is 2.");
    repair->add_option("set", repairPath, "The recording")->required();
    repair->add_flag("-y,--yes", repairYes, "Repair without asking");

    std::string verifyPath;
    CLI::App* verify = app.add_subcommand("verify", "Load every buffer of a set and report the ones that fail");
    verify->footer("Ends with \"verified N buffers, M damaged\"; the exit code is 1 when anything is damaged.");
    verify->add_option("set", verifyPath, "The set")->required();

    std::string convertPath;
    CLI::App* convert = app.add_subcommand("convert", "Replace a recording (stream set) by a plain set of buffer files");
    convert->footer(
        "Child sets and the files of the recording's folder that are not recording material move to the\n"
        "new set. On a terminal a progress line is shown. Ctrl-C cancels: the recording stays as it was\n"
        "and the exit code is 130.");
    convert->add_option("set", convertPath, "The recording")->required();

    std::string rescalePath;
    std::vector<unsigned> rescaleFrames;
    std::vector<std::string> rescaleX, rescaleY, rescaleI;
    CLI::App* rescale = app.add_subcommand("rescale", "Replace the scales of a recording's frames");
    rescale->footer(
        "Each --frame takes the --x, --y and --i given in the same position: repeat the group for several\n"
        "frames, e.g. --frame 0 --x 0.05,0,mm --y 0.05,0,mm --i 1,0,counts --frame 1 --x ... A scale is\n"
        "FACTOR,OFFSET[,UNIT]; an axis left out gets factor 1, offset 0 for every frame, and so do frames\n"
        "not named. The images are not touched.");
    rescale->add_option("set", rescalePath, "The recording")->required();
    rescale->add_option("--frame", rescaleFrames, "A frame (camera) number, from 0")->required();
    rescale->add_option("--x", rescaleX, "x scale of the frame: FACTOR,OFFSET[,UNIT]");
    rescale->add_option("--y", rescaleY, "y scale of the frame: FACTOR,OFFSET[,UNIT]");
    rescale->add_option("--i", rescaleI, "Intensity scale of the frame: FACTOR,OFFSET[,UNIT]");

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
        if (*record)
            return SetApiTool::RunRecord(recordSet, recordOptions);
        if (*info)
            return SetApiTool::RunInfo(infoPath);
        if (*exportCommand)
            return SetApiTool::RunExport(exportSet, exportIndex, exportPicture, exportFrame);
        if (*list)
            return SetApiTool::RunList(listFolder, listRecursive, std::cout);
        if (*copy)
            return SetApiTool::RunCopy(copyFrom, copyTo, copyOptions);
        if (*move)
            return SetApiTool::RunMove(moveFrom, moveTo);
        if (*remove)
            return SetApiTool::RunRemove(removePath);
        if (*rename)
            return SetApiTool::RunRename(renamePath, renameNew);
        if (*repair)
            return SetApiTool::RunRepair(repairPath, repairYes);
        if (*verify)
            return SetApiTool::RunVerify(verifyPath, std::cout);
        if (*convert)
            return SetApiTool::RunConvert(convertPath);
        if (*rescale)
            return SetApiTool::RunRescale(
                rescalePath, SetApiTool::CollectFrameScales(rescaleFrames, rescaleX, rescaleY, rescaleI), std::cout);
    } catch (const std::exception& e) {
        std::cerr << "setapi: " << e.what() << '\n';
        return 1;
    } catch (...) {
        std::cerr << "setapi: unknown error\n";
        return 1;
    }
    return 1;
}
