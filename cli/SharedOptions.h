// Options that several commands have, told in the same words.
#pragma once

#include <string>
#include <vector>

#include "cli/OptionGroup.h"

namespace trevolt {

/// What --angle, --turned and --turn take; it follows "in degrees".
inline constexpr const char* kAngleForms =
    ", with or without a degree sign; -90 and -180 are 270 and 180";

/// The place of coefficient files and folders of them.
void AddSources(CLI::App& command, const std::string& place, std::vector<std::string>& sources);

/// --overwrite and --no-sync.
void AddOutputFlags(CLI::App& command, bool& overwrite, bool& noSync);

/// --json.
COption AddJsonFlag(CLI::App& command, bool& json);

} // namespace trevolt
