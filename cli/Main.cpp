#include <cstdio>
#include <system_error>

#include <fmt/format.h>

#include "cli/Commands.h"
#include "platform/ConsoleProgram.h"

namespace trevolt {
namespace {

int Run(CLI::App& program, const std::vector<std::string>& arguments, const int& exitStatus) {
    try {
        program.parse(std::vector(arguments.rbegin(), arguments.rend())); // taken from the back
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? kExitAllDone : kExitUsage;
    }
    return exitStatus;
}

int ReportLostOutput() {
    std::fputs("trevolt-cli: the standard output cannot be written\n", stderr);
    return kExitSomeFailed;
}

} // namespace

int ConsoleMain(const std::vector<std::string>& arguments) {
    CLI::App program("Turns the per-pixel calibration of LED display walls");
    program.name("trevolt-cli");
    program.require_subcommand(1);
    program.allow_windows_style_options(false); // a path may begin with a slash on every system
    program.set_version_flag("--version", "trevolt-cli " TREVOLT_VERSION);
    int exitStatus = kExitAllDone;
    AddRotateCommand(program, exitStatus);
    AddDemoCommand(program, exitStatus);
    AddVerifyCommand(program, exitStatus);
    try {
        const int status = Run(program, arguments, exitStatus);
        return std::fflush(stdout) == 0 ? status : ReportLostOutput();
    } catch (const std::system_error&) { // printing answers so when the output is lost
        return ReportLostOutput();
    }
}

} // namespace trevolt
