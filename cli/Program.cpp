#include "cli/Program.h"

#include "cli/Commands.h"
#include "cli/HelpText.h"

namespace trevolt {
namespace {

constexpr const char* kProgramNotes = R"(Examples:
  trevolt-cli demo wall
      writes a small made-up wall of cabinets
  trevolt-cli rotate --angle 90 wall turned
      turns it
  trevolt-cli rotate --help
      tells all that a command takes

Exit states:
  0    all is done
  1    something failed
  2    wrong usage, or nothing to do
  130  interrupted)";

void AddHelp(CLI::App& command) {
    command.set_help_flag("--help,-h", "Print this help and do nothing else")->group("Help");
}

} // namespace

std::unique_ptr<CLI::App> MakeProgram(int& exitStatus) {
    auto program =
        std::make_unique<CLI::App>("Turns the per-pixel calibration of LED display walls");
    program->name("trevolt-cli");
    program->require_subcommand(1);
    program->allow_windows_style_options(false); // a path may begin with a slash on every system
    program->formatter(MakeHelpFormatter());
    program->footer(kProgramNotes);
    AddHelp(*program);
    program
        ->set_version_flag("--version", "trevolt-cli " TREVOLT_VERSION,
                           "Print the version and do nothing else")
        ->group("Help");
    AddRotateCommand(*program, exitStatus);
    AddComposeCommand(*program, exitStatus);
    AddCropCommand(*program, exitStatus);
    AddConvertCommand(*program, exitStatus);
    AddInfoCommand(*program, exitStatus);
    AddDiffCommand(*program, exitStatus);
    AddPreviewCommand(*program, exitStatus);
    AddVerifyCommand(*program, exitStatus);
    AddDemoCommand(*program, exitStatus);
    for (CLI::App* command : program->get_subcommands([](CLI::App*) { return true; })) {
        command->positionals_at_end(); // SOURCE leaves the last word to TARGET
        AddHelp(*command);
    }
    return program;
}

int FailureStatus(std::string_view command) noexcept {
    return command == kDiffCommand ? kExitDiffTrouble : kExitSomeFailed;
}

} // namespace trevolt
