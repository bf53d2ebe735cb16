#include "cli/SharedOptions.h"

#include "cli/Commands.h"

namespace trevolt {

void AddSources(CLI::App& command, const std::string& place, std::vector<std::string>& sources) {
    COptionGroup(command, kPlaces)
        .AddPlaces(place, "PATH", sources,
                   "Coefficient files, folders of them, or both; the program itself replaces "
                   "* and ? on Windows")
        .Required();
}

void AddOutputFlags(CLI::App& command, bool& overwrite, bool& noSync) {
    COptionGroup outputs(command, "Outputs");
    outputs.AddFlag("--overwrite", overwrite, kOverwriteHelp);
    outputs.AddFlag("--no-sync", noSync, kNoSyncHelp);
}

COption AddJsonFlag(CLI::App& command, bool& json) {
    return COptionGroup(command, "Report")
        .AddFlag("--json", json, "Print one JSON object a line, a summary last");
}

} // namespace trevolt
