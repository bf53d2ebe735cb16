#include "cli/SharedOptions.h"

#include "cli/Commands.h"
#include "cli/OptionGroup.h"

namespace trevolt {

void AddSources(CLI::App& command, const std::string& place, std::vector<std::string>& sources) {
    command
        .add_option(place, sources,
                    "Coefficient files, folders of them, or both; the program itself replaces "
                    "* and ? on Windows")
        ->type_name("PATH")
        ->group("Places")
        ->required();
}

void AddOutputFlags(CLI::App& command, bool& overwrite, bool& noSync) {
    COptionGroup outputs(command, "Outputs");
    outputs.AddFlag("--overwrite", overwrite, kOverwriteHelp);
    outputs.AddFlag("--no-sync", noSync, kNoSyncHelp);
}

CLI::Option* AddJsonFlag(CLI::App& command, bool& json) {
    return COptionGroup(command, "Report")
        .AddFlag("--json", json, "Print one JSON object a line, a summary last");
}

} // namespace trevolt
