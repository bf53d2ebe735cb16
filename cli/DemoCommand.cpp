#include <cerrno>
#include <memory>

#include "app/rotation/DemoWall.h"
#include "cli/Commands.h"
#include "cli/OptionGroup.h"
#include "cli/OptionValues.h"
#include "cli/ShownText.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"

namespace trevolt {
namespace {

int WriteDemo(const std::string& folder, bool replaces, bool sync) {
    const std::wstring path = ParseFor("FOLDER", "a folder", folder, ParsePath);
    if (!CreateFolders(path)) {
        const std::string reason = SystemErrorText(errno);
        Complain("the folder {} cannot be made{}{}", folder, reason.empty() ? "" : ": ", reason);
        return kExitUsage;
    }
    const std::string problem = WriteDemoWall(path, replaces, sync);
    if (!problem.empty()) {
        Complain("{}: {}", folder, problem);
        return kExitSomeFailed;
    }
    PrintLine(stdout, "demo wall written to {}", folder);
    return kExitAllDone;
}

} // namespace

void AddDemoCommand(CLI::App& program, int& exitStatus) {
    const auto folder = std::make_shared<std::string>();
    CLI::App* command =
        program.add_subcommand("demo", "Write a small made-up wall of cabinets into a folder");
    command->add_option("FOLDER", *folder, "Folder for the cabinets, made when missing")
        ->type_name("FOLDER")
        ->group("Places")
        ->required();
    const auto overwrite = std::make_shared<bool>(false);
    const auto noSync = std::make_shared<bool>(false);
    COptionGroup outputs(*command, "Outputs");
    outputs.AddFlag("--overwrite", *overwrite, kOverwriteHelp);
    outputs.AddFlag("--no-sync", *noSync, kNoSyncHelp);
    command->callback([=, &exitStatus] { exitStatus = WriteDemo(*folder, *overwrite, !*noSync); });
}

} // namespace trevolt
