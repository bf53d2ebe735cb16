#include <cerrno>
#include <memory>

#include <fmt/format.h>

#include "app/rotation/DemoWall.h"
#include "cli/Commands.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

int WriteDemo(const std::string& folder, bool sync) {
    const auto wide = Utf8ToWide(folder);
    if (!wide || !CreateFolders(*wide)) {
        const std::string reason = wide ? SystemErrorText(errno) : "its name is not valid UTF-8";
        fmt::print(stderr, "trevolt-cli: the folder {} cannot be made{}{}\n", folder,
                   reason.empty() ? "" : ": ", reason);
        return kExitUsage;
    }
    const std::string problem = WriteDemoWall(*wide, true, sync);
    if (!problem.empty()) {
        fmt::print(stderr, "trevolt-cli: {}: {}\n", folder, problem);
        return kExitSomeFailed;
    }
    fmt::print("demo wall written to {}\n", folder);
    return kExitAllDone;
}

} // namespace

void AddDemoCommand(CLI::App& program, int& exitStatus) {
    const auto folder = std::make_shared<std::string>();
    CLI::App* command =
        program.add_subcommand("demo", "Write a small made-up wall of cabinets into a folder");
    command->add_option("FOLDER", *folder, "Folder for the cabinets, made when missing")
        ->required();
    const auto noSync = std::make_shared<bool>(false);
    command->add_flag("--no-sync", *noSync, kNoSyncHelp);
    command->callback([=, &exitStatus] { exitStatus = WriteDemo(*folder, !*noSync); });
}

} // namespace trevolt
