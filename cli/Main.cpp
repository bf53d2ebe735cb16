#include <cerrno>
#include <cstdio>
#include <new>
#include <string>
#include <system_error>

#include "cli/Commands.h"
#include "platform/ConsoleProgram.h"
#include "platform/SystemError.h"

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

/// Printing throws when its place takes no more; what else throws so has a cause of its own.
int ReportSystemError(const std::system_error& error) {
    const std::string cause = std::ferror(stdout) != 0 ? "the standard output cannot be written"
                                                       : SystemErrorText(error.code().value());
    std::fputs(("trevolt-cli: " + cause + "\n").c_str(), stderr); // which may be lost itself
    return kExitSomeFailed;
}

} // namespace

int ConsoleMain(const std::vector<std::string>& arguments) try {
    CLI::App program("Turns the per-pixel calibration of LED display walls");
    program.name("trevolt-cli");
    program.require_subcommand(1);
    program.allow_windows_style_options(false); // a path may begin with a slash on every system
    program.set_version_flag("--version", "trevolt-cli " TREVOLT_VERSION);
    int exitStatus = kExitAllDone;
    AddRotateCommand(program, exitStatus);
    AddDemoCommand(program, exitStatus);
    AddVerifyCommand(program, exitStatus);
    const int status = Run(program, arguments, exitStatus);
    if (std::fflush(stdout) == 0)
        return status;
    throw std::system_error(errno, std::generic_category());
} catch (const std::system_error& error) {
    return ReportSystemError(error);
} catch (const std::bad_alloc&) {
    std::fputs("trevolt-cli: not enough memory\n", stderr);
    return kExitSomeFailed;
}

} // namespace trevolt
