#include <memory>

#include "app/rotation/DemoWall.h"
#include "cli/Commands.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/SharedOptions.h"
#include "cli/ShownText.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"

namespace trevolt {
namespace {

constexpr const char* kDemoNotes = R"(Examples:
  trevolt-cli demo wall
      writes one cabinet of each kind, to try the commands on

Exit states:
  0    the wall is written
  1    a file could not be written, or stands there
  2    wrong usage, or the folder cannot be made
  130  interrupted; what has its name is whole)";

struct SDemoOptions {
    std::string folder;
    bool overwrite = false;
    bool noSync = false;
};

int WriteDemo(const SDemoOptions& options) {
    const std::string& folder = options.folder;
    const std::wstring path = ParseFor("FOLDER", "a folder", folder, ParsePath);
    const std::atomic<bool>& interrupted = CatchInterrupts();
    const std::string problem =
        WriteDemoWall(path, options.overwrite, !options.noSync, interrupted);
    if (!problem.empty()) {
        Complain("{}: {}", folder, problem);
        if (interrupted)
            return kExitInterrupted;
        return IsFolder(path) ? kExitSomeFailed : kExitUsage;
    }
    PrintLine(stdout, "demo wall written to {}", folder);
    return kExitAllDone;
}

} // namespace

void AddDemoCommand(CLI::App& program, int& exitStatus) {
    const auto options = std::make_shared<SDemoOptions>();
    CLI::App& command =
        AddCommand(program, "demo", "Write a small made-up wall of cabinets into a folder",
                   kDemoNotes, exitStatus, [options] { return WriteDemo(*options); });
    COptionGroup(command, kPlaces)
        .AddPlace("FOLDER", "FOLDER", options->folder, "Folder for the cabinets, made when missing")
        .Required();
    AddOutputFlags(command, options->overwrite, options->noSync);
}

} // namespace trevolt
