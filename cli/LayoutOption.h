// The option of a layout table, as the commands share it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/rotation/Composition.h"
#include "cli/OptionGroup.h"

namespace trevolt {

struct SLayoutOptions {
    std::optional<std::wstring> table;
    std::optional<std::wstring> folder; ///< of the table's files
};

/// Adds --layout, which it returns, and --from.
COption AddLayout(COptionGroup& group, const std::string& description, SLayoutOptions& options);

/// The table's files, or every line of it that is wrong, behind the option and the table's path.
SLayoutFiles FilesOfLayout(const SLayoutOptions& options);

} // namespace trevolt
