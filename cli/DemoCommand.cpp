#include <cerrno>
#include <memory>

#include <fmt/format.h>

#include "app/rotation/DemoWall.h"
#include "cli/Commands.h"
#include "platform/FileSystem.h"
#include "platform/SystemError.h"
#include "trevolt/TransferProblems.h"
#include "trevolt/Utf8.h"

namespace trevolt {
namespace {

int WriteDemo(const std::string& folder) {
    const auto wide = Utf8ToWide(folder);
    if (!wide || !CreateFolders(*wide)) {
        const std::string reason = wide ? SystemErrorText(errno) : "its name is not valid UTF-8";
        fmt::print(stderr, "trevolt-cli: the folder {} cannot be made{}{}\n", folder,
                   reason.empty() ? "" : ": ", reason);
        return kExitUsage;
    }
    const CTransferReport report;
    const std::string problem = DescribeWriteProblem(WriteDemoWall(*wide), report);
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
    command->callback([folder, &exitStatus] { exitStatus = WriteDemo(*folder); });
}

} // namespace trevolt
