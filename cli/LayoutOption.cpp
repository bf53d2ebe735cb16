#include "cli/LayoutOption.h"

#include <fmt/format.h>

#include "cli/OptionValues.h"
#include "trevolt/Utf8.h"

namespace trevolt {

CLI::Option* AddLayout(COptionGroup& group, const std::string& description,
                       SLayoutOptions& options) {
    CLI::Option* const layout =
        group.AddValue("--layout", "TABLE", options.table, ParsePath, description);
    group
        .AddValue("--from", "FOLDER", options.folder, ParsePath,
                  "Folder of the files that the table names")
        ->default_str("the table's own")
        ->needs(layout);
    return layout;
}

SLayoutFiles FilesOfLayout(const SLayoutOptions& options) {
    SLayoutFiles layout = ReadLayoutFiles(*options.table, options.folder.value_or(L""));
    for (std::string& problem : layout.problems)
        problem = fmt::format("--layout: {}: {}", WideToShownUtf8(*options.table), problem);
    return layout;
}

} // namespace trevolt
