#include <fmt/format.h>

#include "cli/Commands.h"
#include "platform/ConsoleProgram.h"

namespace trevolt {

int ConsoleMain(const std::vector<std::string>& arguments) {
    CLI::App program("Turns the per-pixel calibration of LED display walls");
    program.name("trevolt-cli");
    program.require_subcommand(1);
    program.set_version_flag("--version", "trevolt-cli " TREVOLT_VERSION);
    int exitStatus = kExitAllDone;
    AddRotateCommand(program, exitStatus);
    AddDemoCommand(program, exitStatus);
    try {
        program.parse(std::vector(arguments.rbegin(), arguments.rend())); // taken from the back
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? kExitAllDone : kExitUsage;
    }
    return exitStatus;
}

} // namespace trevolt
