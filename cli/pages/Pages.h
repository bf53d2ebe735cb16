// The pages that are made of the program's options. Each function gives a whole file, of UTF-8 with
// line feeds, that is the same on every machine.
#pragma once

#include <string>

#include "cli/pages/CommandTable.h"

namespace trevolt {

/// For man, in section 1; ASCII alone.
std::string ManualPage(const SCommandTable& table);

/// For bash 4 or later, with or without the package of completions; to be sourced.
std::string BashCompletion(const SCommandTable& table);

/// For zsh, to be found as _NAME in a folder of functions.
std::string ZshCompletion(const SCommandTable& table);

/// For fish 3, to be found as NAME.fish in a folder of completions.
std::string FishCompletion(const SCommandTable& table);

} // namespace trevolt
