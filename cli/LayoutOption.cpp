#include "cli/LayoutOption.h"

#include <fmt/format.h>

#include "cli/OptionValues.h"
#include "trevolt/Utf8.h"

namespace trevolt {

COption AddLayout(COptionGroup& group, const std::string& description, SLayoutOptions& options) {
    const COption layout =
        group.AddValue("--layout", "TABLE", options.table, ParsePath, description);
    group
        .AddValue("--from", "FOLDER", options.folder, ParsePath,
                  "Folder of the files that the table names")
        .Default("the table's own")
        .Needs(layout);
    return layout;
}

SLayoutFiles FilesOfLayout(const SLayoutOptions& options) {
    SLayoutFiles layout = ReadLayoutFiles(*options.table, options.folder.value_or(L""));
    for (std::string& problem : layout.problems)
        problem = fmt::format("--layout: {}: {}", WideToShownUtf8(*options.table), problem);
    return layout;
}

} // namespace trevolt
