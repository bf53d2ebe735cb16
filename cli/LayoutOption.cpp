#include "cli/LayoutOption.h"

#include <utility>

#include <fmt/format.h>

#include "cli/OptionValues.h"
#include "cli/ShownText.h"
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

std::vector<SPlacedFile> FilesOfLayout(const SLayoutOptions& options) {
    SLayoutFiles layout = ReadLayoutFiles(*options.table, options.folder.value_or(L""));
    if (layout.problems.empty())
        return std::move(layout.files);
    const std::string shown = WideToShownUtf8(*options.table);
    const std::string last = std::move(layout.problems.back());
    layout.problems.pop_back();
    for (const std::string& problem : layout.problems)
        Complain("--layout: {}: {}", shown, problem);
    throw CLI::ValidationError("--layout", fmt::format("{}: {}", shown, last));
}

} // namespace trevolt
